// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/linux/FeedbackChannel.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// The threads behind feedback connections. A connection may be let go while its last messages are on their way.
class FeedbackThreads {
 public:
  FeedbackThreads(SystemLog& systemLog, const TransportLimits& limits) : systemLog_(systemLog), limits_(limits) {}
  /// Ends them all at once and waits for them.
  ~FeedbackThreads();
  FeedbackThreads(const FeedbackThreads&) = delete;
  FeedbackThreads& operator=(const FeedbackThreads&) = delete;

  Result<std::shared_ptr<FeedbackConnection>> connect(FileDescriptor socket);

 private:
  struct Running {
    std::shared_ptr<FeedbackChannel> channel;
    std::thread thread;
  };

  void reapEnded();

  SystemLog& systemLog_;
  const TransportLimits limits_;
  std::mutex mutex_;
  std::vector<Running> running_;
};

/// The service's connection to a client's feedback endpoint. The handshake goes ahead at once, messages only when it is
/// resumed; a suspended connection keeps its messages. Letting it go invalidates it.
class LinuxFeedbackConnection final : public FeedbackConnection {
 public:
  explicit LinuxFeedbackConnection(std::shared_ptr<FeedbackChannel> channel) noexcept : channel_(std::move(channel)) {}
  ~LinuxFeedbackConnection() override { channel_->finish(); }

  void resume() override { channel_->resume(); }
  void suspend() override { channel_->suspend(); }
  void invalidate() override { channel_->finish(); }
  bool isClientGone() const noexcept override { return channel_->isClientGone(); }
  void processPrivilegedOperationFeedback(const Dictionary& message) override { channel_->send(message); }

 private:
  const std::shared_ptr<FeedbackChannel> channel_;
};

}  // namespace vantrell::host
