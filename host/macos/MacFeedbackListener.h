// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#import <Foundation/Foundation.h>

#include "host/ClientTransport.h"

namespace vantrell::host {

/// What the platform's threads know of a feedback listener. Safe from any thread. For Objective-C++ sources only.
class FeedbackInbox : public std::enable_shared_from_this<FeedbackInbox> {
 public:
  using Handler = std::function<void(const Dictionary&)>;

  explicit FeedbackInbox(Handler handler) : handler_(std::move(handler)) {}

  /// The service's one connection; others are refused.
  bool take(NSXPCConnection* connection);
  void deliver(NSDictionary* message);
  /// The request has its answer. A service that has not connected by then, and does not within a moment, won't.
  void requestAnswered();
  bool waitUntilClosed(std::chrono::milliseconds limit);
  /// Ends the connection and waits for the handler.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  void connectionEnded();

  const Handler handler_;
  std::mutex mutex_;
  std::condition_variable changed_;
  NSXPCConnection* connection_ = nil;
  Clock::time_point nobodyComesAfter_ = Clock::time_point::max();
  int handling_ = 0;
  bool connectionEnded_ = false;
  bool ended_ = false;
};

/// An anonymous listener whose endpoint goes to the service with one request. For Objective-C++ sources only.
class MacFeedbackListener final : public FeedbackListener {
 public:
  explicit MacFeedbackListener(FeedbackInbox::Handler handler);
  /// Not from the handler.
  ~MacFeedbackListener() override;

  bool waitUntilClosed(std::chrono::milliseconds limit) override { return inbox_->waitUntilClosed(limit); }

  /// For the service; nil when it was taken before.
  NSXPCListenerEndpoint* takeEndpoint();
  const std::shared_ptr<FeedbackInbox>& inbox() const noexcept { return inbox_; }

 private:
  const std::shared_ptr<FeedbackInbox> inbox_;
  NSXPCListener* const listener_;
  id<NSXPCListenerDelegate> delegate_ = nil;  // the platform's reference is weak
  std::mutex mutex_;
  bool endpointTaken_ = false;
};

}  // namespace vantrell::host
