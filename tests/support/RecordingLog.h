// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/SystemLog.h"

namespace vantrell::tests {

/// A system log that keeps its entries. Safe from any thread.
class RecordingLog final : public host::SystemLog {
 public:
  struct Entry {
    host::LogLevel level;
    std::string subsystem;
    std::string category;
    std::string message;

    bool operator==(const Entry&) const = default;
  };

  bool isRecording() const noexcept override { return true; }

  void write(std::string_view subsystem, std::string_view category, host::LogLevel level,
             std::string_view message) noexcept override {
    message = host::withoutFinalNewline(message);
    const std::lock_guard lock(mutex_);
    entries_.push_back({level, std::string(subsystem), std::string(category), std::string(message)});
    changed_.notify_all();
  }

  std::vector<Entry> entries() const {
    const std::lock_guard lock(mutex_);
    return entries_;
  }

  std::vector<std::string> messages() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> result;
    for (const Entry& entry : entries_) result.push_back(entry.message);
    return result;
  }

  bool contains(std::string_view message) const { return count(message) != 0; }
  bool contains(host::LogLevel level, std::string_view message) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(entries_,
                               [&](const Entry& entry) { return entry.level == level && entry.message == message; });
  }

  /// How many entries say exactly that.
  std::size_t count(std::string_view message) const {
    const std::lock_guard lock(mutex_);
    return countLocked(message);
  }

  /// How many entries hold that text somewhere.
  std::size_t countContaining(std::string_view text) const {
    const std::lock_guard lock(mutex_);
    return countContainingLocked(text);
  }

  /// Waits until `times` entries say exactly that; false when `limit` passes first.
  bool waitForMessage(std::string_view message, std::size_t times = 1,
                      std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return countLocked(message) >= times; });
  }

  /// The same for entries that hold the text somewhere.
  bool waitForMessageContaining(std::string_view text, std::size_t times = 1,
                                std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return countContainingLocked(text) >= times; });
  }

  void clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
  }

 private:
  std::size_t countLocked(std::string_view message) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(entries_, [&](const Entry& entry) { return entry.message == message; }));
  }
  std::size_t countContainingLocked(std::string_view text) const {
    return static_cast<std::size_t>(std::ranges::count_if(
        entries_, [&](const Entry& entry) { return entry.message.find(text) != std::string::npos; }));
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<Entry> entries_;
};

}  // namespace vantrell::tests
