// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/CurrentProcess.h"
#include "host/linux/LinuxCurrentProcess.h"

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

TEST(CurrentProcessTest, KnowsItsIdentifierAndUsers) {
  const LinuxCurrentProcess process;
  EXPECT_EQ(process.identifier(), getpid());
  EXPECT_EQ(process.realUserID(), getuid());
  EXPECT_EQ(process.effectiveUserID(), geteuid());
}

TEST(CurrentProcessTest, ExitEndsTheProcessWithTheStatus) {
  for (const int expected : {0, 1, 77, 255}) {
    const int status = statusOfChild([expected] { LinuxCurrentProcess().exit(expected); });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), expected);
  }
}

TEST(CurrentProcessTest, ExitWorksFromAnyThreadAndWaitsForNone) {
  const int status = statusOfChild([] {
    std::thread([] { LinuxCurrentProcess().exit(5); }).detach();
    LinuxCurrentProcess().runMainLoop();
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST(CurrentProcessTest, ExitRunsNoExitHandlers) {
  const int status = statusOfChild([] {
    std::atexit([] { _exit(6); });
    LinuxCurrentProcess().exit(5);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST(CurrentProcessTest, TheMainLoopOutlastsSignals) {
  const int status = statusOfChild([] {
    std::signal(SIGUSR1, [](int) {});
    std::thread([main = pthread_self()] {
      for (int i = 0; i < 3; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pthread_kill(main, SIGUSR1);
      }
      LinuxCurrentProcess().exit(4);
    }).detach();
    LinuxCurrentProcess().runMainLoop();
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 4);
}

TEST(CurrentProcessTest, SleepsAtLeastAsLongAsAsked) {
  LinuxCurrentProcess process;
  const auto begin = std::chrono::steady_clock::now();
  process.sleepForMilliseconds(20);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
}

TEST(CurrentProcessAsRootTest, TellsRealFromEffectiveUser) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  const int status = statusOfChild([] {
    if (setresuid(kNobody, 0, 0) != 0) _exit(98);
    const LinuxCurrentProcess process;
    _exit(process.realUserID() == kNobody && process.effectiveUserID() == 0 ? 0 : 1);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace vantrell::host
