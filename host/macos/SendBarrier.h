// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#import <Foundation/Foundation.h>

namespace vantrell::host {

// Barriers behind the messages of a connection, which systems before 10.15 lack. For Objective-C++ sources only.

/// Asks the class, not the system's version: what the compiler's own question needs is not in every toolchain.
bool hasSendBarriers() noexcept;

/// Calls `passed`, on a thread of the platform's, once what was sent before has left this process. Perhaps never, where
/// the connection ends before. Only where there are barriers.
void raiseSendBarrier(NSXPCConnection* connection, void (^passed)(void)) noexcept;

}  // namespace vantrell::host
