// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The keys of the simulated controller: one line for each type that the decoder knows, and for what can go wrong.

#include <algorithm>
#include <cstring>
#include <string>

#include "system/SimulatedSmc.h"

namespace vantrell {

namespace {

Data text(std::string_view characters) {
  return Data(characters.begin(), characters.end());
}

// This type is in host byte order.
Data singlePrecision(float number) {
  Data bytes(sizeof number);
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

// A fan's description: type, zone, location, a byte that means nothing, and its name of at most twelve characters.
Data fan(std::string_view name) {
  Data bytes(16);
  bytes[1] = 1;
  bytes[2] = 2;
  std::ranges::copy(name.substr(0, 12), bytes.begin() + 4);
  return bytes;
}

SimulatedSmc::Key answering(SimulatedSmc::Key key, std::uint8_t infoResult, std::uint8_t readResult) {
  key.infoResult = infoResult;
  key.readResult = readResult;
  return key;
}

void addNumbers(std::vector<SimulatedSmc::Key>& keys) {
  const auto readOnly = SimulatedSmc::readOnlyKey;
  const auto readWrite = SimulatedSmc::readWriteKey;
  keys.insert(keys.end(), {
                              readOnly("BATP", "flag", {1}),
                              readOnly("CLKT", "ui32", {0, 0, 0xA8, 0xC0}),
                              readOnly("FNum", "ui8 ", {2}),
                              readWrite("FS! ", "ui16", {0, 0}),
                              readOnly("LDLG", "byte", {3}),
                              readOnly("LSCM", "{lsm", {1}),
                              readOnly("LSSS", "{lss", {2}),
                              readOnly("MSAC", "{pwm", {0x01, 0x80}),
                              readOnly("MSDW", "ui8", {1}),
                              readOnly("MSPC", "{msp", {5}),
                              readOnly("MSSS", "{mss", {4}),
                              readOnly("MOCN", "ui6", {0x1F, 0x07}),
                              readOnly("MOCF", "ui6 ", {0x1F, 0x08}),
                              readOnly("MO_X", "si16", {0xFF, 0xC4}),
                              readOnly("MSTc", "si8", {'!'}),
                              readOnly("MSTm", "si8 ", {'A'}),
                              readOnly("PCPT", "flt ", singlePrecision(12.75F)),
                              readOnly("RSvn", "ui32", {0, 0, 0, 2}),
                          });
}

void addFixedPointNumbers(std::vector<SimulatedSmc::Key>& keys) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto add = [&](std::string_view family, char prefix, std::size_t wholeBits, std::size_t fractionBits) {
    const std::string_view end = kDigits.substr(wholeBits, 1);
    const std::string key = std::string(1, prefix).append("fx").append(end);
    const std::string type = std::string(family).append(end).append(kDigits.substr(fractionBits, 1));
    keys.push_back(SimulatedSmc::readOnlyKey(key, type, {0x1F, 0x40}));
  };
  for (std::size_t whole = 1; whole <= 15; ++whole) add("fp", 'U', whole, 16 - whole);
  for (std::size_t whole = 0; whole <= 15; ++whole) add("sp", 'S', whole, 15 - whole);
  // What is commonly looked at: fan speeds, a battery's temperature, a voltage.
  for (const std::string number : {"0", "1"}) {
    const std::string fanKey = "F" + number;
    keys.push_back(SimulatedSmc::readOnlyKey(fanKey + "Ac", "fpe2", {0x1F, 0x40}));
    keys.push_back(SimulatedSmc::readWriteKey(fanKey + "Mn", "fpe2", {0x1F, 0x40}));
    keys.push_back(SimulatedSmc::readOnlyKey(fanKey + "Mx", "fpe2", {0x60, 0xE0}));
    keys.push_back(SimulatedSmc::readWriteKey(fanKey + "Tg", "fpe2", {0x1F, 0x40}));
  }
  keys.push_back(SimulatedSmc::readOnlyKey("TB0T", "sp78", {0x1E, 0x80}));
  keys.push_back(SimulatedSmc::readOnlyKey("TA0P", "sp78", {0xFF, 0x80}));
  keys.push_back(SimulatedSmc::readOnlyKey("VD0R", "fp88", {0x0C, 0x40}));
}

void addTexts(std::vector<SimulatedSmc::Key>& keys) {
  const auto readOnly = SimulatedSmc::readOnlyKey;
  keys.insert(
      keys.end(),
      {
          readOnly("BTst", "char", text("C")), readOnly("RBr ", "ch8*", text("2012-07")),
          readOnly("RPlt", "ch8*", text("\xC3\xA9toile")), readOnly("RVBF", "hex_", {0x01, 0x20, 0xFF}),
          readOnly("REV ", "{rev", {1, 68, 0x0F, 0, 0, 10}), readOnly("RVUF", "ch8*", {0xFF, 0x00, 0x41}),  // no UTF-8
      });
}

void addRecords(std::vector<SimulatedSmc::Key>& keys) {
  const auto readOnly = SimulatedSmc::readOnlyKey;
  keys.insert(keys.end(), {
                              readOnly("ALA0", "{ala", {0x00, 0x20, 0xFF, 0xF0, 0x00, 0x03}),
                              SimulatedSmc::readWriteKey(
                                  "ALSC", "{alc", {0, 100, 0, 50, 0x0F, 0xFF, 0, 16, 0, 10, 0x03, 0xE8, 0, 75, 2, 30}),
                              readOnly("ALI0", "{ali", {3, 0, 1}),
                              readOnly("ALRV", "{alr", {0xFF, 0xEC, 0, 12, 0x03, 0x20, 0xFF, 0xF6, 0, 60}),
                              readOnly("ALT0", "{alt", {0, 5, 0x01, 0x2C}),
                              readOnly("ALV0", "{alv", {1, 0, 0x01, 0x23, 0x00, 0x45, 0, 0, 0x00, 0x64, 0x80, 0x00}),
                              readOnly("F0ID", "{fds", fan("Left side")),
                              readOnly("F1ID", "{fds", fan("Right side")),
                              SimulatedSmc::readWriteKey("LSCF", "{lsc", {0x01, 0x00, 0, 4, 0x40, 0x00, 0xFF, 9, 1, 7}),
                              readOnly("LSDD", "{lsd", {0, 1, 0, 2, 0, 3, 0, 4}),
                              readOnly("LSFD", "{lsf", {0, 5, 0, 6, 0, 7}),
                              SimulatedSmc::readWriteKey("LSOO", "{lso", {0xFE, 1}),
                          });
}

void addOddities(std::vector<SimulatedSmc::Key>& keys) {
  keys.insert(keys.end(), {
                              SimulatedSmc::writeOnlyKey("KPPW", "ui16", {0, 0}),
                              SimulatedSmc::writeOnlyKey("KPST", "ui8 ", {0}),
                              SimulatedSmc::readOnlyKey("MSSD", "ui16", {0, 0, 0, 1}),  // four bytes for two
                              SimulatedSmc::readOnlyKey("NATJ", "{zzz", {1, 2, 3}),     // a type that nobody knows
                              answering(SimulatedSmc::readOnlyKey("zHID", "ui8 ", {0}), host::smc_result::kKeyNotFound,
                                        host::smc_result::kSuccess),
                              answering(SimulatedSmc::readOnlyKey("zERR", "ui8 ", {0}), host::smc_result::kSuccess,
                                        host::smc_result::kKeyNotFound),
                          });
}

}  // namespace

std::vector<SimulatedSmc::Key> SimulatedSmc::everyKindOfKey() {
  std::vector<Key> keys;
  addNumbers(keys);
  addFixedPointNumbers(keys);
  addTexts(keys);
  addRecords(keys);
  addOddities(keys);
  return keys;
}

}  // namespace vantrell
