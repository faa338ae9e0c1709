// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxSystemConfiguration.h"

#include "host/linux/LinuxConfigurationSession.h"

namespace vantrell::host {
namespace {

constexpr char kDefaultFile[] = "preferences.plist";

bool canBeConfiguration(std::string_view name) {
  return name != "." && name != ".." && name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos &&
         !name.ends_with(LinuxConfigurationSession::kLockSuffix) &&
         !name.ends_with(LinuxConfigurationSession::kNewFileSuffix);
}

}  // namespace

std::unique_ptr<SystemConfigurationSession> LinuxSystemConfiguration::open(std::string_view,
                                                                           std::string_view identifier) {
  if (!canBeConfiguration(identifier)) return nullptr;
  std::string file(identifier.empty() ? kDefaultFile : identifier);
  return std::make_unique<LinuxConfigurationSession>(root_, std::move(file), kernelVariables_);
}

}  // namespace vantrell::host
