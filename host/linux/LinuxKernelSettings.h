// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <utility>

#include "host/KernelSettings.h"

namespace vantrell::host {

/// Puts a number, as decimal text, into one of /proc/sys's files. A path with a zero byte is POSIX error 2.
ErrorOrNil writeKernelVariable(const std::string& path, std::int64_t value);

/// The files below /proc/sys: "net.ipv4.ip_forward" is net/ipv4/ip_forward. Dots in a component of the name can't be
/// told from those between components, so that such variables are out of reach here.
class LinuxKernelSettings final : public KernelSettings {
 public:
  explicit LinuxKernelSettings(std::string root = "/proc/sys") : root_(std::move(root)) {}

  ErrorOrNil set(std::string_view name, std::int64_t value) override;

 private:
  std::string root_;
};

}  // namespace vantrell::host
