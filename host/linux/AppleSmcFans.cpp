// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/AppleSmcFans.h"

#include <optional>
#include <string>

#include "foundation/PosixCodes.h"

namespace vantrell::host {

namespace {

constexpr std::uint32_t kManualKey = 0x46532120;  // "FS! "
constexpr std::uint32_t kSpeedType = 0x66706532;  // "fpe2"
constexpr std::uint32_t kBitsType = 0x75693136;   // "ui16"
constexpr std::uint32_t kSize = 2;
constexpr unsigned kFractionBits = 2;
constexpr unsigned kFans = 16;
constexpr SmcRefusal kNotWritable{.result = smc_result::kNotWritable};

std::string fanAttribute(unsigned fan, const char* what) {
  return "fan" + std::to_string(fan + 1) + "_" + what;
}

/// The file for the speed under a key; nothing for keys of another kind.
std::optional<std::string> speedAttribute(std::uint32_t code) {
  const auto fan = (code >> 16 & 0xFF) - '0';
  if (code >> 24 != 'F' || fan > 9) return std::nullopt;
  if ((code & 0xFFFF) == ('M' << 8 | 'n')) return fanAttribute(fan, "min");
  if ((code & 0xFFFF) == ('T' << 8 | 'g')) return fanAttribute(fan, "output");
  return std::nullopt;
}

unsigned bigEndian16(DataView bytes) {
  return static_cast<unsigned>(bytes[0]) << 8 | bytes[1];
}

}  // namespace

SmcRefusal AppleSmcFans::write(std::uint32_t code, const AppleSmcKeys::Key& key, DataView value) {
  if (key.size != kSize || value.size() != kSize) return kNotWritable;
  if (code == kManualKey) return key.type == kBitsType ? writeManualBits(value) : kNotWritable;
  const auto attribute = speedAttribute(code);
  if (!attribute || key.type != kSpeedType) return kNotWritable;
  return writeSpeed(*attribute, value);
}

SmcRefusal AppleSmcFans::writeSpeed(const std::string& attribute, DataView value) const {
  const unsigned speed = bigEndian16(value);
  if ((speed & ((1U << kFractionBits) - 1)) != 0) return kNotWritable;
  return store(attribute, speed >> kFractionBits);
}

SmcRefusal AppleSmcFans::writeManualBits(DataView value) {
  const auto present = keys_.keyWithValue(kManualKey);
  if (!present) return present.error();
  if (present->value.size() != kSize) return kNotWritable;
  const unsigned wanted = bigEndian16(value);
  const unsigned changes = wanted ^ bigEndian16(present->value);
  for (unsigned fan = 0; fan < kFans; ++fan) {
    if ((changes >> fan & 1) != 0 && !attributes_.read(fanAttribute(fan, "manual"))) return kNotWritable;
  }
  for (unsigned fan = 0; fan < kFans; ++fan) {
    if ((changes >> fan & 1) == 0) continue;
    const auto refusal = store(fanAttribute(fan, "manual"), wanted >> fan & 1);
    if (refusal.returnCode != kSmcSuccess || refusal.result != smc_result::kSuccess) return refusal;
  }
  return {};
}

SmcRefusal AppleSmcFans::store(const std::string& attribute, unsigned number) const {
  const auto error = attributes_.write(attribute, std::to_string(number));
  if (!error) return {};
  // No such fan, or the controller (an input/output error) or the driver (an invalid argument) won't have it.
  for (const auto code : {posix::kNoEntry, posix::kInputOutput, posix::kInvalidArgument}) {
    if (error->isPosix(code)) return kNotWritable;
  }
  return refusalForSmcError(*error);
}

}  // namespace vantrell::host
