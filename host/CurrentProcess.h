// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

namespace vantrell::host {

/// The process that runs this code.
class CurrentProcess {
 public:
  virtual ~CurrentProcess() = default;

  virtual std::int32_t identifier() const noexcept = 0;
  virtual std::uint32_t realUserID() const noexcept = 0;
  virtual std::uint32_t effectiveUserID() const noexcept = 0;

  /// Ends the process at once with `status`; other threads are not waited for and no destructors run. Only a fake
  /// returns from this.
  virtual void exit(int status) = 0;

  /// Keeps the calling thread until the process ends; the platform's event loop for the main thread.
  virtual void runMainLoop() = 0;

  virtual void sleepForMilliseconds(unsigned milliseconds) = 0;
};

}  // namespace vantrell::host
