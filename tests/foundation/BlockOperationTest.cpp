// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/BlockOperation.h"

namespace vantrell {
namespace {

TEST(BlockOperationTest, RunsTheBodyThenTheCompletion) {
  std::string order;
  BlockOperation operation([&] { order += 'b'; });
  operation.setCompletionBlock([&] { order += 'c'; });
  operation.run();
  EXPECT_EQ(order, "bc");
}

TEST(BlockOperationTest, RunsWithoutACompletion) {
  int runs = 0;
  BlockOperation operation([&] { ++runs; });
  operation.run();
  EXPECT_EQ(runs, 1);
}

TEST(BlockOperationTest, CancelledBeforeItBeginsSkipsTheBodyAndCompletes) {
  std::string order;
  BlockOperation operation([&] { order += 'b'; });
  operation.setCompletionBlock([&] { order += operation.isCancelled() ? 'C' : 'c'; });
  operation.cancel();
  operation.run();
  EXPECT_EQ(order, "C");
}

TEST(BlockOperationTest, CancelledWhileRunningFinishesTheBody) {
  std::string order;
  BlockOperation* self = nullptr;
  BlockOperation operation([&] {
    self->cancel();
    if (self->isCancelled()) order += 'b';
  });
  self = &operation;
  operation.setCompletionBlock([&] { order += 'c'; });
  operation.run();
  EXPECT_EQ(order, "bc");
}

TEST(BlockOperationTest, LetsGoOfWhatItsBlocksOwnOnceTheyHaveRun) {
  auto owned = std::make_shared<int>(0);
  auto operation = std::make_shared<BlockOperation>([owned] { ++*owned; });
  operation->setCompletionBlock([owned, operation] { *owned += 10; });  // a cycle
  const std::weak_ptr<BlockOperation> watcher = operation;
  operation->run();
  EXPECT_EQ(*owned, 11);
  EXPECT_EQ(owned.use_count(), 1);
  operation.reset();
  EXPECT_TRUE(watcher.expired());
}

TEST(BlockOperationTest, ReleasesTheBodyOfACancelledOperation) {
  auto owned = std::make_shared<int>(0);
  BlockOperation operation([owned] {});
  operation.cancel();
  operation.run();
  EXPECT_EQ(owned.use_count(), 1);
}

TEST(BlockOperationTest, ReleasesTheBodyBeforeTheCompletionRuns) {
  auto owned = std::make_shared<int>(0);
  long users = 0;
  BlockOperation operation([owned] {});
  operation.setCompletionBlock([&] { users = owned.use_count(); });
  operation.run();
  EXPECT_EQ(users, 1);
}

TEST(BlockOperationTest, CallsObserversOnceInTheOrderAddedOnTheCancellingThread) {
  std::string order;
  std::vector<std::thread::id> threads;
  BlockOperation operation([] {});
  operation.addCancellationObserver([&] {
    order += '1';
    threads.push_back(std::this_thread::get_id());
  });
  operation.addCancellationObserver([&] {
    order += '2';
    threads.push_back(std::this_thread::get_id());
  });
  std::thread canceller([&] { operation.cancel(); });
  const auto cancellingThread = canceller.get_id();
  canceller.join();
  operation.cancel();
  EXPECT_EQ(order, "12");
  EXPECT_EQ(threads, (std::vector{cancellingThread, cancellingThread}));
}

TEST(BlockOperationTest, CallsAnObserverAtOnceWhenAlreadyCancelled) {
  BlockOperation operation([] {});
  operation.cancel();
  std::thread::id thread;
  operation.addCancellationObserver([&] { thread = std::this_thread::get_id(); });
  EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(BlockOperationTest, AnObserverMayCancelAgain) {
  int calls = 0;
  BlockOperation operation([] {});
  operation.addCancellationObserver([&] {
    ++calls;
    operation.cancel();
    EXPECT_TRUE(operation.isCancelled());
  });
  operation.cancel();
  EXPECT_EQ(calls, 1);
}

TEST(BlockOperationTest, DoesNotCallARemovedObserver) {
  std::string order;
  BlockOperation operation([] {});
  operation.addCancellationObserver([&] { order += '1'; });
  const auto second = operation.addCancellationObserver([&] { order += '2'; });
  operation.addCancellationObserver([&] { order += '3'; });
  operation.removeCancellationObserver(second);
  operation.removeCancellationObserver(second);
  operation.cancel();
  EXPECT_EQ(order, "13");
}

TEST(BlockOperationTest, RemovingAfterTheCallOrAnUnknownTokenDoesNothing) {
  int calls = 0;
  BlockOperation operation([] {});
  const auto before = operation.addCancellationObserver([&] { ++calls; });
  operation.cancel();
  const auto after = operation.addCancellationObserver([&] { ++calls; });
  EXPECT_NE(before, after);
  operation.removeCancellationObserver(before);
  operation.removeCancellationObserver(after);
  operation.removeCancellationObserver(12345);
  EXPECT_EQ(calls, 2);
}

TEST(BlockOperationTest, ObserversThatWereCalledAreReleasedWithoutTheLock) {
  struct RemovesOnDestruction {
    BlockOperation& operation;
    ~RemovesOnDestruction() { operation.removeCancellationObserver(1); }
  };
  BlockOperation operation([] {});
  auto owned = std::make_shared<RemovesOnDestruction>(operation);
  const std::weak_ptr<RemovesOnDestruction> watcher = owned;
  operation.addCancellationObserver([owned = std::move(owned)] {});
  operation.cancel();
  EXPECT_TRUE(watcher.expired());
}

TEST(BlockOperationTest, AnExceptionOfTheBodyEndsTheProcess) {
  BlockOperation operation([] { throw std::runtime_error("escaped"); });
  EXPECT_DEATH(operation.run(), "");
}

}  // namespace
}  // namespace vantrell
