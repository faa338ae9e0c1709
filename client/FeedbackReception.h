// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "host/ClientTransport.h"

namespace vantrell {

/// Takes one operation's feedback and tells when all of it has been handled.
class FeedbackReception {
 public:
  /// `handler` is called on a thread of the listener's, one message after the other.
  ErrorOrNil open(host::ClientTransport& transport, std::function<void(const Dictionary&)> handler);

  /// Null until opened.
  host::FeedbackListener* listener() const noexcept { return listener_.get(); }

  /// Waits until the service has closed its end and all messages have been handled, or no message has begun or ended
  /// for `patience`. True when nothing is outstanding.
  bool waitForRest(std::chrono::milliseconds patience);

 private:
  struct Activity {
    std::mutex lock;
    std::uint64_t events = 0;  // messages begun and ended: odd while one is being handled
    void count();
    std::uint64_t counted();
  };

  std::shared_ptr<Activity> activity_;
  std::unique_ptr<host::FeedbackListener> listener_;
};

}  // namespace vantrell
