// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <systemd/sd-bus.h>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Value.h"

namespace vantrell::host {

/// Reads values from a message, from where it stands. Each call reads one complete value of the named signature and
/// returns false where the message holds anything else, holds what no value can stand for, or exceeds the bounds of
/// WireFormat.h; the message is then of no further use. Needs no lock: the message must be the caller's own.
class WireReader {
 public:
  explicit WireReader(sd_bus_message* message) noexcept : message_(message) {}

  [[nodiscard]] bool text(std::string& text);                // s
  [[nodiscard]] bool signed32(std::int32_t& number);         // i
  [[nodiscard]] bool unsignedNumber(std::uint64_t& number);  // t
  [[nodiscard]] bool data(Data& bytes);                      // ay
  [[nodiscard]] bool variant(Value& value);                  // v
  [[nodiscard]] bool array(Array& array);                    // av
  [[nodiscard]] bool dictionary(Dictionary& dictionary);     // a{sv}
  /// Empty user info reads as none: the wire does not tell them apart.
  [[nodiscard]] bool error(ErrorOrNil& error);       // (sxa{sv})
  [[nodiscard]] bool errorOrNil(ErrorOrNil& error);  // a(sxa{sv})

 private:
  bool enter(char type, const char* contents) { return sd_bus_message_enter_container(message_, type, contents) > 0; }
  bool leave() { return sd_bus_message_exit_container(message_) >= 0; }
  /// True at an element of the list that was entered, false at its end or where the message is broken.
  bool more();
  bool basic(char type, void* value) { return sd_bus_message_read_basic(message_, type, value) > 0; }
  template <class Wire, class Native>
  bool number(char type, Value& value);
  bool contents(const std::string& signature, Value& value);
  bool collection(const std::string& signature, Value& value);
  bool date(Value& value);
  bool dictionaries(Array& array);

  sd_bus_message* message_;
  int depth_ = 0;
  std::size_t count_ = 0;
};

}  // namespace vantrell::host
