// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/TokenCheck.h"

#include <algorithm>
#include <memory>

namespace vantrell {

namespace {

constexpr std::size_t kIdentifierSize = 8;

std::uint64_t littleEndian64(DataView bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = kIdentifierSize; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

}  // namespace

QELPrivilegedToolOperationSet::CheckResult TokenCheck::checkToken(DataView token, std::uint64_t code,
                                                                  const std::optional<Array>& arguments,
                                                                  Date now) const {
  if (!arguments || token.size() < host::kSha1Size) return {.code = token_result::kMalformed};
  const auto digest = token.first(host::kSha1Size);
  const auto body = token.subspan(host::kSha1Size);

  const auto expected = cryptography_.sha1(body);
  if (!expected) return {.code = token_result::kDigestFailed};
  if (!std::ranges::equal(digest, *expected)) return {.code = token_result::kDigestMismatch};

  // A body too short for an identifier names nobody.
  if (body.size() < kIdentifierSize) return {.code = token_result::kNotRegistered};
  const auto pid = littleEndian64(body);
  const auto key = clients_.keyForClient(pid);
  if (!key) return {.code = token_result::kNotRegistered};

  const auto cipherText = body.subspan(kIdentifierSize);
  if (cipherText.empty()) return {.code = token_result::kDeciphermentFailed};
  const auto plainText = std::make_unique_for_overwrite<std::uint8_t[]>(cipherText.size());
  if (cryptography_.rc4(*key, cipherText, {plainText.get(), cipherText.size()})) {
    return {.code = token_result::kDeciphermentFailed};
  }
  const auto envelope = operationSet_.operationDescriptionFromStandaloneData({plainText.get(), cipherText.size()});
  return operationSet_.checkPresentRequestFromPID(pid, code, arguments, envelope, now);
}

}  // namespace vantrell
