// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/OperationCancellation.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantrell {

namespace {
using namespace std::chrono_literals;
constexpr std::chrono::milliseconds kFirstInterval = 50ms;
constexpr std::chrono::milliseconds kLongestInterval = 5s;
}  // namespace

void OperationCancellation::request() {
  const std::lock_guard guard(lock_);
  requested_ = true;
  changed_.notify_all();
}

bool OperationCancellation::isRequested() const {
  const std::lock_guard guard(lock_);
  return requested_;
}

CancellationSender::CancellationSender(OperationCancellation& cancellation, std::function<void()> send)
    : cancellation_(cancellation), send_(std::move(send)), thread_([this] { run(); }) {}

CancellationSender::~CancellationSender() {
  {
    const std::lock_guard guard(cancellation_.lock_);
    isEnding_ = true;
  }
  cancellation_.changed_.notify_all();
  thread_.join();
}

void CancellationSender::run() {
  std::unique_lock guard(cancellation_.lock_);
  cancellation_.changed_.wait(guard, [this] { return cancellation_.requested_ || isEnding_; });
  for (auto interval = kFirstInterval; !isEnding_; interval = std::min(2 * interval, kLongestInterval)) {
    guard.unlock();
    send_();
    guard.lock();
    cancellation_.changed_.wait_for(guard, interval, [this] { return isEnding_; });
  }
}

}  // namespace vantrell
