// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <systemd/sd-bus.h>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Value.h"

namespace vantrell::host {

/// What becomes of a value that the wire has no form for: the null placeholder, and what is nested too deeply.
enum class Unsendable : std::uint8_t {
  Omit,    // left out of its collection: an answer arrives with what can be said
  Refuse,  // the whole message fails: a request must not be changed on its way
};

/// Appends values to a message. The first failure stays: later calls do nothing and `status` reports it.
class WireWriter {
 public:
  /// `message` must outlive the writer.
  WireWriter(sd_bus_message* message, Unsendable unsendable) noexcept : message_(message), unsendable_(unsendable) {}

  // Each appends one complete value of the named signature.
  void text(std::string_view text);               // s
  void signed32(std::int32_t number);             // i
  void signedNumber(std::int64_t number);         // x
  void unsignedNumber(std::uint64_t number);      // t
  void data(DataView bytes);                      // ay
  void descriptors(int descriptor);               // ah, none for a negative one; duplicated
  void variant(const Value& value);               // v
  void array(const Array& array);                 // av
  void dictionary(const Dictionary& dictionary);  // a{sv}
  void error(const Error& error);                 // (sxa{sv})
  void errorOrNil(const ErrorOrNil& error);       // a(sxa{sv})

  /// 0, or the negative error number of the first failure.
  int status() const noexcept { return status_; }

  /// About the size of what was appended.
  std::size_t bytes() const noexcept { return bytes_; }

 private:
  class Container;

  bool mayAppend(const Value& value) noexcept;
  void contents(const Number& number);
  void contents(const Date& date);
  void contents(const Array& array);
  void contents(const Dictionary& dictionary);
  void contents(const Error& error);
  void variantOfDictionaries(const Array& array);
  void dictionaryEntry(std::string_view key, const Value& value);
  void basic(char type, const void* value, std::size_t size);
  void note(int result) noexcept {
    if (result < 0 && status_ == 0) status_ = result;
  }

  sd_bus_message* message_;
  Unsendable unsendable_;
  int status_ = 0;
  int depth_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace vantrell::host
