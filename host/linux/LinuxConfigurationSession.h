// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "host/SystemConfiguration.h"
#include "host/linux/ConfigurationLock.h"
#include "host/linux/PropertyListFile.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// The configuration's file as a session found it.
struct ConfigurationOriginal {
  std::optional<FileSignature> signature;  // nothing: there was no file
  mode_t permissions = 0644;
  std::optional<std::pair<uid_t, gid_t>> owner;
};

/// A session with one file of LinuxSystemConfiguration.
class LinuxConfigurationSession final : public SystemConfigurationSession {
 public:
  static constexpr char kLockSuffix[] = "-lock";
  static constexpr char kNewFileSuffix[] = "-new";

  /// `fileName` is checked.
  LinuxConfigurationSession(std::string root, std::string fileName, std::string kernelVariables);

  bool lock(bool wait) override;
  bool unlock() override;
  bool setValue(std::string key, Value value) override;
  bool removeValue(std::string_view key) override;
  std::unique_ptr<NetworkService> networkService(std::string_view identifier) override;
  bool applyChanges() override;
  bool commitChanges() override;

  /// The IPv6 dictionary of a service, or null.
  Dictionary* ipv6Of(std::string_view service);
  bool setIpv6Enabled(const std::string& service, bool enabled);

 private:
  bool openFolder(bool create);
  bool access();
  bool isStale() const;
  bool switchIpv6(const std::string& device, bool enabled) const;

  std::string root_;
  std::string fileName_;
  std::string kernelVariables_;
  FileDescriptor folder_;
  std::optional<ConfigurationLock> lock_;          // lies in the folder: goes first
  std::optional<ConfigurationOriginal> original_;  // nothing before the first access
  Dictionary contents_;
  bool isChanged_ = false;
  std::map<std::string, bool, std::less<>> switches_;  // IPv6 on or off by device, yet to be applied
};

}  // namespace vantrell::host
