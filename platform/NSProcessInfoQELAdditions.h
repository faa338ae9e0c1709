// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/FileSystem.h"
#include "host/ProcessTable.h"

namespace vantrell {

/// What is known about the operating system's version, read once.
struct QELOSVersionInfoCache {
  bool shouldUIUsePoliteForms = true;
  std::string osName;           // "macOS"; empty when unknown, as are the other texts
  std::string osMarketingName;  // "Mac OS X", "OS X" or "macOS"
  std::string osVersion;        // "10.14.6"
  std::string osBuild;          // "18G103"
  std::int64_t osVersionCode = 0x1000;

  // The three numbers in osVersion; all 0 when it is empty.
  std::int64_t major = 0;
  std::int64_t minor = 0;
  std::int64_t patch = 0;
};

/// A process as far as the kernel's table tells.
struct RunningProcess {
  std::string name;  // the kernel's short name; what is not UTF-8 in it is shown with U+FFFD
  std::uint32_t effectiveUserID = 0;
};

/// The operating system's name and version, from the system's version property list, and the running processes. Safe
/// from any thread; the list is read at the first question and again by updateVersionInfo only, the process table at
/// each. Where the list is missing, which is the rule outside macOS, the texts are empty, the version code is 0x1000
/// and no version is "at least" any other.
class NSProcessInfoQELAdditions {
 public:
  static constexpr char kVersionListPath[] = "/System/Library/CoreServices/SystemVersion.plist";

  NSProcessInfoQELAdditions(host::FileSystem& fileSystem, host::ProcessTable& processTable,
                            std::string versionListPath = kVersionListPath);

  void updateVersionInfo();

  /// Hexadecimal digits of major, minor, patch: 0x10E6 for 10.14.6. A minor or patch number of 16 and more carries into
  /// the digit before it.
  std::int64_t operatingSystemVersionCode();
  std::string operatingSystemProductName();
  std::string operatingSystemMarketingName();
  std::string operatingSystemVersionNumberString();
  std::string operatingSystemBuildCode();
  bool shouldUIUsePoliteForms();

  bool isOperatingSystemAtLeastVersion(std::int64_t major, std::int64_t minor, std::int64_t patch);

  /// The processes whose short name is this one, both taken as far as the kernel keeps names. Nothing for an empty name
  /// or when the table can't be read.
  std::optional<std::vector<std::int32_t>> identifiersForRunningProcessesNamed(std::string_view name);
  bool isProcessRunningWithName(std::string_view name);

  /// Nothing when there is no such process or the table can't be read.
  std::optional<RunningProcess> processNameForProcessID(std::int32_t identifier);

 private:
  std::shared_ptr<const QELOSVersionInfoCache> versionInfo();
  std::shared_ptr<const QELOSVersionInfoCache> readVersionInfo() const;

  host::FileSystem& fileSystem_;
  host::ProcessTable& processTable_;
  std::string versionListPath_;
  std::mutex mutex_;
  std::shared_ptr<const QELOSVersionInfoCache> cache_;  // under mutex_
};

}  // namespace vantrell
