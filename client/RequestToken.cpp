// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/RequestToken.h"

#include <algorithm>
#include <span>
#include <utility>

#include "catalogue/RequestEnvelope.h"
#include "foundation/Date.h"
#include "foundation/PropertyList.h"

namespace vantrell {

namespace {
constexpr std::size_t kPidSize = 8;
// The envelope is this process's own; it only has to be read back.
constexpr PropertyListLimits kOwnEnvelope = {.maximumSize = std::size_t{256} << 20, .maximumObjects = 64'000'000};
}  // namespace

Result<Data> makeRequestToken(std::uint64_t pid, DataView key, DataView envelope, host::Cryptography& cryptography) {
  Data token(host::kSha1Size + kPidSize + envelope.size());
  const auto body = std::span(token).subspan(host::kSha1Size);
  for (std::size_t i = 0; i < kPidSize; ++i) body[i] = static_cast<std::uint8_t>(pid >> (8 * i));
  if (auto error = cryptography.rc4(key, envelope, body.subspan(kPidSize))) return failure(std::move(*error));
  const auto digest = cryptography.sha1(body);
  if (!digest) return failure(digest.error());
  std::ranges::copy(*digest, token.begin());
  return token;
}

std::optional<Data> renewedEnvelope(DataView envelope) {
  auto list = propertyListFromData(envelope, kOwnEnvelope);
  if (!list) return std::nullopt;
  auto* root = list->root.asDictionary();
  if (!root) return std::nullopt;
  root->set(envelope_key::kTime, Date::now());
  auto renewed = binaryPropertyListFromValue(list->root);
  if (!renewed) return std::nullopt;
  return std::move(*renewed);
}

}  // namespace vantrell
