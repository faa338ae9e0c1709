// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>

#include <gtest/gtest.h>
#include <unistd.h>

#include "host/InterruptWatcher.h"
#include "host/Terminal.h"

namespace vantrell::host {
namespace {

using namespace std::chrono_literals;

class InterruptWatcherTest : public testing::Test {
 protected:
  std::unique_ptr<InterruptWatcher> watch() {
    return makeInterruptWatcher([this] {
      const std::lock_guard guard(lock_);
      ++count_;
      changed_.notify_all();
    });
  }
  bool waitFor(int count, std::chrono::milliseconds limit = 10s) {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, limit, [&] { return count_ >= count; });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  int count_ = 0;
};

class IgnoredSignal {
 public:
  explicit IgnoredSignal(int signal) : signal_(signal) {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(signal_, &ignore, &previous_);
  }
  ~IgnoredSignal() { sigaction(signal_, &previous_, nullptr); }

 private:
  int signal_;
  struct sigaction previous_ {};
};

TEST_F(InterruptWatcherTest, HandsOverEachRequestToEnd) {
  const auto watcher = watch();
  ASSERT_TRUE(watcher);
  int count = 0;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGINT}) {
    kill(getpid(), signal);
    EXPECT_TRUE(waitFor(++count)) << signal;
  }
}

TEST_F(InterruptWatcherTest, LeavesAloneWhatWasIgnored) {
  const IgnoredSignal hangUp(SIGHUP);
  const auto watcher = watch();
  kill(getpid(), SIGHUP);
  EXPECT_FALSE(waitFor(1, 200ms));
  kill(getpid(), SIGTERM);
  EXPECT_TRUE(waitFor(1));
}

TEST_F(InterruptWatcherTest, HandsOverARequestToTerminateThatWasIgnored) {
  const IgnoredSignal termination(SIGTERM);
  auto watcher = watch();
  kill(getpid(), SIGTERM);
  EXPECT_TRUE(waitFor(1));
  watcher.reset();
  struct sigaction action {};
  sigaction(SIGTERM, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_IGN);
}

TEST_F(InterruptWatcherTest, AWriteToAClosedPipeIsAnError) {
  const auto watcher = watch();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_EQ(write(ends[1], "x", 1), -1);
  EXPECT_EQ(errno, EPIPE);
  close(ends[1]);
}

TEST_F(InterruptWatcherTest, ComesAndGoesWithoutARequest) {
  for (int i = 0; i < 200; ++i) ASSERT_TRUE(watch());
  EXPECT_FALSE(waitFor(1, 0ms));
}

TEST_F(InterruptWatcherTest, PutsEverythingBackWhenItGoes) {
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_BLOCK, nullptr, &before);
  watch().reset();
  pthread_sigmask(SIG_BLOCK, nullptr, &after);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal));
  struct sigaction pipeAction {};
  sigaction(SIGPIPE, nullptr, &pipeAction);
  EXPECT_EQ(pipeAction.sa_handler, SIG_DFL);
  EXPECT_TRUE(watch()) << "another one can follow";
}

TEST(Terminal, APipeIsNone) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const int standardOutput = dup(STDOUT_FILENO);
  dup2(ends[1], STDOUT_FILENO);
  const auto terminal = makeTerminal();
  EXPECT_FALSE(terminal->isTerminal(StandardStream::Output));
  EXPECT_EQ(terminal->columns(StandardStream::Output), std::nullopt);
  dup2(standardOutput, STDOUT_FILENO);
  for (const int descriptor : {ends[0], ends[1], standardOutput}) close(descriptor);
}

}  // namespace
}  // namespace vantrell::host
