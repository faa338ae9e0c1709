// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacFeedbackListener.h"

#include <algorithm>
#include <utility>

#include "host/macos/FoundationValues.h"
#include "host/macos/ToolProtocols.h"

using vantrell::host::FeedbackInbox;

/// The platform's delegate of a feedback listener, and what its connection exports.
@interface QELFeedbackExport : NSObject <NSXPCListenerDelegate, QELPrivilegedOperationFeedbackProtocol>
- (nonnull instancetype)initWithInbox:(std::shared_ptr<FeedbackInbox>)inbox;
@end

@implementation QELFeedbackExport {
  std::shared_ptr<FeedbackInbox> inbox_;
}

- (instancetype)initWithInbox:(std::shared_ptr<FeedbackInbox>)inbox {
  self = [super init];
  if (self) inbox_ = std::move(inbox);
  return self;
}

- (BOOL)listener:(NSXPCListener*)listener shouldAcceptNewConnection:(NSXPCConnection*)newConnection {
  newConnection.exportedInterface = vantrell::host::interfaceForFeedbackProtocol();
  newConnection.exportedObject = self;
  return inbox_->take(newConnection);
}

- (void)processPrivilegedOperationFeedback:(NSDictionary*)feedback {
  inbox_->deliver(feedback);
}

@end

namespace vantrell::host {

namespace {

/// Answer and feedback come on two connections, which the system serves in no order.
constexpr std::chrono::milliseconds kTimeToConnect{250};

}  // namespace

bool FeedbackInbox::take(NSXPCConnection* connection) {
  {
    const std::lock_guard lock(mutex_);
    if (connection_ || ended_ || Clock::now() >= nobodyComesAfter_) return false;
    connection_ = connection;
  }
  const std::weak_ptr<FeedbackInbox> weak = weak_from_this();
  const auto left = ^{
    if (const auto inbox = weak.lock()) inbox->connectionEnded();
  };
  connection.interruptionHandler = left;
  connection.invalidationHandler = left;
  [connection resume];
  return true;
}

void FeedbackInbox::deliver(NSDictionary* message) {
  {
    const std::lock_guard lock(mutex_);
    if (ended_) return;
    ++handling_;
  }
  try {
    // What holds more than a message may is no message.
    if (const auto dictionary = dictionaryFrom(message)) handler_(*dictionary);
  } catch (...) {
    // The handler's failure is its own; the next message may fare better.
  }
  const std::lock_guard lock(mutex_);
  --handling_;
  changed_.notify_all();
}

void FeedbackInbox::connectionEnded() {
  const std::lock_guard lock(mutex_);
  connectionEnded_ = true;
  changed_.notify_all();
}

void FeedbackInbox::requestAnswered() {
  const std::lock_guard lock(mutex_);
  nobodyComesAfter_ = Clock::now() + kTimeToConnect;
  changed_.notify_all();
}

bool FeedbackInbox::waitUntilClosed(std::chrono::milliseconds limit) {
  const Clock::time_point until = Clock::now() + limit;
  std::unique_lock lock(mutex_);
  for (;;) {
    const Clock::time_point now = Clock::now();
    const bool nobodyCame = !connection_ && now >= nobodyComesAfter_;
    if (ended_ || nobodyCame || (connectionEnded_ && handling_ == 0)) return true;
    if (now >= until) return false;
    changed_.wait_until(lock, connection_ ? until : std::min(until, nobodyComesAfter_));
  }
}

void FeedbackInbox::end() {
  std::unique_lock lock(mutex_);
  ended_ = true;
  // The connection knows this object as well, and neither would ever go.
  NSXPCConnection* const connection = std::exchange(connection_, nil);
  changed_.notify_all();
  changed_.wait(lock, [this] { return handling_ == 0; });
  lock.unlock();
  [connection invalidate];
}

MacFeedbackListener::MacFeedbackListener(FeedbackInbox::Handler handler)
    : inbox_(std::make_shared<FeedbackInbox>(std::move(handler))), listener_([NSXPCListener anonymousListener]) {
  delegate_ = [[QELFeedbackExport alloc] initWithInbox:inbox_];
  listener_.delegate = delegate_;
  [listener_ resume];
}

MacFeedbackListener::~MacFeedbackListener() {
  @autoreleasepool {
    inbox_->end();
    [listener_ invalidate];
  }
}

NSXPCListenerEndpoint* MacFeedbackListener::takeEndpoint() {
  const std::lock_guard lock(mutex_);
  return std::exchange(endpointTaken_, true) ? nil : listener_.endpoint;
}

}  // namespace vantrell::host
