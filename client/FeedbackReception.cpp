// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/FeedbackReception.h"

#include <algorithm>
#include <utility>

namespace vantrell {

namespace {
using namespace std::chrono_literals;
constexpr std::chrono::milliseconds kLongestStep = 250ms;
}  // namespace

void FeedbackReception::Activity::count() {
  const std::lock_guard guard(lock);
  ++events;
}

std::uint64_t FeedbackReception::Activity::counted() {
  const std::lock_guard guard(lock);
  return events;
}

ErrorOrNil FeedbackReception::open(host::ClientTransport& transport, std::function<void(const Dictionary&)> handler) {
  activity_ = std::make_shared<Activity>();
  auto listener =
      transport.makeFeedbackListener([activity = activity_, handler = std::move(handler)](const Dictionary& message) {
        activity->count();
        handler(message);
        activity->count();
      });
  if (!listener) return listener.error();
  listener_ = std::move(*listener);
  return std::nullopt;
}

bool FeedbackReception::waitForRest(std::chrono::milliseconds patience) {
  if (!listener_) return true;
  auto seen = activity_->counted();
  auto lastActivity = std::chrono::steady_clock::now();
  while (!listener_->waitUntilClosed(std::min(patience, kLongestStep))) {
    const auto now = std::chrono::steady_clock::now();
    const auto counted = activity_->counted();
    const bool handling = counted % 2 != 0;  // the reader of our output may be slow; that is no reason to lose any
    if (counted != seen || handling) {
      seen = counted;
      lastActivity = now;
    }
    if (now - lastActivity >= patience) return false;
  }
  return true;
}

}  // namespace vantrell
