// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <mutex>

#include "host/ChildProcesses.h"

namespace vantrell::host {

class LinuxChildProcesses final : public ChildProcesses {
 public:
  /// Takes SIGCHLD back to its default where this process ignores it, which it may have from whoever started it: a
  /// kernel that is not to tell of children keeps no exit status either.
  LinuxChildProcesses();

  Result<std::unique_ptr<ChildPipes>> makePipes() override;
  Result<std::unique_ptr<ChildProcess>> launch(const std::string& path, const std::vector<std::string>& arguments,
                                               std::unique_ptr<ChildPipes> pipes) override;
  void setSearchPath(const std::optional<std::string>& path) override;
  std::optional<std::string> searchPath() override;
  void writeToOwnStream(ChildStream stream, DataView bytes) noexcept override;

 private:
  std::vector<std::string> environment();

  std::mutex mutex_;  // guards the environment of this process
};

}  // namespace vantrell::host
