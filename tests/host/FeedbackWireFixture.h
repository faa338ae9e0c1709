// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/Value.h"
#include "host/linux/FeedbackCall.h"
#include "host/linux/FeedbackReceiver.h"

namespace vantrell::tests {

inline constexpr std::string_view kHandshake("\0AUTH EXTERNAL\r\nDATA\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n", 48);
inline constexpr char kIdentifier[] = "0123456789abcdef0123456789abcdef";

inline std::string bytesOfCall(const Dictionary& message, std::uint32_t serial = 1) {
  host::MarshalledMessage bytes;
  EXPECT_TRUE(host::FeedbackCall().write(message, serial, bytes));
  return std::string(bytes.bytes());
}

inline void feed(host::FeedbackReceiver& receiver, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto room = receiver.room();
    const std::size_t count = std::min(room.size(), bytes.size());
    std::memcpy(room.data(), bytes.data(), count);
    receiver.arrived(count);
    bytes.remove_prefix(count);
  }
}

inline std::vector<Dictionary> allMessages(host::FeedbackReceiver& receiver) {
  std::vector<Dictionary> messages;
  while (auto message = receiver.next()) messages.push_back(*std::move(message));
  return messages;
}

/// `value` in `levels` arrays within each other.
inline Value nested(Value value, int levels) {
  for (int i = 0; i < levels; ++i) value = Value(Array{std::move(value)});
  return value;
}

/// Values of every kind that can be sent, with what alignment depends on before and behind them.
inline Dictionary everyKind() {
  const Dictionary record{{"Mode", 0644U},
                          {"ModificationDate", Date{-1, 999999999}},
                          {"Path",
                           "/Gr\xC3\xBC\xC3\x9F"
                           "e/\xF0\x9F\x98\x80"},
                          {"Size", std::uint64_t{1} << 40},
                          {"Type", "NSFileTypeRegular"}};
  const Error error("domain", -7, {{"text", "why"}, {"under", Error("inner", 1)}});
  return {{"", "a key may be empty"},
          {"a", true},
          {"b", false},
          {"c", std::numeric_limits<std::int64_t>::min()},
          {"d", std::numeric_limits<std::uint64_t>::max()},
          {"e", -0.5},
          {"f", Data{}},
          {"g", Data{1, 2, 3}},
          {"h", Date{1700000000, 5}},
          {"i", ""},
          {"j", "x"},
          {"k", Array{}},
          {"l", Array{1, "two", Data{3}, Date{4, 0}, 5.0, Array{}, Dictionary{}}},
          {"m", Array{record, record, Dictionary{}}},
          {"n", Array{record, "mixed"}},
          {"o", Dictionary{}},
          {"p", Dictionary{{"deep", Dictionary{{"deeper", Array{record}}}}}},
          {"q", error},
          {"r", Error("without", 0)},
          {"s", Array{error, error}},
          {"t", nested("deepest", host::kMaximumValueDepth)},
          {"u", std::string(70000, 'x')},
          {"v", Data(70001)},
          {"FileObjectInfo", Array{}}};
}

/// Marshals by hand what no writer would: alignment counts from the beginning, which is where a message's body is.
class HandMade {
 public:
  explicit HandMade(bool isBigEndian = false) : isBigEndian_(isBigEndian) {}

  HandMade& align(std::size_t alignment) {
    bytes_.resize((bytes_.size() + alignment - 1) / alignment * alignment);
    return *this;
  }
  HandMade& raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  template <class T>
  HandMade& number(T value) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof raw);
    if (isBigEndian_) std::reverse(raw, raw + sizeof raw);
    align(sizeof value);
    bytes_.append(raw, sizeof raw);
    return *this;
  }
  HandMade& text(std::string_view text) {
    number(static_cast<std::uint32_t>(text.size()));
    return raw(text).raw({"\0", 1});
  }
  HandMade& signature(std::string_view text) {
    number(static_cast<std::uint8_t>(text.size()));
    return raw(text).raw({"\0", 1});
  }
  HandMade& field(std::uint8_t code, std::string_view type, std::string_view value) {
    align(8).number(code).signature(type);
    return type == "g" ? signature(value) : text(value);
  }
  const std::string& bytes() const { return bytes_; }

 private:
  const bool isBigEndian_;
  std::string bytes_;
};

/// What a message's header may be changed to.
struct HandMadeHeader {
  bool isBigEndian = false;
  std::uint8_t type = 1;
  std::uint8_t flags = 1;
  std::uint8_t version = 1;
  std::uint32_t serial = 1;
  std::optional<std::uint32_t> bodyBytes = {};
  std::optional<std::uint32_t> fieldBytes = {};
  std::string path = "/com/vantrell/PrivilegedOperationFeedback";
  std::string interface = "com.vantrell.QELPrivilegedOperationFeedbackProtocol";
  std::string member = "processPrivilegedOperationFeedback";
  std::string signature = "a{sv}";
  std::string furtherFields = {};  // marshalled, from a multiple of 8 on
};

inline std::string handMadeMessage(const HandMadeHeader& header, std::string_view body) {
  HandMade fields(header.isBigEndian);
  if (!header.path.empty()) fields.field(1, "o", header.path);
  if (!header.interface.empty()) fields.field(2, "s", header.interface);
  if (!header.member.empty()) fields.field(3, "s", header.member);
  if (!header.signature.empty()) fields.field(8, "g", header.signature);
  if (!header.furtherFields.empty()) fields.align(8).raw(header.furtherFields);
  HandMade message(header.isBigEndian);
  message.raw(header.isBigEndian ? "B" : "l").number(header.type).number(header.flags).number(header.version);
  message.number(header.bodyBytes.value_or(static_cast<std::uint32_t>(body.size()))).number(header.serial);
  message.number(header.fieldBytes.value_or(static_cast<std::uint32_t>(fields.bytes().size())));
  message.raw(fields.bytes()).align(8).raw(body);
  return message.bytes();
}

/// The body {"n": value}, the value's signature and bytes as given (its alignment counts from the body's beginning).
inline std::string bodyHolding(std::string_view signature, std::size_t alignment, std::string_view value,
                               bool isBigEndian = false) {
  HandMade entries(isBigEndian);
  entries.number(std::uint32_t{0}).align(8).text("n").signature(signature).align(alignment).raw(value);
  HandMade body(isBigEndian);
  body.number(static_cast<std::uint32_t>(entries.bytes().size() - 8)).raw(entries.bytes().substr(4));
  return body.bytes();
}

}  // namespace vantrell::tests
