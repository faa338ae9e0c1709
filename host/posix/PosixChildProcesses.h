// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <shared_mutex>

#include <sys/types.h>

#include "host/ChildProcesses.h"

namespace vantrell::host {

class SpawnSettings;

class PosixChildProcesses final : public ChildProcesses {
 public:
  /// Takes SIGCHLD back to its default where this process ignores it, which it may have from whoever started it: a
  /// kernel that is not to tell of children keeps no exit status either.
  PosixChildProcesses();

  Result<std::unique_ptr<ChildPipes>> makePipes() override;
  Result<std::unique_ptr<ChildProcess>> launch(const std::string& path, const std::vector<std::string>& arguments,
                                               std::unique_ptr<ChildPipes> pipes) override;
  void setSearchPath(const std::optional<std::string>& path) override;
  std::optional<std::string> searchPath() override;
  /// Counted for this object, which must outlive them: one process keeps one.
  std::unique_ptr<OpenFileCreationMask> openFileCreationMask() override;
  void writeToOwnStream(ChildStream stream, DataView bytes) noexcept override;

 private:
  class OpenMask;

  /// `words` begin with the path. An error number, or 0 and the child.
  int spawn(std::vector<std::string>& words, SpawnSettings& settings, pid_t& child);
  void openMask();
  void restoreMask();

  // Guards environment and file-creation mask of this process. A launch shares it until the child has both.
  std::shared_mutex mutex_;
  unsigned openMasks_ = 0;
  mode_t formerMask_ = 0;  // while there are open masks
};

}  // namespace vantrell::host
