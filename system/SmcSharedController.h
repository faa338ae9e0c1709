// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>

#include "host/SmcDriver.h"
#include "host/SystemLog.h"
#include "system/QELSystemManagementController.h"

namespace vantrell {

/// The one controller of a process: owned by what lives as long as the process serves, instead of by the class. Safe
/// from any thread. What it is given must outlive it.
class SmcSharedController {
 public:
  SmcSharedController(host::SmcDriver& driver, host::SystemLog& systemLog) : driver_(driver), systemLog_(systemLog) {}

  /// Made at the first call; null when that fails, and the next call tries again. Two threads that come first at the
  /// same time may both make one, since nobody waits for a slow controller; all get the one that was ready first.
  std::shared_ptr<QELSystemManagementController> controller();

 private:
  std::shared_ptr<QELSystemManagementController> current() const;

  host::SmcDriver& driver_;
  host::SystemLog& systemLog_;
  mutable std::mutex lock_;  // guards controller_; never held over a call of the driver
  std::shared_ptr<QELSystemManagementController> controller_;
};

}  // namespace vantrell
