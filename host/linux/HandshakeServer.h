// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace vantrell::host {

/// The server's side of the handshake before the messages of a D-Bus connection, with the EXTERNAL mechanism. Who the
/// far end says it is doesn't matter: it was handed its end of the socket pair by this process.
class HandshakeServer {
 public:
  enum class Outcome : std::uint8_t { GoesOn, Done, Broken };

  /// `identifier`: 32 hexadecimal digits.
  explicit HandshakeServer(std::string identifier) : identifier_(std::move(identifier)) {}

  /// Takes whole lines from the beginning of `bytes`, what comes behind the last one of the handshake stays. Appends
  /// what is to be answered to `answers`.
  Outcome take(std::string_view& bytes, std::string& answers);

 private:
  enum class State : std::uint8_t { BeforeFirstByte, Unauthenticated, AwaitingIdentity, Authenticated, Begun };

  // No handshake takes more than some hundred bytes.
  static constexpr std::size_t kMaximumBytes = 16384;

  Outcome takeLine(std::string_view line, std::string& answers);
  std::string answerTo(std::string_view command, std::string_view argument);
  std::string authenticate(std::string_view mechanismAndIdentity);
  std::string accept(std::string_view identity);
  std::string reject();

  const std::string identifier_;
  State state_ = State::BeforeFirstByte;
  std::size_t taken_ = 0;
};

}  // namespace vantrell::host
