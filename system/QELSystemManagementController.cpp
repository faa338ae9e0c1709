// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/QELSystemManagementController.h"

#include <algorithm>
#include <array>

#include <fmt/core.h>

#include "foundation/Date.h"
#include "system/SmcBytes.h"
#include "system/SmcCalls.h"

namespace vantrell {

using host::SmcRecord;

namespace {

constexpr std::size_t kBufferSize = 255;
constexpr double kNoPrecision = -1.0;
constexpr double kMaximumAge = 1.0;  // seconds
constexpr char kUnknownVersion[] = "<?>";

constexpr char kTypeKey[] = "Type";
constexpr char kIsWriteOnlyKey[] = "IsWriteOnly";
constexpr char kValueKey[] = "Value";
constexpr char kLastAccessKey[] = "LastAccess";

std::string mismatch(std::size_t size, const std::string& type) {
  return fmt::format("<received {} bytes for type '{}': mismatch detected>", size, type);
}

bool isFresh(const Dictionary& entry) {
  const auto* value = entry.find(kLastAccessKey);
  const auto* date = value ? value->asDate() : nullptr;
  return date && Date::now().secondsSince(*date) <= kMaximumAge;
}

}  // namespace

std::unique_ptr<QELSystemManagementController> QELSystemManagementController::init(host::SmcDriver& driver,
                                                                                   host::SystemLog& systemLog) {
  std::unique_ptr<QELSystemManagementController> controller(new QELSystemManagementController(driver, Log(systemLog)));
  if (!controller->readAvailableKeys()) return nullptr;
  return controller;
}

std::optional<std::uint32_t> QELSystemManagementController::keyCount() const {
  std::array<std::uint8_t, 4> bytes{};
  std::size_t size = bytes.size();
  std::uint32_t type = 0;
  if (readSmcKey(driver_, smcCode("#KEY"), bytes, size, type) != host::kSmcSuccess) return std::nullopt;
  const auto count = smcUnsigned32(bytes);
  if (type != smcCode("ui32") || count > kMaximumKeyCount) return std::nullopt;
  return count;
}

bool QELSystemManagementController::readAvailableKeys() {
  const auto count = keyCount();
  if (!count) {
    log_.notice("{}: could not determine available keys on this platform\n", kClassName);
    return false;
  }
  for (std::uint32_t index = 0; index < *count; ++index) {
    const SmcRecord request{.command = host::smc_command::kKeyAtIndex, .data32 = index};
    SmcRecord answer;
    if (callSmcDriver(driver_, request, answer) != host::kSmcSuccess || answer.result != host::smc_result::kSuccess) {
      log_.notice("{}: could not get key at index {}\n", kClassName, index);
      return false;
    }
    availableKeys_.insert(stringFromSMCKey(answer.key));
  }
  return true;
}

std::optional<Dictionary> QELSystemManagementController::updateCacheForProperty(const std::string& withKey) const {
  if (withKey.empty() || !availableKeys_.contains(withKey)) return std::nullopt;
  std::array<std::uint8_t, kBufferSize> buffer{};
  std::size_t size = buffer.size();
  std::uint32_t type = 0;
  std::optional<Value> value;
  const auto code = readSmcKey(driver_, smcKeyFromString(withKey), buffer, size, type);
  const bool isWriteOnly = code == host::kSmcInternalError;
  if (isWriteOnly) {
    value = "<write-only property>";
  } else if (code != host::kSmcSuccess) {
    log_.notice("{}: failed to get value for key '{}' (error {})\n", kClassName, withKey,
                static_cast<std::int32_t>(code));
    return std::nullopt;
  }
  const auto typeText = stringFromSMCKey(type);
  if (auto decoded = decodedSmcValue(type, buffer, size)) value = std::move(decoded);
  if (!value) value = mismatch(size, typeText);
  return Dictionary{
      {kTypeKey, typeText}, {kIsWriteOnlyKey, isWriteOnly}, {kValueKey, *value}, {kLastAccessKey, Date::now()}};
}

const Dictionary* QELSystemManagementController::cachedEntry(const std::string& key) const {
  const auto* cached = propertyCache_.find(key);
  return cached ? cached->asDictionary() : nullptr;
}

std::optional<Dictionary> QELSystemManagementController::entryForProperty(const std::string& key) const {
  const auto* cached = cachedEntry(key);
  return cached ? std::optional(*cached) : updateCacheForProperty(key);
}

std::optional<Value> QELSystemManagementController::valueForProperty(const std::string& withKey) const {
  if (!availableKeys_.contains(withKey)) return std::nullopt;
  const auto* cached = cachedEntry(withKey);
  const auto entry = cached && isFresh(*cached) ? std::optional(*cached) : updateCacheForProperty(withKey);
  const auto* value = entry ? entry->find(kValueKey) : nullptr;
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::string> QELSystemManagementController::typeCodeOfProperty(const std::string& withKey) const {
  const auto entry = entryForProperty(withKey);
  const auto* value = entry ? entry->find(kTypeKey) : nullptr;
  const auto* text = value ? value->asString() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

bool QELSystemManagementController::isWriteOnlyProperty(const std::string& withKey) const {
  const auto entry = entryForProperty(withKey);
  const auto* value = entry ? entry->find(kIsWriteOnlyKey) : nullptr;
  const auto* number = value ? value->asNumber() : nullptr;
  return number && number->boolValue();
}

double QELSystemManagementController::precisionDeltaOfNumericProperty(const std::string& withKey) const {
  const auto type = typeCodeOfProperty(withKey);
  const double divisor = type ? divisorForFloatingPointCode(smcKeyFromString(*type)) : kNoPrecision;
  return divisor > 0 ? 1.0 / divisor : kNoPrecision;
}

std::uint64_t QELSystemManagementController::maximumFractionDigitsOfNumericProperty(const std::string& withKey) const {
  const auto type = typeCodeOfProperty(withKey);
  if (!type || type->empty()) return kNoFractionDigits;
  if (!type->starts_with("fp") && !type->starts_with("sf")) return 0;
  return static_cast<std::uint8_t>(type->back()) & 0x0F;
}

std::string QELSystemManagementController::softwareVersion() const {
  const auto version = valueForProperty("REV ");
  const auto* text = version ? version->asString() : nullptr;
  return text ? *text : kUnknownVersion;
}

std::string QELSystemManagementController::softwareBranchAndBuildGeneration() const {
  const auto branch = valueForProperty("RBr ");
  const auto generation = valueForProperty("RSvn");
  const auto* text = branch ? branch->asString() : nullptr;
  const auto* number = generation ? generation->asNumber() : nullptr;
  if (!text || !number) return kUnknownVersion;
  return fmt::format("{} ({})", *text, number->unsigned32Value());
}

bool QELSystemManagementController::writeRawBytes(DataView bytes, std::string_view toSMCKey) const {
  const auto key = smcKeyFromString(toSMCKey);
  if (bytes.empty() || key == 0) return false;
  const auto length = static_cast<std::uint8_t>(bytes.size());
  SmcRecord answer;
  const SmcRecord question{.key = key, .command = host::smc_command::kKeyInfo};
  if (callSmcDriver(driver_, question, answer) != host::kSmcSuccess) return false;
  if (answer.result != host::smc_result::kSuccess || answer.keyInfo.dataSize != length) return false;

  SmcRecord request{.key = key, .keyInfo = {.dataSize = length}, .command = host::smc_command::kWriteValue};
  const auto count = std::min<std::size_t>(length, request.bytes.size());
  std::ranges::copy(bytes.first(count), request.bytes.begin());
  return write(request);
}

bool QELSystemManagementController::write(const SmcRecord& request) const {
  SmcRecord answer;
  auto code = callSmcDriver(driver_, request, answer);
  if (code != host::kSmcSuccess) {
    log_.error("SMC write failure: system 0x{:x} subsystem 0x{:x} error code 0x{:x}.", code >> 26 & 0x3F,
               code >> 14 & 0xFFF, code & 0x3FFF);
  } else if (answer.result != host::smc_result::kSuccess) {
    code = host::kSmcInputOutputError;
  }
  return code == host::kSmcSuccess;
}

}  // namespace vantrell
