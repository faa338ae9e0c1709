// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcRecordTypes.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include "foundation/Value.h"
#include "system/SmcBytes.h"
#include "system/SmcCodes.h"

namespace vantrell {

namespace {

enum class Kind : std::uint8_t { Unsigned8, Signed8, Unsigned16, Signed16, Unsigned32, Boolean, Text };

struct Field {
  const char* name;
  std::size_t offset;
  Kind kind;
  double scale = 0;  // the value is a real number, multiplied by this, unless it is 0
};

struct RecordType {
  std::uint32_t code;
  std::size_t size;
  std::span<const Field> fields;
};

constexpr Field kLuxFunction[] = {
    {"SMCAmbientLightLuxFunctionSlope", 0, Kind::Unsigned16},
    {"SMCAmbientLightLuxFunctionYIntercept", 2, Kind::Signed16},
    {"SMCAmbientLightLuxFunctionRegion", 4, Kind::Unsigned16},
};
// Both times come from the first field; what stands at 2 is never looked at. Clients know it so.
constexpr Field kLightConfiguration[] = {
    {"SMCAmbientLightI2CTime", 0, Kind::Unsigned16},          {"SMCAmbientLightADCTime", 0, Kind::Unsigned16},
    {"SMCAmbientLightPowerLightMax", 4, Kind::Unsigned16},    {"SMCAmbientLightPowerLightMin", 6, Kind::Unsigned16},
    {"SMCAmbientLightLowRoomLux", 8, Kind::Unsigned16},       {"SMCAmbientLightHighRoomLux", 10, Kind::Unsigned16},
    {"SMCAmbientLightBezelReflection", 12, Kind::Unsigned16}, {"SMCAmbientLightSensorCount", 14, Kind::Unsigned8},
    {"SMCAmbientLightLidDelay", 15, Kind::Unsigned8},
};
constexpr Field kLightSensor[] = {
    {"SMCAmbientLightSensorType", 0, Kind::Signed8},
    {"SMCAmbientLightSensorIsValidWhenLidClosed", 1, Kind::Boolean},
    {"SMCAmbientLightSensorIsControllingPowerLight", 2, Kind::Boolean},
};
constexpr Field kLightTemperature[] = {
    {"SMCAmbientLightTemperatureBaseline", 0, Kind::Signed16},
    {"SMCAmbientLightTemperatureCoefficient", 2, Kind::Unsigned16, 0.125},
    {"SMCAmbientLightInflectionVoltage", 4, Kind::Unsigned16},
    {"SMCAmbientLightLowTempBoundary", 6, Kind::Signed16},
    {"SMCAmbientLightHighTempBoundary", 8, Kind::Signed16},
};
constexpr Field kLuxThresholds[] = {
    {"SMCAmbientLightLuxThresholdLowGain", 0, Kind::Unsigned16},
    {"SMCAmbientLightLuxThresholdHighGain", 2, Kind::Unsigned16},
};
constexpr Field kLightValue[] = {
    {"SMCAmbientLightIsValid", 0, Kind::Boolean},
    {"SMCAmbientLightIsHighGain", 1, Kind::Boolean},
    {"SMCAmbientLightChannel0", 2, Kind::Unsigned16},
    {"SMCAmbientLightChannel1", 4, Kind::Unsigned16},
    {"SMCAmbientLightRoomLux", 8, Kind::Unsigned32, 0x1p-14},
};
constexpr Field kFan[] = {
    {"SMCFanType", 0, Kind::Signed8},
    {"SMCFanZone", 1, Kind::Unsigned8},
    {"SMCFanLocation", 2, Kind::Signed8},
    {"SMCFanFunction", 4, Kind::Text},
};
constexpr Field kPowerLightControl[] = {
    {"SMCPowerLightBreathePWM", 0, Kind::Unsigned16},
    {"SMCPowerLightPWMChangePerTick", 2, Kind::Unsigned16},
    {"SMCPowerLightScaling", 4, Kind::Unsigned16, 0x1p-15},
    {"SMCPowerLightScaleMode", 6, Kind::Signed8},
    {"SMCPowerLightRampDuration", 7, Kind::Unsigned8},
    {"SMCPowerLightIsSwitchOverridingBrightness", 8, Kind::Boolean},
    {"SMCPowerLightMinimumTicksToTarget", 9, Kind::Unsigned8},
};
constexpr Field kPowerLightFade[] = {
    {"SMCPowerLightFadeConfigMidToStartRatio", 0, Kind::Unsigned16},
    {"SMCPowerLightFadeConfigMidToEndRatio", 2, Kind::Unsigned16},
    {"SMCPowerLightFadeConfigStartTicks", 4, Kind::Unsigned16},
    {"SMCPowerLightFadeConfigEndTicks", 6, Kind::Unsigned16},
};
constexpr Field kPowerLightFlare[] = {
    {"SMCPowerLightFlareConfigCeiling", 0, Kind::Unsigned16},
    {"SMCPowerLightFlareConfigMinChange", 2, Kind::Unsigned16},
    {"SMCPowerLightFlareConfigAdjust", 4, Kind::Unsigned16},
};
constexpr Field kPowerLightOverride[] = {
    {"SMCPowerLightOverrideTargetBehavior", 0, Kind::Signed8},
    {"SMCPowerLightOverrideRamp", 1, Kind::Boolean},
};

constexpr RecordType kRecordTypes[] = {
    {smcCode("{ala"), 6, kLuxFunction},
    {smcCode("{alc"), 16, kLightConfiguration},
    {smcCode("{ali"), 3, kLightSensor},
    {smcCode("{alr"), 10, kLightTemperature},
    {smcCode("{alt"), 4, kLuxThresholds},
    {smcCode("{alv"), 12, kLightValue},
    {smcCode("{fds"), 16, kFan},
    {smcCode("{lsc"), 10, kPowerLightControl},
    {smcCode("{lsd"), 8, kPowerLightFade},
    {smcCode("{lsf"), 6, kPowerLightFlare},
    {smcCode("{lso"), 2, kPowerLightOverride},
};

const RecordType* recordType(std::uint32_t code) {
  const auto* found = std::ranges::find(kRecordTypes, code, &RecordType::code);
  return found == std::ranges::end(kRecordTypes) ? nullptr : found;
}

std::string textAt(DataView bytes, std::size_t offset) {
  constexpr std::size_t kLongest = 13;
  const auto text = textOf(bytes.subspan(offset, std::min(kLongest, bytes.size() - offset)));
  return textFromSmcBytes(text.substr(0, text.find('\0')));
}

template <class T>
Value numberOf(T raw, double scale) {
  if (scale != 0) return static_cast<double>(raw) * scale;
  return raw;
}

Value valueOf(const Field& field, DataView bytes) {
  switch (field.kind) {
    case Kind::Unsigned8:
      return numberOf(bytes[field.offset], field.scale);
    case Kind::Signed8:
      return numberOf(static_cast<std::int8_t>(bytes[field.offset]), field.scale);
    case Kind::Unsigned16:
      return numberOf(smcUnsigned16(bytes, field.offset), field.scale);
    case Kind::Signed16:
      return numberOf(smcSigned16(bytes, field.offset), field.scale);
    case Kind::Unsigned32:
      return numberOf(smcUnsigned32(bytes, field.offset), field.scale);
    case Kind::Boolean:
      return bytes[field.offset] != 0;
    default:
      return textAt(bytes, field.offset);
  }
}

}  // namespace

bool isSmcRecordType(std::uint32_t typeCode) {
  return recordType(typeCode) != nullptr;
}

std::optional<Dictionary> smcRecordFields(std::uint32_t typeCode, DataView bytes, std::size_t size) {
  const auto* type = recordType(typeCode);
  if (!type || type->size != size || bytes.size() < size) return std::nullopt;
  std::vector<DictionaryEntry> entries;
  for (const auto& field : type->fields) entries.push_back({field.name, valueOf(field, bytes)});
  return Dictionary::fromEntries(std::move(entries));
}

}  // namespace vantrell
