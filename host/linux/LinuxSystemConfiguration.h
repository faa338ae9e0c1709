// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <utility>

#include "host/SystemConfiguration.h"

namespace vantrell::host {

/// The configuration as macOS keeps it: property lists in /Library/Preferences/SystemConfiguration, the default one
/// "preferences.plist", any other identifier the name of a file there (without slash, and neither "." nor ".." nor a
/// name that a lock or a new file bears).
///
/// A network service is /NetworkServices/ID, its IPv6 protocol the dictionary IPv6 in it, which is off while it holds
/// the key __INACTIVE__. Applying also switches IPv6 of the service's device (Interface/DeviceName) in the running
/// kernel, where there is such a device.
class LinuxSystemConfiguration final : public SystemConfiguration {
 public:
  /// `root` stands in for the file system's root, `kernelVariables` for /proc/sys.
  explicit LinuxSystemConfiguration(std::string root = {}, std::string kernelVariables = "/proc/sys")
      : root_(std::move(root)), kernelVariables_(std::move(kernelVariables)) {}

  std::unique_ptr<SystemConfigurationSession> open(std::string_view clientName, std::string_view identifier) override;

 private:
  std::string root_;
  std::string kernelVariables_;
};

}  // namespace vantrell::host
