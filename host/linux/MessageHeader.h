// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "host/linux/MarshalledMessage.h"

namespace vantrell::host {

// The header of a D-Bus message, as the D-Bus protocol lays it out.

enum class MessageType : std::uint8_t { MethodCall = 1, MethodReturn = 2, Error = 3, Signal = 4 };

enum class HeaderField : std::uint8_t {
  Path = 1,
  Interface = 2,
  Member = 3,
  ErrorName = 4,
  ReplySerial = 5,
  Destination = 6,
  Sender = 7,
  Signature = 8,
  Descriptors = 9,
};

inline constexpr std::uint8_t kNoReplyExpected = 1;

// Writing: beginHeader, fields, endHeader, the body, endBody.

void beginHeader(MarshalledMessage& message, MessageType type, std::uint8_t flags);
/// `type` is s, o or g.
void addField(MarshalledMessage& message, HeaderField field, char type, std::string_view value);
void addReplySerial(MarshalledMessage& message, std::uint32_t serial);
void endHeader(MarshalledMessage& message);
void endBody(MarshalledMessage& message, std::size_t headerSize, std::uint32_t serial) noexcept;

/// How a message begins.
struct MessageFrame {
  static constexpr std::size_t kBytes = 16;

  bool isSwapped = false;  // the other byte order than this machine's
  std::uint8_t type = 0;
  std::uint8_t flags = 0;
  std::uint32_t serial = 0;
  std::size_t fieldBytes = 0;
  std::size_t bodyBytes = 0;

  std::size_t bodyOffset() const noexcept { return (kBytes + fieldBytes + 7) & ~std::size_t{7}; }
  std::size_t totalBytes() const noexcept { return bodyOffset() + bodyBytes; }

  /// From at least kBytes bytes. Nothing where they are no message of this protocol, or of one that is too large.
  static std::optional<MessageFrame> read(std::string_view bytes) noexcept;
};

/// What a header's fields say. Texts refer to the message's bytes.
struct MessageFields {
  std::string_view path;
  std::string_view interface;
  std::string_view member;
  std::string_view signature;

  /// From the header of a whole message. Nothing where it is malformed: a field of a wrong type, one given twice,
  /// padding that is not zero, or a field that a message of its type needs missing. Unknown fields are passed over,
  /// if they hold a basic type (no other has been defined).
  static std::optional<MessageFields> read(const MessageFrame& frame, std::string_view message) noexcept;
};

}  // namespace vantrell::host
