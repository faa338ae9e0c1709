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
#include "host/linux/ValueWriter.h"

namespace vantrell::host {

/// Appends values to a message of sd-bus. The first failure stays: later calls do nothing and `status` reports it.
class WireWriter {
 public:
  /// `message` must outlive the writer.
  WireWriter(sd_bus_message* message, Unsendable unsendable) noexcept : sink_(message), values_(sink_, unsendable) {}
  WireWriter(const WireWriter&) = delete;
  WireWriter& operator=(const WireWriter&) = delete;

  // Each appends one complete value of the named signature.
  void text(std::string_view text) { sink_.text(text); }                    // s
  void signed32(std::int32_t number) { sink_.number('i', number); }         // i
  void signedNumber(std::int64_t number) { sink_.number('x', number); }     // x
  void unsignedNumber(std::uint64_t number) { sink_.number('t', number); }  // t
  void data(DataView bytes) { sink_.data(bytes); }                          // ay
  void descriptors(int descriptor);                                         // ah, none for a negative one; duplicated
  void variant(const Value& value) { values_.variant(value); }              // v
  void array(const Array& array) { values_.array(array); }                  // av
  void dictionary(const Dictionary& entries) { values_.dictionary(entries); }  // a{sv}
  void error(const Error& error) { values_.error(error); }                     // (sxa{sv})
  void errorOrNil(const ErrorOrNil& error) { values_.errorOrNil(error); }      // a(sxa{sv})

  /// 0, or the negative error number of the first failure.
  int status() const noexcept { return sink_.status; }

  /// About the size of what was appended.
  std::size_t bytes() const noexcept { return sink_.bytes; }

 private:
  struct Sink {
    struct Mark {};

    explicit Sink(sd_bus_message* message) noexcept : message(message) {}

    Mark open(char type, const char* contents);
    void close(char type, Mark mark);
    void text(std::string_view text);
    void data(DataView bytes);
    template <class T>
    void number(char type, T value) {
      basic(type, &value, sizeof value);
    }
    void basic(char type, const void* value, std::size_t size);
    void fail(int number) noexcept { note(-number); }
    bool failed() const noexcept { return status != 0; }
    void note(int result) noexcept {
      if (result < 0 && status == 0) status = result;
    }

    sd_bus_message* message;
    int status = 0;
    std::size_t bytes = 0;
  };

  Sink sink_;
  ValueWriter<Sink> values_;
};

}  // namespace vantrell::host
