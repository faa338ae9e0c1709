// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <set>
#include <string>
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

bool eventually(const auto& condition) {
  const auto limit = std::chrono::steady_clock::now() + 30s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

TEST(OperationQueueTest, RunsBodyAndCompletionOnOneWorkerThread) {
  OperationQueue queue;
  std::vector<std::thread::id> threads;
  auto operation = operationOf([&] { threads.push_back(std::this_thread::get_id()); });
  operation->setCompletionBlock([&] { threads.push_back(std::this_thread::get_id()); });
  queue.addOperation(operation);
  queue.waitUntilAllOperationsAreFinished();
  ASSERT_EQ(threads.size(), 2U);
  EXPECT_EQ(threads[0], threads[1]);
  EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST(OperationQueueTest, HasNoThreadBeforeTheFirstOperation) {
  const OperationQueue queue;
  EXPECT_EQ(queue.threadCount(), 0U);
}

TEST(OperationQueueTest, WaitingOnAnEmptyQueueReturnsAtOnce) {
  OperationQueue queue;
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(queue.threadCount(), 0U);
}

TEST(OperationQueueTest, BeginsOperationsInTheOrderAdded) {
  OperationQueue queue(1);
  Gate gate;
  queue.addOperation(operationOf([&] { EXPECT_TRUE(gate.wait()); }));
  std::vector<int> order;
  for (int i = 0; i < 500; ++i) queue.addOperation(operationOf([&order, i] { order.push_back(i); }));
  gate.open();
  queue.waitUntilAllOperationsAreFinished();
  ASSERT_EQ(order.size(), 500U);
  EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(OperationQueueTest, RunsAsManyAtOnceAsWereAdded) {
  constexpr int kOperations = 50;
  OperationQueue queue;
  Gate together(kOperations);
  std::atomic<int> met = 0;
  for (int i = 0; i < kOperations; ++i) {
    queue.addOperation(operationOf([&] { met += together.arriveAndWait() ? 1 : 0; }));
  }
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(met, kOperations);
  EXPECT_EQ(queue.threadCount(), static_cast<std::size_t>(kOperations));
}

TEST(OperationQueueTest, NeverHasMoreThreadsThanItsWidth) {
  OperationQueue queue(2);
  Gate twoRunning(2);
  Gate release;
  std::atomic<int> begun = 0;
  for (int i = 0; i < 3; ++i) {
    queue.addOperation(operationOf([&] {
      ++begun;
      twoRunning.arrive();
      EXPECT_TRUE(release.wait());
    }));
  }
  ASSERT_TRUE(twoRunning.wait());
  std::this_thread::sleep_for(30ms);
  EXPECT_EQ(begun, 2);
  EXPECT_EQ(queue.threadCount(), 2U);
  release.open();
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(begun, 3);
  EXPECT_EQ(queue.threadCount(), 2U);
}

TEST(OperationQueueTest, AWidthOfZeroIsTakenAsOne) {
  OperationQueue queue(0);
  std::atomic<int> runs = 0;
  queue.addOperation(operationOf([&] { ++runs; }));
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(runs, 1);
}

TEST(OperationQueueTest, ReusesItsIdleThread) {
  OperationQueue queue;
  std::set<std::thread::id> threads;
  for (int i = 0; i < 100; ++i) {
    queue.addOperation(operationOf([&] { threads.insert(std::this_thread::get_id()); }));
    queue.waitUntilAllOperationsAreFinished();
  }
  // A wait may end a moment before the worker is idle again; a second thread can come of that, a third can't.
  EXPECT_LE(threads.size(), 2U);
  EXPECT_LE(queue.threadCount(), 2U);
}

// Three threads become idle one after the other; the last of them gets the next operation.
bool lastIdleThreadIsTakenFirst() {
  OperationQueue queue;
  Gate allRunning(3);
  Gate release[3];
  std::thread::id ids[3];
  for (int i = 0; i < 3; ++i) {
    queue.addOperation(operationOf([&, i] {
      ids[i] = std::this_thread::get_id();
      allRunning.arrive();
      EXPECT_TRUE(release[i].wait());
    }));
  }
  EXPECT_TRUE(allRunning.wait());
  for (Gate& gate : release) {
    gate.open();
    std::this_thread::sleep_for(20ms);
  }
  std::thread::id next;
  queue.addOperation(operationOf([&] { next = std::this_thread::get_id(); }));
  queue.waitUntilAllOperationsAreFinished();
  return next == ids[2];
}

TEST(OperationQueueTest, WakesTheThreadThatWorkedLast) {
  bool taken = false;
  // On a busy machine a thread may need longer than the pause to become idle, hence the attempts.
  for (int attempt = 0; attempt < 5 && !taken; ++attempt) taken = lastIdleThreadIsTakenFirst();
  EXPECT_TRUE(taken);
}

TEST(OperationQueueTest, IdleThreadsEndAfterTheirLifetime) {
  OperationQueue queue(8, 20);
  Gate together(4);
  for (int i = 0; i < 4; ++i) queue.addOperation(operationOf([&] { EXPECT_TRUE(together.arriveAndWait()); }));
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(eventually([&] { return queue.threadCount() == 0; }));
  bool ran = false;
  queue.addOperation(operationOf([&] { ran = true; }));
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(ran);
}

TEST(OperationQueueTest, IdleThreadsStayForTheirLifetime) {
  OperationQueue queue(8, 60'000);
  queue.addOperation(operationOf([] {}));
  queue.waitUntilAllOperationsAreFinished();
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(queue.threadCount(), 1U);
}

TEST(OperationQueueTest, ACancelledQueuedOperationOnlyCompletesOnAWorkerInItsTurn) {
  OperationQueue queue(1);
  Gate release;
  std::string order;
  std::thread::id completedOn;
  queue.addOperation(operationOf([&] {
    EXPECT_TRUE(release.wait());
    order += 'a';
  }));
  auto cancelled = operationOf([&] { order += 'x'; });
  cancelled->setCompletionBlock([&] {
    order += 'b';
    completedOn = std::this_thread::get_id();
  });
  queue.addOperation(cancelled);
  queue.addOperation(operationOf([&] { order += 'c'; }));
  cancelled->cancel();
  release.open();
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_EQ(order, "abc");
  EXPECT_NE(completedOn, std::this_thread::get_id());
}

TEST(OperationQueueTest, AnOperationCancelledBeforeItIsAddedCompletes) {
  OperationQueue queue;
  bool body = false;
  bool completed = false;
  auto operation = operationOf([&] { body = true; });
  operation->setCompletionBlock([&] { completed = true; });
  operation->cancel();
  queue.addOperation(operation);
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_FALSE(body);
  EXPECT_TRUE(completed);
}

TEST(OperationQueueTest, ARunningBodySeesItsCancellation) {
  OperationQueue queue;
  Gate begun;
  bool seen = false;
  std::shared_ptr<BlockOperation> operation;
  operation = operationOf([&] {
    begun.open();
    seen = eventually([&] { return operation->isCancelled(); });
  });
  queue.addOperation(operation);
  ASSERT_TRUE(begun.wait());
  operation->cancel();
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(seen);
}

TEST(OperationQueueTest, AnObserverEndsTheWaitOfARunningBody) {
  OperationQueue queue;
  Gate begun;
  Gate cancelled;
  bool ended = false;
  std::shared_ptr<BlockOperation> operation;
  operation = operationOf([&] {
    const auto token = operation->addCancellationObserver([&] { cancelled.open(); });
    begun.open();
    ended = cancelled.wait();
    operation->removeCancellationObserver(token);
  });
  queue.addOperation(operation);
  ASSERT_TRUE(begun.wait());
  operation->cancel();
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(ended);
}

TEST(OperationQueueTest, WaitingIncludesCompletions) {
  OperationQueue queue;
  std::atomic<bool> completed = false;
  auto operation = operationOf([] {});
  operation->setCompletionBlock([&] {
    std::this_thread::sleep_for(20ms);
    completed = true;
  });
  queue.addOperation(operation);
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(completed);
}

TEST(OperationQueueTest, LetsGoOfAFinishedOperation) {
  OperationQueue queue;
  auto operation = operationOf([] {});
  const std::weak_ptr<BlockOperation> watcher = operation;
  queue.addOperation(std::move(operation));
  queue.waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(watcher.expired());
}

TEST(OperationQueueTest, DestructionWaitsForEverythingThatWasAdded) {
  std::atomic<int> bodies = 0;
  std::atomic<int> completions = 0;
  {
    OperationQueue queue(2);
    for (int i = 0; i < 10; ++i) {
      auto operation = operationOf([&] {
        std::this_thread::sleep_for(2ms);
        ++bodies;
      });
      operation->setCompletionBlock([&] { ++completions; });
      queue.addOperation(std::move(operation));
    }
  }
  EXPECT_EQ(bodies, 10);
  EXPECT_EQ(completions, 10);
}

TEST(OperationQueueTest, DestructionWaitsForOperationsAddedByOperations) {
  std::atomic<int> runs = 0;
  {
    OperationQueue queue;
    queue.addOperation(operationOf([&] {
      std::this_thread::sleep_for(10ms);
      queue.addOperation(operationOf([&] { ++runs; }));
    }));
  }
  EXPECT_EQ(runs, 1);
}

TEST(OperationQueueTest, DestructionDoesNotWaitForTheIdleLifetime) {
  const auto begin = std::chrono::steady_clock::now();
  {
    OperationQueue queue(4, 60'000);
    queue.addOperation(operationOf([] {}));
    queue.waitUntilAllOperationsAreFinished();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST(OperationQueueTest, MayBeDestroyedByItsOwnOperation) {
  Gate release;
  Gate last;
  auto queue = std::make_shared<OperationQueue>(1);
  const std::weak_ptr<OperationQueue> watcher = queue;
  queue->addOperation(operationOf([&release, owner = queue] { EXPECT_TRUE(release.wait()); }));
  queue->addOperation(operationOf([&last] { last.open(); }));
  queue.reset();
  EXPECT_FALSE(watcher.expired());
  release.open();
  EXPECT_TRUE(last.wait());
  EXPECT_TRUE(watcher.expired());
}

}  // namespace
}  // namespace vantrell
