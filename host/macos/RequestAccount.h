// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// What one client has under way: requests without an answer, and what they hold in memory. Safe from any thread.
class RequestAccount {
 public:
  explicit RequestAccount(const TransportLimits& limits) noexcept : limits_(limits) {}

  /// One request, from its arrival to its answer; an empty one was too much.
  class Charge {
   public:
    Charge() noexcept = default;
    Charge(Charge&&) noexcept = default;
    Charge& operator=(Charge&&) = delete;
    ~Charge() { settle(); }

    explicit operator bool() const noexcept { return account_ != nullptr; }
    /// The request is answered.
    void settle() noexcept {
      if (const auto account = std::exchange(account_, nullptr)) account->settle(bytes_);
    }

   private:
    friend class RequestAccount;
    Charge(std::shared_ptr<RequestAccount> account, std::size_t bytes) noexcept
        : account_(std::move(account)), bytes_(bytes) {}

    std::shared_ptr<RequestAccount> account_;
    std::size_t bytes_ = 0;
  };

  /// Counts a request, unless its client then had too many or too large ones under way.
  static Charge charge(const std::shared_ptr<RequestAccount>& account, std::size_t bytes) {
    const std::lock_guard lock(account->mutex_);
    if (account->requests_ >= account->limits_.unansweredRequests) return {};
    if (bytes > account->limits_.unansweredBytes - account->bytes_) return {};
    ++account->requests_;
    account->bytes_ += bytes;
    return {account, bytes};
  }

 private:
  void settle(std::size_t bytes) noexcept {
    const std::lock_guard lock(mutex_);
    --requests_;
    bytes_ -= bytes;
  }

  const TransportLimits limits_;
  std::mutex mutex_;
  std::size_t requests_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace vantrell::host
