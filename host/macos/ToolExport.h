// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <memory>
#include <utility>

#import <Foundation/Foundation.h>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/macos/CallGate.h"
#include "host/macos/RequestAccount.h"
#include "host/macos/ToolProtocols.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// One client as its requests and their answers need to know it. It outlives the connection where answers are still to
/// come. For Objective-C++ sources only.
struct ToolClient {
  /// `gate` is the listener's, and guards the object from requests that come after the listener has gone.
  ToolClient(std::shared_ptr<CallGate> gate, const TransportLimits& limits)
      : gate(std::move(gate)), account(std::make_shared<RequestAccount>(limits)) {}

  const std::shared_ptr<CallGate> gate;
  const std::shared_ptr<RequestAccount> account;
  QELPrivilegedToolProtocol* object = nullptr;  // set before the first request
  std::atomic<bool> isDismissed = false;        // by this side: nothing more is delivered or answered
  std::atomic<bool> isGone = false;             // of its own: what it sent before is still delivered
};

}  // namespace vantrell::host

/// What a connection exports: hands each request to the client's object. Messages arrive on the connection's own queue,
/// one after the other.
///
/// A request that holds more than a message may is answered with POSIX error 22, one beyond the client's bounds
/// with 55.
@interface QELToolExport : NSObject <QELPrivilegedToolProtocol>
- (nonnull instancetype)initWithClient:(std::shared_ptr<vantrell::host::ToolClient>)client;
@end
