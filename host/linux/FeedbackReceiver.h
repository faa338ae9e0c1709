// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/Dictionary.h"
#include "host/linux/HandshakeServer.h"
#include "host/linux/MessageHeader.h"

namespace vantrell::host {

/// Makes feedback messages of the bytes that a service sends to a client's endpoint: the handshake, then D-Bus method
/// calls. Whatever is no such call is answered as any D-Bus object would, where an answer is asked for, and passed
/// over. Bytes that are no D-Bus messages break the connection. Knows no socket.
///
/// Space grows with what has arrived, not with what a header announces, and is given back after a large message.
class FeedbackReceiver {
 public:
  /// `identifier`: 32 hexadecimal digits that name this end of the connection.
  explicit FeedbackReceiver(std::string identifier) : handshake_(std::move(identifier)) {}

  /// Where the next bytes are to be put; never empty.
  std::span<char> room();
  /// The first `count` bytes of `room` have arrived.
  void arrived(std::size_t count) noexcept { filled_ += count; }

  /// The next message of what has arrived. Nothing where more has to arrive first, or the connection is broken.
  std::optional<Dictionary> next();

  bool isBroken() const noexcept { return isBroken_; }
  /// What is to be sent to the service, since the last call.
  std::string takeAnswers() noexcept { return std::exchange(answers_, {}); }

 private:
  static constexpr std::size_t kUsualRoom = 131072;
  static constexpr std::size_t kLeastRoom = 4096;

  std::string_view waiting() const noexcept { return {space_.get() + begin_, filled_ - begin_}; }
  void moveToSpace(std::size_t capacity);
  bool shakeHands();
  std::optional<Dictionary> read(const MessageFrame& frame, std::string_view message);
  bool readBody(const MessageFrame& frame, std::string_view message, Dictionary& dictionary);
  void answer(const MessageFrame& frame, const char* errorName, std::string_view text);

  HandshakeServer handshake_;
  bool isShakingHands_ = true;
  bool isBroken_ = false;
  std::string answers_;
  std::uint32_t answerSerial_ = 0;

  std::unique_ptr<char[]> space_;
  std::size_t capacity_ = 0;
  std::size_t begin_ = 0;
  std::size_t filled_ = 0;
};

}  // namespace vantrell::host
