// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <utility>

#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// The lock of a configuration file as macOS has it: a file beside it that is held with flock(2), says who holds it
/// ("PID\n") and is there only as long as it is held, unless its holder was killed. Held until released or destroyed.
class ConfigurationLock {
 public:
  /// Takes the lock file `name` of an open folder, which must outlive the lock. Nothing when another one holds it and
  /// that is not to be waited for, and when the file can't be made.
  static std::optional<ConfigurationLock> acquire(int folder, const std::string& name, bool wait);

  ConfigurationLock(ConfigurationLock&&) noexcept = default;
  ConfigurationLock& operator=(ConfigurationLock&&) = delete;
  ~ConfigurationLock() { release(); }

  /// False when it was released already, or when the file could not be removed (it is free all the same).
  bool release();

 private:
  ConfigurationLock(int folder, std::string name, FileDescriptor file)
      : folder_(folder), name_(std::move(name)), file_(std::move(file)) {}

  int folder_;
  std::string name_;
  FileDescriptor file_;
};

}  // namespace vantrell::host
