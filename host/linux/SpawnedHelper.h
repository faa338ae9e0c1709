// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <string>

#include <sys/types.h>

#include "host/ClientTransport.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// A helper that was started for one client, with its socket in a folder of its own.
///
/// It is started as a service manager would: the listening socket as descriptor 3 (LISTEN_FDS, LISTEN_PID), no other
/// descriptor but standard output and error, standard input from /dev/null, a session of its own, so that a terminal's
/// signals are the client's alone, and default signal handling.
class SpawnedHelper final : public SpawnedService {
 public:
  static Result<std::unique_ptr<SpawnedService>> start(const std::string& executablePath);

  SpawnedHelper() = default;
  /// Asks the helper to end, ends it after a second, and removes the folder.
  ~SpawnedHelper() override;

  const std::string& address() const noexcept override { return address_; }
  std::optional<int> waitForExit(std::chrono::milliseconds limit) override;

 private:
  ErrorOrNil makeFolder();
  ErrorOrNil startHelper(const std::string& executablePath);
  void signal(int number) noexcept;

  std::string folder_;
  std::string socketPath_;
  std::string address_;
  FileDescriptor listening_;
  pid_t pid_ = -1;
  FileDescriptor process_;

  std::mutex mutex_;
  std::optional<int> status_;
};

}  // namespace vantrell::host
