// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFeedbackConnection.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

FeedbackThreads::~FeedbackThreads() {
  for (const Running& running : running_) running.channel->abandon();
  for (Running& running : running_) running.thread.join();
}

Result<std::shared_ptr<FeedbackConnection>> FeedbackThreads::connect(FileDescriptor socket) try {
  Result<std::shared_ptr<FeedbackChannel>> channel = FeedbackChannel::make(std::move(socket), systemLog_, limits_);
  if (!channel) return failure(channel.error());
  const std::lock_guard lock(mutex_);
  reapEnded();
  running_.reserve(running_.size() + 1);  // nothing may fail once the thread runs
  running_.push_back({*channel, std::thread([channel = *channel] { channel->run(); })});
  return std::make_shared<LinuxFeedbackConnection>(*std::move(channel));
} catch (const std::system_error& error) {
  return errnoFailure(error.code().value());
}

void FeedbackThreads::reapEnded() {
  std::erase_if(running_, [](Running& running) {
    if (!running.channel->hasEnded()) return false;
    running.thread.join();
    return true;
  });
}

}  // namespace vantrell::host
