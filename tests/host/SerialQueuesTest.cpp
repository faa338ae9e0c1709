// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "host/linux/SerialQueues.h"

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;
using host::SerialQueues;

TEST(SerialQueuesConcurrent, RunTheTasksOfAKeyInOrderOneAtATime) {
  std::atomic<int> done = 0;
  std::vector<int> order[4];
  {
    SerialQueues queues;
    for (int i = 0; i < 200; ++i) {
      for (int key = 0; key < 4; ++key) {
        queues.post(std::to_string(key), [&, key, i] {
          order[key].push_back(i);  // unguarded: two at a time would be a race
          ++done;
        });
      }
    }
    while (done < 800) std::this_thread::yield();
  }
  for (const std::vector<int>& one : order) {
    ASSERT_EQ(one.size(), 200U);
    EXPECT_TRUE(std::ranges::is_sorted(one));
  }
}

TEST(SerialQueuesConcurrent, RunTheTasksOfDifferentKeysAtTheSameTime) {
  std::latch together(4);
  SerialQueues queues;
  for (int key = 0; key < 4; ++key) {
    queues.post(std::to_string(key), [&] { together.arrive_and_wait(); });
  }
  together.wait();
}

TEST(SerialQueuesConcurrent, MakeNoMoreThreadsThanTheyMay) {
  std::atomic<int> running = 0;
  std::atomic<int> most = 0;
  std::atomic<int> done = 0;
  SerialQueues queues(2, 10s);
  for (int key = 0; key < 50; ++key) {
    queues.post(std::to_string(key), [&] {
      const int now = ++running;
      int before = most;
      while (before < now && !most.compare_exchange_weak(before, now)) {
      }
      std::this_thread::sleep_for(1ms);
      --running;
      ++done;
    });
  }
  while (done < 50) std::this_thread::yield();
  EXPECT_LE(most, 2);
}

TEST(SerialQueuesConcurrent, ForgetKeysAndEndThreadsThatHaveNothingToDo) {
  std::atomic<int> done = 0;
  SerialQueues queues(8, 20ms);
  for (int round = 0; round < 3; ++round) {
    for (int key = 0; key < 8; ++key) queues.post(std::to_string(key), [&] { ++done; });
    while (done < 8 * (round + 1)) std::this_thread::yield();
    for (int i = 0; i < 2000 && queues.threadCount() != 0; ++i) std::this_thread::sleep_for(5ms);
    EXPECT_EQ(queues.threadCount(), 0U);
    EXPECT_EQ(queues.keyCount(), 0U);
  }
}

TEST(SerialQueuesConcurrent, LiveOnAfterAnException) {
  std::latch done(1);
  SerialQueues queues;
  queues.post("key", [] { throw std::runtime_error("task"); });
  queues.post("key", [&] { done.count_down(); });
  done.wait();
}

TEST(SerialQueuesConcurrent, DropWhatWaitsInTheEnd) {
  std::atomic<bool> began = false;
  std::atomic<bool> release = false;
  std::atomic<int> later = 0;
  std::thread releasing;
  {
    SerialQueues queues;
    queues.post("key", [&] {
      began = true;
      while (!release) std::this_thread::yield();
    });
    for (int i = 0; i < 100; ++i) queues.post("key", [&] { ++later; });
    while (!began) std::this_thread::yield();
    releasing = std::thread([&] {
      std::this_thread::sleep_for(50ms);
      release = true;
    });
  }
  EXPECT_EQ(later, 0);
  releasing.join();
}

}  // namespace
}  // namespace vantrell::tests
