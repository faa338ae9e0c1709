// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/InterruptReaction.h"

#include <utility>

#include "client/ExitStatus.h"

namespace vantrell {

void InterruptReaction::setClient(std::shared_ptr<PrivilegedToolClient> client) {
  const std::lock_guard guard(lock_);
  client_ = std::move(client);
}

void InterruptReaction::interrupt() {
  if (!interrupted_.exchange(true)) {
    cancellation_.request();
    return;
  }
  std::shared_ptr<PrivilegedToolClient> client;
  {
    const std::lock_guard guard(lock_);
    client = client_;
  }
  if (client) client->abandon();
  context_.host.currentProcess->exit(static_cast<int>(ExitStatus::Failure));
}

}  // namespace vantrell
