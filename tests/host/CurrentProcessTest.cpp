// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/Host.h"

namespace vantrell::host {
namespace {

constexpr uid_t kNobody = 65534;

// What became of a child that ran `body`, as waitpid tells it.
int statusOfChild(const auto& body) {
  const pid_t child = fork();
  if (child == 0) {
    body();
    _exit(99);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return status;
}

/// The real one, made before the fork: what a host consists of may not be made after it.
class CurrentProcessTest : public testing::Test {
 protected:
  Host host_ = makeHost();
  CurrentProcess& process_ = *host_.currentProcess;
};

TEST_F(CurrentProcessTest, KnowsItsIdentifierAndUsers) {
  EXPECT_EQ(process_.identifier(), getpid());
  EXPECT_EQ(process_.realUserID(), getuid());
  EXPECT_EQ(process_.effectiveUserID(), geteuid());
}

TEST_F(CurrentProcessTest, ExitEndsTheProcessWithTheStatus) {
  for (const int expected : {0, 1, 77, 255}) {
    const int status = statusOfChild([&] { process_.exit(expected); });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), expected);
  }
}

TEST_F(CurrentProcessTest, ExitWorksFromAnyThreadAndWaitsForNone) {
  const int status = statusOfChild([&] {
    std::thread([&] { process_.exit(5); }).detach();
    process_.runMainLoop();
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(CurrentProcessTest, ExitRunsNoExitHandlers) {
  const int status = statusOfChild([&] {
    std::atexit([] { _exit(6); });
    process_.exit(5);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST_F(CurrentProcessTest, TheMainLoopOutlastsSignals) {
  const int status = statusOfChild([&] {
    std::signal(SIGUSR1, [](int) {});
    std::thread([this, main = pthread_self()] {
      for (int i = 0; i < 3; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pthread_kill(main, SIGUSR1);
      }
      process_.exit(4);
    }).detach();
    process_.runMainLoop();
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 4);
}

TEST_F(CurrentProcessTest, SleepsAtLeastAsLongAsAsked) {
  const auto begin = std::chrono::steady_clock::now();
  process_.sleepForMilliseconds(20);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
}

using CurrentProcessAsRootTest = CurrentProcessTest;

TEST_F(CurrentProcessAsRootTest, TellsRealFromEffectiveUser) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  const int status = statusOfChild([&] {
    if (setreuid(kNobody, 0) != 0) _exit(98);
    _exit(process_.realUserID() == kNobody && process_.effectiveUserID() == 0 ? 0 : 1);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace vantrell::host
