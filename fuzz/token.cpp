// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// A token from anybody, checked against a registered client. The bytes are taken as a token as they stand, and a second
// time as an envelope that is enciphered and signed properly, so that the checks behind the digest are reached too.

#include <cstdint>
#include <memory>
#include <optional>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/RequestToken.h"
#include "core/TokenCheck.h"
#include "host/linux/NettleCryptography.h"
#include "host/linux/NoLog.h"

using namespace vantrell;

namespace {

constexpr std::uint64_t kCode = 3;
constexpr std::int32_t kPid = 4711;

struct Fixture {
  Fixture() { clients.setKeyForClient(kPid, key); }
  host::NoLog log;
  host::NettleCryptography cryptography;
  QELPrivilegedToolOperationSetLM4 set{log};
  const Data key = Data(24, 0x5A);
  ClientRegistry clients;
};

void require(bool holds) {
  if (!holds) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const auto fixture = std::make_unique<Fixture>();
  const TokenCheck check(fixture->set, fixture->clients, fixture->cryptography);
  const std::optional<Array> arguments{{"1", "0"}};
  const Date now{1'790'000'000, 0};
  const DataView input(bytes, size);

  const auto asToken = check.checkToken(input, kCode, arguments, now);
  require(asToken.code != 0 || asToken.uuid.has_value());
  require(size >= 20 || asToken.code == token_result::kMalformed);

  const auto token = makeRequestToken(kPid, fixture->key, input, fixture->cryptography);
  require(token.has_value());
  const auto asEnvelope = check.checkToken(*token, kCode, arguments, now);
  require(asEnvelope.code <= 8 || (input.empty() && asEnvelope.code == token_result::kDeciphermentFailed));
  require((asEnvelope.code == 0) == asEnvelope.uuid.has_value());
  return 0;
}
