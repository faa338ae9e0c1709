// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/MessageHeader.h"

#include <bit>
#include <cstring>

#include "host/linux/MarshalledReader.h"

namespace vantrell::host {

namespace {

constexpr char kLittleEndian = 'l';
constexpr char kBigEndian = 'B';
constexpr char kOwnByteOrder = std::endian::native == std::endian::little ? kLittleEndian : kBigEndian;
constexpr std::uint8_t kProtocolVersion = 1;
// Where the header's numbers stand.
constexpr std::size_t kBodyBytesOffset = 4;
constexpr std::size_t kSerialOffset = 8;
constexpr std::size_t kFieldBytesOffset = 12;

void beginField(MarshalledMessage& message, HeaderField field, char type) {
  message.alignTo(8);
  message.number('y', static_cast<std::uint8_t>(field));
  message.signature({&type, 1});
}

// Where a known field's text goes, and of which type it is; the numbers are of no use here.
struct KnownField {
  char type;
  std::string_view MessageFields::*text;
};

constexpr KnownField kKnownFields[] = {
    {},
    {'o', &MessageFields::path},
    {'s', &MessageFields::interface},
    {'s', &MessageFields::member},
    {'s', nullptr},
    {'u', nullptr},
    {'s', nullptr},
    {'s', nullptr},
    {'g', &MessageFields::signature},
    {'u', nullptr},
};

template <class T>
bool skipNumber(MarshalledReader& reader) noexcept {
  T ignored{};
  return reader.number('?', ignored);
}

// Reads a value of a basic type; `text` is what it is, where it is one.
bool readBasic(MarshalledReader& reader, char type, std::string_view& text) noexcept {
  switch (type) {
    case 's':
    case 'o':
      return reader.text(text);
    case 'g':
      return reader.signature(text);
    case 'y':
      return skipNumber<std::uint8_t>(reader);
    case 'n':
    case 'q':
      return skipNumber<std::uint16_t>(reader);
    case 'b':
    case 'i':
    case 'u':
    case 'h':
      return skipNumber<std::uint32_t>(reader);
    case 'x':
    case 't':
    case 'd':
      return skipNumber<std::uint64_t>(reader);
    default:
      return false;
  }
}

bool isComplete(MessageType type, unsigned seen) noexcept {
  const auto has = [seen](HeaderField field) { return (seen >> static_cast<unsigned>(field) & 1) != 0; };
  switch (type) {
    case MessageType::MethodCall:
      return has(HeaderField::Path) && has(HeaderField::Member);
    case MessageType::MethodReturn:
      return has(HeaderField::ReplySerial);
    case MessageType::Error:
      return has(HeaderField::ReplySerial) && has(HeaderField::ErrorName);
    case MessageType::Signal:
      return has(HeaderField::Path) && has(HeaderField::Interface) && has(HeaderField::Member);
  }
  return true;  // types to come are passed over
}

// Reads one field; `seen` has a bit for each known one that there was.
bool readField(MarshalledReader& reader, MessageFields& fields, unsigned& seen) noexcept {
  std::uint8_t code = 0;
  std::string_view type;
  std::string_view text;
  if (!reader.align(8) || !reader.number('y', code) || code == 0 || !reader.signature(type) || type.size() != 1 ||
      !readBasic(reader, type[0], text)) {
    return false;
  }
  if (code >= std::size(kKnownFields)) return true;
  const KnownField& known = kKnownFields[code];
  if (type[0] != known.type || (seen >> code & 1) != 0) return false;
  seen |= 1U << code;
  if (known.text) fields.*known.text = text;
  return true;
}

}  // namespace

void beginHeader(MarshalledMessage& message, MessageType type, std::uint8_t flags) {
  const char start[MessageFrame::kBytes] = {kOwnByteOrder, static_cast<char>(type), static_cast<char>(flags),
                                            static_cast<char>(kProtocolVersion)};
  message.begin({start, sizeof start});
}

void addField(MarshalledMessage& message, HeaderField field, char type, std::string_view value) {
  beginField(message, field, type);
  if (type == 'g') {
    message.signature(value);
  } else {
    message.text(value);
  }
}

void addReplySerial(MarshalledMessage& message, std::uint32_t serial) {
  beginField(message, HeaderField::ReplySerial, 'u');
  message.number('u', serial);
}

void endHeader(MarshalledMessage& message) {
  message.patch(kFieldBytesOffset, static_cast<std::uint32_t>(message.size() - MessageFrame::kBytes));
  message.alignTo(8);
}

void endBody(MarshalledMessage& message, std::size_t headerSize, std::uint32_t serial) noexcept {
  message.patch(kBodyBytesOffset, static_cast<std::uint32_t>(message.size() - headerSize));
  message.patch(kSerialOffset, serial);
}

std::optional<MessageFrame> MessageFrame::read(std::string_view bytes) noexcept {
  if (bytes[0] != kLittleEndian && bytes[0] != kBigEndian) return std::nullopt;
  MessageFrame frame;
  frame.isSwapped = bytes[0] != kOwnByteOrder;
  MarshalledReader reader(bytes.substr(0, kBytes), 1, frame.isSwapped);
  std::uint8_t version = 0;
  std::uint32_t body = 0;
  std::uint32_t fields = 0;
  if (!reader.number('y', frame.type) || !reader.number('y', frame.flags) || !reader.number('y', version) ||
      !reader.number('u', body) || !reader.number('u', frame.serial) || !reader.number('u', fields)) {
    return std::nullopt;
  }
  frame.bodyBytes = body;
  frame.fieldBytes = fields;
  const bool isSound = frame.type != 0 && version == kProtocolVersion && frame.serial != 0 &&
                       fields <= kMaximumArrayBytes && frame.totalBytes() <= kMaximumWholeMessageBytes;
  return isSound ? std::optional(frame) : std::nullopt;
}

std::optional<MessageFields> MessageFields::read(const MessageFrame& frame, std::string_view message) noexcept {
  MessageFields fields;
  unsigned seen = 0;
  MarshalledReader reader(message.substr(0, MessageFrame::kBytes + frame.fieldBytes), MessageFrame::kBytes,
                          frame.isSwapped);
  while (reader.more()) {
    if (!readField(reader, fields, seen)) return std::nullopt;
  }
  MarshalledReader padding(message.substr(0, frame.bodyOffset()), reader.offset(), frame.isSwapped);
  if (!padding.align(8) || !isComplete(static_cast<MessageType>(frame.type), seen)) return std::nullopt;
  return fields;
}

}  // namespace vantrell::host
