// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "client/CommandContext.h"
#include "client/OperationCancellation.h"
#include "client/PrivilegedToolClient.h"

namespace vantrell {

/// What happens when this process is asked to end (by Ctrl-C, say) while it works for its user. Safe from any thread.
class InterruptReaction {
 public:
  explicit InterruptReaction(const CommandContext& context) : context_(context) {}

  /// The client to leave the service with; null when there is none (any more).
  void setClient(std::shared_ptr<PrivilegedToolClient> client);
  OperationCancellation& cancellation() noexcept { return cancellation_; }

  /// The first time cancels the operation; from then on leaves the service and ends the process with status 1.
  void interrupt();

 private:
  const CommandContext& context_;
  OperationCancellation cancellation_;
  std::atomic<bool> interrupted_ = false;
  std::mutex lock_;
  std::shared_ptr<PrivilegedToolClient> client_;
};

}  // namespace vantrell
