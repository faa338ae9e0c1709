// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "host/FileSystem.h"
#include "host/MainBundle.h"

namespace vantrell::host {

/// The lists lie in the ELF sections `__info_plist` and `__launchd_plist`. The executable is read once, when the first
/// list is asked for. Safe from any thread.
class LinuxMainBundle final : public MainBundle {
 public:
  /// `executable` is the running one unless a test says otherwise. `fileSystem` must outlive this.
  explicit LinuxMainBundle(FileSystem& fileSystem, std::string executable = "/proc/self/exe");

  /// POSIX error 2 when the executable has been removed or replaced since it was started.
  Result<std::string> executablePath() override;
  /// POSIX error 94 when the executable's section headers can't be read.
  Result<Data> informationPropertyList() override;
  Result<Data> launchdPropertyList() override;

 private:
  struct Lists {
    std::optional<Data> information;
    std::optional<Data> launchd;
  };

  Result<Lists> readLists();
  Result<Data> list(std::optional<Data> Lists::*which);

  FileSystem& fileSystem_;
  const std::string executable_;
  std::mutex lock_;  // guards lists_
  std::optional<Result<Lists>> lists_;
};

}  // namespace vantrell::host
