// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <memory>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/OperationQueue.h"
#include "tests/foundation/Gate.h"

namespace vantrell {
namespace {

constexpr uid_t kNobody = 65534;

// From here on this process gets no new thread. The limit does not bind root.
bool refuseNewThreads() {
  if (geteuid() == 0 && setresuid(kNobody, kNobody, kNobody) != 0) return false;
  const rlimit none = {0, 0};
  return setrlimit(RLIMIT_NPROC, &none) == 0;
}

// The scenario in a process of its own; its return value is what it found.
bool holdsInAChild(bool (*scenario)()) {
  const pid_t child = fork();
  if (child == 0) _exit(scenario() ? 0 : 1);
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool threadsAreRefused() {
  if (!refuseNewThreads()) return false;
  try {
    std::thread([] {}).join();
  } catch (const std::system_error&) {
    return true;
  }
  return false;
}

class OperationQueueThreadLimitTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!holdsInAChild(threadsAreRefused)) GTEST_SKIP() << "this system does not refuse threads at RLIMIT_NPROC";
  }
};

bool runsOnTheCallersThread() {
  if (!refuseNewThreads()) return false;
  OperationQueue queue;
  std::thread::id body;
  std::thread::id completion;
  auto operation = std::make_shared<BlockOperation>([&] { body = std::this_thread::get_id(); });
  operation->setCompletionBlock([&] { completion = std::this_thread::get_id(); });
  queue.addOperation(operation);
  queue.waitUntilAllOperationsAreFinished();
  return body == std::this_thread::get_id() && completion == body && queue.threadCount() == 0;
}

TEST_F(OperationQueueThreadLimitTest, WithoutAnyThreadTheOperationRunsOnTheCallersThread) {
  EXPECT_TRUE(holdsInAChild(runsOnTheCallersThread));
}

bool waitsForTheExistingThread() {
  OperationQueue queue;
  Gate begun;
  Gate release;
  std::thread::id first;
  std::thread::id second;
  queue.addOperation(std::make_shared<BlockOperation>([&] {
    first = std::this_thread::get_id();
    begun.open();
    if (!release.wait()) _exit(2);
  }));
  if (!begun.wait() || !refuseNewThreads()) return false;
  std::atomic<bool> ran = false;
  queue.addOperation(std::make_shared<BlockOperation>([&] {
    second = std::this_thread::get_id();
    ran = true;
  }));
  if (ran) return false;
  release.open();
  queue.waitUntilAllOperationsAreFinished();
  return ran && first == second && queue.threadCount() == 1;
}

TEST_F(OperationQueueThreadLimitTest, WithOneThreadTheOperationWaitsForIt) {
  EXPECT_TRUE(holdsInAChild(waitsForTheExistingThread));
}

bool queueMayGoWhileTheCallerRuns() {
  if (!refuseNewThreads()) return false;
  auto queue = std::make_shared<OperationQueue>();
  OperationQueue* const borrowed = queue.get();
  bool ran = false;
  borrowed->addOperation(std::make_shared<BlockOperation>([&ran, owner = std::move(queue)] { ran = true; }));
  return ran;
}

TEST_F(OperationQueueThreadLimitTest, AnOperationOnTheCallersThreadMayDestroyTheQueue) {
  EXPECT_TRUE(holdsInAChild(queueMayGoWhileTheCallerRuns));
}

}  // namespace
}  // namespace vantrell
