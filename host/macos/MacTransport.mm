// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacTransport.h"

#include <cerrno>
#include <string>
#include <utility>

#include "host/macos/FeedbackSender.h"
#include "host/macos/ListenerEndpoint.h"
#include "host/macos/MacListener.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

/// The callers' threads are not the platform's: what they leave behind goes with each call.
class MacFeedbackConnection final : public FeedbackConnection {
 public:
  explicit MacFeedbackConnection(std::shared_ptr<FeedbackSender> sender) noexcept : sender_(std::move(sender)) {}
  ~MacFeedbackConnection() override { invalidateNow(); }

  void resume() override {
    @autoreleasepool {
      sender_->resume();
    }
  }
  void suspend() override { sender_->suspend(); }
  void invalidate() override { invalidateNow(); }
  bool isClientGone() const noexcept override { return sender_->isClientGone(); }
  void processPrivilegedOperationFeedback(const Dictionary& message) override {
    @autoreleasepool {
      sender_->send(message);
    }
  }

 private:
  void invalidateNow() {
    @autoreleasepool {
      sender_->finish();
    }
  }

  const std::shared_ptr<FeedbackSender> sender_;
};

}  // namespace

MacTransport::MacTransport(SystemLog& systemLog, const TransportLimits& limits)
    : systemLog_(systemLog), limits_(limits) {}

MacTransport::~MacTransport() {
  @autoreleasepool {
    for (const auto& weak : senders_) {
      if (const auto sender = weak.lock()) sender->abandon();
    }
  }
}

Result<std::unique_ptr<Listener>> MacTransport::makeListener(std::string_view serviceName) {
  if (serviceName.empty()) return errnoFailure(EINVAL);
  return std::make_unique<MacListener>(std::string(serviceName), systemLog_, limits_);
}

std::unique_ptr<AnonymousListener> MacTransport::makeAnonymousListener() {
  return std::make_unique<MacListener>(std::nullopt, systemLog_, limits_);
}

Result<std::shared_ptr<FeedbackConnection>> MacTransport::connectionToEndpoint(std::unique_ptr<Endpoint> endpoint) {
  const auto* named = dynamic_cast<const ListenerEndpoint*>(endpoint.get());
  if (!named || !named->get()) return errnoFailure(EINVAL);
  @autoreleasepool {
    auto sender = FeedbackSender::make(named->get(), systemLog_, limits_);
    const std::lock_guard lock(mutex_);
    std::erase_if(senders_, [](const auto& weak) { return weak.expired(); });
    senders_.push_back(sender);
    return std::make_shared<MacFeedbackConnection>(std::move(sender));
  }
}

}  // namespace vantrell::host
