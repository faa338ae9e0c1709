// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#import <Foundation/Foundation.h>

#include "host/SystemLog.h"
#include "host/macos/ListenerState.h"
#include "host/macos/MacTransport.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// Serves the clients of a Mach service, or of an endpoint. For Objective-C++ sources only.
///
/// The platform wants each suspension taken back before a listener is invalidated or let go. One that was suspended and
/// then invalidated (as the helper does just before it exits) is therefore only left suspended, until this object goes:
/// the clients that come meanwhile wait in the Mach service's port for the helper's next start.
class MacListener final : public AnonymousListener {
 public:
  /// Without a name it serves its endpoint only. `systemLog` must outlive the listener.
  MacListener(std::optional<std::string> serviceName, SystemLog& systemLog, const TransportLimits& limits);
  ~MacListener() override;

  void setDelegate(ListenerDelegate* delegate) override;
  /// POSIX error 22 once it was invalidated. That the name can't be had is not told: no client will come.
  ErrorOrNil resume() override;
  void suspend() override;
  void invalidate() override;
  std::unique_ptr<Endpoint> endpoint() override;

 private:
  NSXPCListener* platformListener();

  const std::optional<std::string> serviceName_;
  const std::shared_ptr<ListenerState> state_;
  std::mutex mutex_;
  // Made when it is first needed, so that one that is never used leaves nothing suspended behind.
  NSXPCListener* listener_ = nil;
  id<NSXPCListenerDelegate> delegate_ = nil;  // the platform's reference is weak
  bool suspended_ = true;
  bool invalid_ = false;
};

}  // namespace vantrell::host
