// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <systemd/sd-bus.h>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Value.h"
#include "host/linux/ValueReader.h"

namespace vantrell::host {

/// Reads values from a message of sd-bus, from where it stands; see ValueReader for what is refused. Needs no lock: the
/// message must be the caller's own.
class WireReader {
 public:
  explicit WireReader(sd_bus_message* message) noexcept : source_{message}, values_(source_) {}
  WireReader(const WireReader&) = delete;
  WireReader& operator=(const WireReader&) = delete;

  [[nodiscard]] bool text(std::string& text);                                                       // s
  [[nodiscard]] bool signed32(std::int32_t& number) { return source_.number('i', number); }         // i
  [[nodiscard]] bool unsignedNumber(std::uint64_t& number) { return source_.number('t', number); }  // t
  [[nodiscard]] bool data(Data& bytes);                                                             // ay
  [[nodiscard]] bool array(Array& array) { return values_.array(array); }                           // av
  [[nodiscard]] bool dictionary(Dictionary& entries) { return values_.dictionary(entries); }        // a{sv}
  [[nodiscard]] bool errorOrNil(ErrorOrNil& error) { return values_.errorOrNil(error); }            // a(sxa{sv})

 private:
  struct Source {
    using Signature = std::string;  // a copy, since sd-bus's next look ahead replaces its own

    bool enter(char type, const char* contents) { return sd_bus_message_enter_container(message, type, contents) > 0; }
    bool enterVariant(Signature& contents);
    bool leave(char) { return sd_bus_message_exit_container(message) >= 0; }
    // At the end of a list 0.
    bool more() { return sd_bus_message_at_end(message, 0) == 0; }
    template <class T>
    bool number(char type, T& value) {
      return sd_bus_message_read_basic(message, type, &value) > 0;
    }
    bool boolean(bool& value);
    bool text(std::string_view& text);
    bool data(DataView& bytes);

    sd_bus_message* message;
  };

  Source source_;
  ValueReader<Source> values_;
};

}  // namespace vantrell::host
