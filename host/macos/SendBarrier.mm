// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/SendBarrier.h"

namespace vantrell::host {

// Both are about a method that is newer than the oldest system, and asked for before it is called.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunguarded-availability"
#pragma clang diagnostic ignored "-Wunguarded-availability-new"

bool hasSendBarriers() noexcept {
  return [NSXPCConnection instancesRespondToSelector:@selector(scheduleSendBarrierBlock:)];
}

void raiseSendBarrier(NSXPCConnection* connection, void (^passed)(void)) noexcept {
  @try {
    [connection scheduleSendBarrierBlock:passed];
  } @catch (NSException*) {
    // A connection that has just ended takes none.
  }
}

#pragma clang diagnostic pop

}  // namespace vantrell::host
