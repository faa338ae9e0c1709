// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "platform/NSProcessInfoQELAdditions.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "foundation/Dictionary.h"
#include "foundation/PathUtilities.h"
#include "foundation/PropertyList.h"

namespace vantrell {
namespace {

constexpr std::uint64_t kLargestVersionList = 1 << 20;

// Reads as the platform's scanner does: white space before a number is skipped, a sign is taken, a number that is too
// large becomes the largest 32-bit one.
class VersionScanner {
 public:
  explicit VersionScanner(std::string_view text) : rest_(text) {}

  std::int64_t scanInteger(std::int64_t otherwise) {
    auto text = withoutLeadingSpace();
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || !isDigit(text.front())) return otherwise;
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1))
      value = std::min(kLargest, value * 10 + (text.front() - '0'));
    rest_ = text;
    return negative ? -value : value;
  }

  void skipPoint() {
    const auto text = withoutLeadingSpace();
    if (text.starts_with('.')) rest_ = text.substr(1);
  }

 private:
  static bool isDigit(char character) { return character >= '0' && character <= '9'; }
  std::string_view withoutLeadingSpace() const {
    return rest_.substr(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
  }

  std::string_view rest_;
};

std::string textUnder(const Dictionary& dictionary, std::string_view key) {
  const auto* value = dictionary.find(key);
  const auto* text = value ? value->asString() : nullptr;
  return text ? *text : std::string();
}

void evaluateVersion(QELOSVersionInfoCache& info) {
  if (!info.osVersion.empty()) {
    VersionScanner scanner(info.osVersion);
    info.major = scanner.scanInteger(10);
    scanner.skipPoint();
    info.minor = scanner.scanInteger(0);
    scanner.skipPoint();
    info.patch = scanner.scanInteger(0);
    info.osVersionCode = info.major / 10 * 0x1000 + info.major % 10 * 0x100 + info.minor * 0x10 + info.patch;
  }
  info.osMarketingName = info.osVersionCode < 0x1080 ? "Mac OS X" : info.osVersionCode < 0x10C0 ? "OS X" : "macOS";
  info.shouldUIUsePoliteForms = info.osVersionCode < 0x10C0;
}

}  // namespace

NSProcessInfoQELAdditions::NSProcessInfoQELAdditions(host::FileSystem& fileSystem, host::ProcessTable& processTable,
                                                     std::string versionListPath)
    : fileSystem_(fileSystem), processTable_(processTable), versionListPath_(std::move(versionListPath)) {}

void NSProcessInfoQELAdditions::updateVersionInfo() {
  auto info = readVersionInfo();
  const std::lock_guard lock(mutex_);
  cache_ = std::move(info);
}

// Two first questions at once may read the list twice; the contents are equal.
std::shared_ptr<const QELOSVersionInfoCache> NSProcessInfoQELAdditions::versionInfo() {
  {
    const std::lock_guard lock(mutex_);
    if (cache_) return cache_;
  }
  updateVersionInfo();
  const std::lock_guard lock(mutex_);
  return cache_;
}

std::shared_ptr<const QELOSVersionInfoCache> NSProcessInfoQELAdditions::readVersionInfo() const {
  auto info = std::make_shared<QELOSVersionInfoCache>();
  const auto contents = fileSystem_.loadFile(versionListPath_, kLargestVersionList);
  if (!contents) return info;
  const auto list = propertyListFromData((*contents)->bytes());
  const auto* dictionary = list ? list->root.asDictionary() : nullptr;
  if (!dictionary) return info;
  info->osName = textUnder(*dictionary, "ProductName");
  info->osVersion = textUnder(*dictionary, "ProductVersion");
  info->osBuild = textUnder(*dictionary, "ProductBuildVersion");
  evaluateVersion(*info);
  return info;
}

std::int64_t NSProcessInfoQELAdditions::operatingSystemVersionCode() {
  return versionInfo()->osVersionCode;
}
std::string NSProcessInfoQELAdditions::operatingSystemProductName() {
  return versionInfo()->osName;
}
std::string NSProcessInfoQELAdditions::operatingSystemMarketingName() {
  return versionInfo()->osMarketingName;
}
std::string NSProcessInfoQELAdditions::operatingSystemVersionNumberString() {
  return versionInfo()->osVersion;
}
std::string NSProcessInfoQELAdditions::operatingSystemBuildCode() {
  return versionInfo()->osBuild;
}
bool NSProcessInfoQELAdditions::shouldUIUsePoliteForms() {
  return versionInfo()->shouldUIUsePoliteForms;
}

bool NSProcessInfoQELAdditions::isOperatingSystemAtLeastVersion(std::int64_t major, std::int64_t minor,
                                                                std::int64_t patch) {
  const auto info = versionInfo();
  if (info->osVersion.empty()) return false;
  return std::tie(info->major, info->minor, info->patch) >= std::tie(major, minor, patch);
}

std::optional<std::vector<std::int32_t>> NSProcessInfoQELAdditions::identifiersForRunningProcessesNamed(
    std::string_view name) {
  if (name.empty()) return std::nullopt;
  const auto processes = processTable_.processes();
  if (!processes) return std::nullopt;
  const auto length = processTable_.nameLength();
  std::vector<std::int32_t> identifiers;
  for (const auto& process : *processes) {
    if (process.identifier > 0 && std::string_view(process.name).substr(0, length) == name.substr(0, length))
      identifiers.push_back(process.identifier);
  }
  return identifiers;
}

bool NSProcessInfoQELAdditions::isProcessRunningWithName(std::string_view name) {
  const auto identifiers = identifiersForRunningProcessesNamed(name);
  return identifiers && !identifiers->empty();
}

std::optional<RunningProcess> NSProcessInfoQELAdditions::processNameForProcessID(std::int32_t identifier) {
  const auto process = processTable_.processWithIdentifier(identifier);
  if (!process || !*process) return std::nullopt;
  return RunningProcess{displayablePath((*process)->name), (*process)->effectiveUserID};
}

}  // namespace vantrell
