// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacListener.h"

#include <cerrno>
#include <utility>

#include "host/macos/FoundationValues.h"
#include "host/macos/ListenerEndpoint.h"
#include "host/posix/ErrorNumbers.h"

/// The platform's delegate of a listener.
@interface QELListenerDelegate : NSObject <NSXPCListenerDelegate>
- (nonnull instancetype)initWithState:(std::shared_ptr<vantrell::host::ListenerState>)state;
@end

@implementation QELListenerDelegate {
  std::shared_ptr<vantrell::host::ListenerState> state_;
}

- (instancetype)initWithState:(std::shared_ptr<vantrell::host::ListenerState>)state {
  self = [super init];
  if (self) state_ = std::move(state);
  return self;
}

- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)newConnection {
  try {
    return state_->take(newConnection);
  } catch (...) {
    // Out of memory.
    return NO;
  }
}

@end

namespace vantrell::host {

MacListener::MacListener(std::optional<std::string> serviceName, SystemLog& systemLog, const TransportLimits& limits)
    : serviceName_(std::move(serviceName)), state_(std::make_shared<ListenerState>(*this, systemLog, limits)) {}

MacListener::~MacListener() {
  @autoreleasepool {
    state_->end();
    if (!listener_) return;
    if (suspended_) {
      [listener_ resume];  // nobody is taken in
    } else if (invalid_) {
      return;
    }
    [listener_ invalidate];
  }
}

void MacListener::setDelegate(ListenerDelegate* delegate) {
  state_->setDelegate(delegate);
}

NSXPCListener* MacListener::platformListener() {
  if (listener_) return listener_;
  listener_ = serviceName_ ? [[NSXPCListener alloc] initWithMachServiceName:stringFrom(*serviceName_)]
                           : [NSXPCListener anonymousListener];
  delegate_ = [[QELListenerDelegate alloc] initWithState:state_];
  listener_.delegate = delegate_;
  return listener_;
}

ErrorOrNil MacListener::resume() {
  @autoreleasepool {
    const std::lock_guard lock(mutex_);
    if (invalid_) return errorFromErrno(EINVAL);
    if (!suspended_) return std::nullopt;
    suspended_ = false;
    state_->setOpen(true);
    [platformListener() resume];
    return std::nullopt;
  }
}

void MacListener::suspend() {
  @autoreleasepool {
    const std::lock_guard lock(mutex_);
    if (suspended_ || invalid_) return;
    suspended_ = true;
    [listener_ suspend];
    state_->setOpen(false);
  }
}

void MacListener::invalidate() {
  @autoreleasepool {
    const std::lock_guard lock(mutex_);
    if (std::exchange(invalid_, true)) return;
    state_->setOpen(false);
    if (!suspended_) [listener_ invalidate];
  }
}

std::unique_ptr<Endpoint> MacListener::endpoint() {
  @autoreleasepool {
    const std::lock_guard lock(mutex_);
    return std::make_unique<ListenerEndpoint>(platformListener().endpoint);
  }
}

}  // namespace vantrell::host
