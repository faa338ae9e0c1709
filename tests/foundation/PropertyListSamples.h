// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "foundation/Unicode.h"
#include "foundation/Value.h"

namespace vantrell::tests {

/// The reason that the error gives, once it is known to be a read error; else what it is instead.
template <class T>
std::string corruption(const Result<T>& result) {
  if (result) return "no error";
  const Error& error = result.error();
  if (error.domain() != kCocoaErrorDomain || error.code() != kCocoaPropertyListReadCorrupt) return "another error";
  const Value* reason = error.userInfo().find("NSDebugDescription");
  return reason != nullptr && reason->asString() != nullptr ? *reason->asString() : "no reason given";
}

template <class T>
bool isUnwritable(const Result<T>& result) {
  return !result && result.error().domain() == kCocoaErrorDomain &&
         result.error().code() == kCocoaPropertyListWriteInvalid;
}

inline Result<PropertyList> read(std::string_view text) {
  return propertyListFromData(bytesOf(text));
}

inline Array nestedArrays(std::size_t depth) {
  Array array;
  for (std::size_t i = 1; i < depth; ++i) {
    Array outer;
    outer.emplace_back(std::move(array));
    array = std::move(outer);
  }
  return array;
}

/// Every kind of value, at its edges.
inline Value sampleValue() {
  return Dictionary{
      {"text", "plain"},
      {"empty text", ""},
      {"unicode", "gr\u00fc\u00df \u4e16\u754c \U0001F600"},
      {"long text", std::string(300, 'x')},
      {"markup", "<a & \"b\">\r\n\ttail ]]>"},
      {"true", true},
      {"false", false},
      {"zero", 0},
      {"byte", 255},
      {"word", 65535},
      {"beyond word", 65536},
      {"32 bits", 4294967295},
      {"beyond 32 bits", 4294967296},
      {"minus one", -1},
      {"smallest", std::numeric_limits<std::int64_t>::min()},
      {"largest signed", std::numeric_limits<std::int64_t>::max()},
      {"largest", std::numeric_limits<std::uint64_t>::max()},
      {"real", 0.1},
      {"tiny", 5e-324},
      {"huge", 1.7976931348623157e308},
      {"infinite", -std::numeric_limits<double>::infinity()},
      {"date", Date{1'700'000'000, 0}},
      {"old date", Date{-62'135'596'800, 0}},
      {"data", Data{0, 1, 2, 253, 254, 255}},
      {"no data", Data{}},
      {"array", Array{1, "two", Array{}, Dictionary{}, Array{3.5, Data(100, 7)}}},
      {"gr\u00fcn", Dictionary{{"nested", Dictionary{{"deeper", "plain"}}}}},
  };
}

/// Nested values as every implementation of both formats can hold them: texts of XML characters, whole seconds between
/// the years 1900 and 2200, finite reals.
class RandomValues {
 public:
  explicit RandomValues(std::uint32_t seed) : engine_(seed) {}

  Value value(int depth) {
    switch (below(depth > 0 ? 10 : 8)) {
      case 0:
      case 1:
        return text();
      case 2:
        return integer();
      case 3:
        return real();
      case 4:
        return below(2) == 0;
      case 5:
        return Date{static_cast<std::int64_t>(below(9'000'000'000)) - 2'000'000'000, 0};
      case 6:
      case 7:
        return data();
      case 8:
        return array(depth);
      default:
        return dictionary(depth);
    }
  }

  Dictionary dictionary(int depth) {
    Dictionary result;
    for (auto count = below(20); count > 0; --count) result.set(text(), value(depth - 1));
    return result;
  }

 private:
  std::uint64_t below(std::uint64_t bound) {
    return std::uniform_int_distribution<std::uint64_t>(0, bound - 1)(engine_);
  }

  Array array(int depth) {
    Array result;
    for (auto count = below(20); count > 0; --count) result.push_back(value(depth - 1));
    return result;
  }

  Value integer() {
    const std::uint64_t bits = std::uniform_int_distribution<std::uint64_t>()(engine_) >> below(64);
    if (below(2) == 0) return bits;
    return static_cast<std::int64_t>(bits);
  }

  Value real() {
    const double mantissa = std::uniform_real_distribution<double>(-1, 1)(engine_);
    return std::ldexp(mantissa, static_cast<int>(below(400)) - 200);
  }

  Data data() {
    Data result(below(10) == 0 ? below(1000) : below(20));
    for (auto& byte : result) byte = static_cast<std::uint8_t>(below(256));
    return result;
  }

  std::string text() {
    std::string result;
    const bool ascii = below(3) != 0;
    for (auto count = below(10) == 0 ? below(200) : below(18); count > 0; --count) {
      appendUtf8(result, ascii ? static_cast<char32_t>(0x20 + below(0x5F)) : character());
    }
    return result;
  }

  char32_t character() {
    switch (below(4)) {
      case 0:
        return static_cast<char32_t>(0xA0 + below(0x700));
      case 1:
        return static_cast<char32_t>(0x4E00 + below(0x5000));
      case 2:
        return static_cast<char32_t>(0x1F300 + below(0x300));
      default:
        return static_cast<char32_t>(0x20 + below(0x5F));
    }
  }

  std::mt19937 engine_;
};

}  // namespace vantrell::tests
