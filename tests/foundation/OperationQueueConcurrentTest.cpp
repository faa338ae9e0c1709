// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/OperationQueue.h"
#include "tests/foundation/Gate.h"

namespace vantrell {
namespace {

using namespace std::chrono_literals;

std::shared_ptr<BlockOperation> operationOf(BlockOperation::Block body) {
  return std::make_shared<BlockOperation>(std::move(body));
}

void onThreads(int count, const auto& body) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back([&body, i] { body(i); });
}

TEST(OperationQueueConcurrentTest, NoOperationOfManyAddersIsLost) {
  constexpr int kAdders = 6;
  constexpr int kEach = 1000;
  OperationQueue queue(4, 0);  // without an idle lifetime threads come and go all the time
  std::atomic<int> bodies = 0;
  std::atomic<int> completions = 0;
  std::atomic<int> running = 0;
  std::atomic<int> mostRunning = 0;
  onThreads(kAdders, [&](int) {
    for (int i = 0; i < kEach; ++i) {
      auto operation = operationOf([&] {
        const int now = ++running;
        for (int most = mostRunning; most < now && !mostRunning.compare_exchange_weak(most, now);) continue;
        ++bodies;
        --running;
      });
      operation->setCompletionBlock([&] { ++completions; });
      queue.addOperation(std::move(operation));
    }
  });
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(bodies, kAdders * kEach);
  EXPECT_EQ(completions, kAdders * kEach);
  EXPECT_LE(mostRunning, 4);
}

// One idle thread, two operations that need each other: both must get a thread, though the idle one is still on the
// stack of the scheduler when the second operation is added.
TEST(OperationQueueConcurrentTest, TwoQuickAdditionsGetTwoThreads) {
  for (int round = 0; round < 300; ++round) {
    OperationQueue queue;
    queue.addOperation(operationOf([] {}));
    queue.waitUntilAllOperationsAreFinished();
    Gate both(2);
    std::atomic<int> met = 0;
    for (int i = 0; i < 2; ++i) queue.addOperation(operationOf([&] { met += both.arriveAndWait() ? 1 : 0; }));
    queue.waitUntilAllOperationsAreFinished();
    ASSERT_EQ(met, 2) << "round " << round;
  }
}

// Groups of operations that all need each other, while the threads of the group before become idle or end.
TEST(OperationQueueConcurrentTest, EveryOperationOfAGroupGetsAThread) {
  for (const unsigned lifetime : {0U, 1U, 5000U}) {
    OperationQueue queue(64, lifetime);
    for (int round = 0; round < 100; ++round) {
      const int size = 2 + round % 7;
      auto together = std::make_shared<Gate>(size);
      auto met = std::make_shared<std::atomic<int>>(0);
      for (int i = 0; i < size; ++i) {
        queue.addOperation(operationOf([together, met] { *met += together->arriveAndWait() ? 1 : 0; }));
      }
      if (round % 3 == 0) continue;  // the next group overlaps this one
      queue.waitUntilAllOperationsAreFinished();
      ASSERT_EQ(*met, size) << "round " << round << ", lifetime " << lifetime;
    }
    queue.waitUntilAllOperationsAreFinished();
  }
}

TEST(OperationQueueConcurrentTest, CancellingRacesWithBeginning) {
  constexpr int kOperations = 2000;
  struct Slot {
    std::atomic<int> bodies = 0;
    std::atomic<int> completions = 0;
    std::shared_ptr<BlockOperation> operation;
  };
  std::vector<Slot> slots(kOperations);
  for (Slot& slot : slots) {
    slot.operation = operationOf([&slot] { ++slot.bodies; });
    slot.operation->setCompletionBlock([&slot] { ++slot.completions; });
  }
  std::atomic<int> added = 0;
  {
    OperationQueue queue(4);
    onThreads(3, [&](int thread) {
      if (thread == 0) {
        for (Slot& slot : slots) {
          queue.addOperation(slot.operation);
          ++added;
        }
        return;
      }
      for (int i = thread - 1; i < kOperations; i += 2) {
        while (added <= i) std::this_thread::yield();
        slots[static_cast<std::size_t>(i)].operation->cancel();
      }
    });
  }
  for (const Slot& slot : slots) {
    EXPECT_LE(slot.bodies, 1);
    EXPECT_EQ(slot.completions, 1);
    EXPECT_TRUE(slot.operation->isCancelled());
  }
}

TEST(OperationQueueConcurrentTest, RemovingWaitsForARunningObserver) {
  BlockOperation operation([] {});
  Gate running;
  bool ended = false;
  const auto token = operation.addCancellationObserver([&] {
    running.open();
    std::this_thread::sleep_for(20ms);
    ended = true;
  });
  std::jthread canceller([&] { operation.cancel(); });
  ASSERT_TRUE(running.wait());
  operation.removeCancellationObserver(token);
  EXPECT_TRUE(ended);
}

// What an observer refers to is destroyed as soon as the observer was removed; a call that came later or were still
// under way would touch it.
TEST(OperationQueueConcurrentTest, ARemovedObserverIsNotRunning) {
  for (int round = 0; round < 2000; ++round) {
    BlockOperation operation([] {});
    Gate begin(2);
    std::atomic<int> calls = 0;
    std::jthread canceller([&] {
      EXPECT_TRUE(begin.arriveAndWait());
      operation.cancel();
    });
    EXPECT_TRUE(begin.arriveAndWait());
    auto target = std::make_unique<std::vector<int>>(16);
    const auto token = operation.addCancellationObserver([&calls, vector = target.get()] {
      for (int& element : *vector) ++element;
      ++calls;
    });
    operation.removeCancellationObserver(token);
    const int callsAtRemoval = calls;
    target.reset();
    canceller.join();
    EXPECT_LE(callsAtRemoval, 1);
    EXPECT_EQ(calls, callsAtRemoval);
  }
}

TEST(OperationQueueConcurrentTest, ObserversOfManyThreadsAreEachCalledOnce) {
  for (int round = 0; round < 200; ++round) {
    BlockOperation operation([] {});
    Gate begin(6);
    std::atomic<int> calls = 0;
    onThreads(6, [&](int thread) {
      EXPECT_TRUE(begin.arriveAndWait());
      if (thread < 2) {
        operation.cancel();
      } else {
        for (int i = 0; i < 5; ++i) operation.addCancellationObserver([&] { ++calls; });
      }
    });
    ASSERT_EQ(calls, 20);
  }
}

TEST(OperationQueueConcurrentTest, OperationsMayAddOperations) {
  OperationQueue queue(8, 1);
  std::atomic<int> runs = 0;
  std::function<void(int)> spread = [&](int depth) {
    ++runs;
    if (depth == 0) return;
    for (int i = 0; i < 2; ++i) queue.addOperation(operationOf([&spread, depth] { spread(depth - 1); }));
  };
  queue.addOperation(operationOf([&] { spread(9); }));
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(runs, 1023);
}

TEST(OperationQueueConcurrentTest, AdditionsRaceWithThreadsThatEnd) {
  OperationQueue queue(4, 1);
  std::atomic<int> runs = 0;
  for (int i = 0; i < 300; ++i) {
    queue.addOperation(operationOf([&] { ++runs; }));
    std::this_thread::sleep_for(std::chrono::microseconds(900 + (i % 5) * 50));
  }
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(runs, 300);
}

TEST(OperationQueueConcurrentTest, SeveralThreadsMayWait) {
  OperationQueue queue(2);
  std::atomic<int> runs = 0;
  for (int i = 0; i < 20; ++i) {
    queue.addOperation(operationOf([&] {
      std::this_thread::sleep_for(1ms);
      ++runs;
    }));
  }
  onThreads(4, [&](int) {
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(runs, 20);
  });
}

TEST(OperationQueueConcurrentTest, QueuesComeAndGo) {
  std::atomic<int> runs = 0;
  onThreads(4, [&](int) {
    for (int i = 0; i < 100; ++i) {
      OperationQueue queue(3, static_cast<unsigned>(i % 2));
      for (int j = 0; j < 5; ++j) queue.addOperation(operationOf([&] { ++runs; }));
    }
  });
  EXPECT_EQ(runs, 4 * 100 * 5);
}

}  // namespace
}  // namespace vantrell
