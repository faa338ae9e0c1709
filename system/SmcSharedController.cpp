// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcSharedController.h"

#include <utility>

namespace vantrell {

std::shared_ptr<QELSystemManagementController> SmcSharedController::current() const {
  const std::lock_guard guard(lock_);
  return controller_;
}

std::shared_ptr<QELSystemManagementController> SmcSharedController::controller() {
  if (auto present = current()) return present;
  std::shared_ptr<QELSystemManagementController> made = QELSystemManagementController::init(driver_, systemLog_);
  const std::lock_guard guard(lock_);
  if (!controller_) controller_ = std::move(made);
  return controller_;
}

}  // namespace vantrell
