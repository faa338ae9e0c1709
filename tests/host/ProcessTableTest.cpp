// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/linux/LinuxProcessTable.h"

namespace vantrell {
namespace {

using host::LinuxProcessTable;

/// A process that does nothing, under a name of the test's, until the end of the scope.
class IdleProcess {
 public:
  explicit IdleProcess(
      const std::string& name, const std::function<void()>& prepare = [] {}) {
    int ready[2];
    if (pipe(ready) != 0) std::abort();
    identifier_ = fork();
    if (identifier_ == 0) {
      prepare();
      prctl(PR_SET_NAME, name.c_str());
      close(ready[1]);
      for (;;) pause();
    }
    close(ready[1]);
    char nothing = 0;
    while (read(ready[0], &nothing, 1) > 0) continue;
    close(ready[0]);
  }
  ~IdleProcess() { end(); }

  void kill() const { ::kill(identifier_, SIGKILL); }
  void end() {
    if (identifier_ <= 0) return;
    kill();
    waitpid(identifier_, nullptr, 0);
    identifier_ = -1;
  }
  pid_t identifier() const { return identifier_; }

 private:
  pid_t identifier_;
};

std::optional<host::ProcessRecord> entryOf(pid_t identifier) {
  LinuxProcessTable table;
  auto records = table.processes();
  if (!records) return std::nullopt;
  const auto found = std::ranges::find(*records, identifier, &host::ProcessRecord::identifier);
  return found == records->end() ? std::nullopt : std::optional(*found);
}

TEST(ProcessTable, HoldsThisProcessWithItsNameAndUser) {
  LinuxProcessTable table;
  char name[16] = {};
  prctl(PR_GET_NAME, name);
  for (const auto& record : {table.processWithIdentifier(getpid()).value(), entryOf(getpid())}) {
    ASSERT_TRUE(record);
    EXPECT_EQ(record->identifier, getpid());
    EXPECT_EQ(record->name, name);
    EXPECT_EQ(record->effectiveUserID, geteuid());
  }
  EXPECT_TRUE(entryOf(1));
}

TEST(ProcessTable, NamesMayHoldAnyBytes) {
  LinuxProcessTable table;
  for (const std::string name :
       {"a b) S 1 (c", "x\nUid:\t7\t7", "back\\slash\\n\t", "\xFF\xFE\x80", ")))(((", "\\", "\n", " "}) {
    const IdleProcess process(name);
    const auto record = table.processWithIdentifier(process.identifier()).value();
    ASSERT_TRUE(record) << name;
    EXPECT_EQ(record->name, name);
    EXPECT_EQ(record->effectiveUserID, geteuid());
    ASSERT_TRUE(entryOf(process.identifier()));
    EXPECT_EQ(entryOf(process.identifier())->name, name);
  }
}

TEST(ProcessTable, NamesAreCutAsTheKernelCutsThem) {
  LinuxProcessTable table;
  const IdleProcess process("sixteen-bytes-16-and-more");
  EXPECT_EQ(table.nameLength(), 15u);
  EXPECT_EQ(table.processWithIdentifier(process.identifier()).value()->name, "sixteen-bytes-1");
}

TEST(ProcessTable, AProcessThatHasEndedIsGoneOnceItWasWaitedFor) {
  LinuxProcessTable table;
  IdleProcess process("ending");
  const auto identifier = process.identifier();
  process.kill();
  siginfo_t information;
  waitid(P_PID, static_cast<id_t>(identifier), &information, WEXITED | WNOWAIT);
  EXPECT_EQ(table.processWithIdentifier(identifier).value()->name, "ending");
  process.end();
  EXPECT_FALSE(table.processWithIdentifier(identifier).value());
  EXPECT_FALSE(entryOf(identifier));
}

TEST(ProcessTable, ThreadsAreNoProcesses) {
  LinuxProcessTable table;
  std::atomic<pid_t> identifier = 0;
  std::atomic<bool> end = false;
  std::thread thread([&] {
    identifier = static_cast<pid_t>(syscall(SYS_gettid));
    identifier.notify_one();
    end.wait(false);
  });
  identifier.wait(0);
  EXPECT_FALSE(table.processWithIdentifier(identifier).value());
  EXPECT_FALSE(entryOf(identifier));
  end = true;
  end.notify_one();
  thread.join();
}

TEST(ProcessTable, NoProcessHasANumberThatIsNotPositive) {
  LinuxProcessTable table;
  for (const std::int32_t identifier : {0, -1, INT32_MIN, INT32_MAX})
    EXPECT_FALSE(table.processWithIdentifier(identifier).value()) << identifier;
}

TEST(ProcessTable, PassesOverProcessesThatEndMeanwhile) {
  LinuxProcessTable table;
  std::atomic<bool> end = false;
  std::thread starter([&] {
    while (!end) {
      const pid_t child = vfork();
      if (child == 0) _exit(0);
      if (child > 0) waitpid(child, nullptr, 0);
    }
  });
  for (int i = 0; i < 100; ++i) {
    const auto records = table.processes();
    ASSERT_TRUE(records);
    EXPECT_TRUE(std::ranges::any_of(*records, [](const auto& record) { return record.identifier == getpid(); }));
  }
  end = true;
  starter.join();
}

TEST(ProcessTableAsRoot, TellsTheEffectiveUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may become another user";
  LinuxProcessTable table;
  const IdleProcess process("other user", [] {
    if (setresuid(1001, 1002, 1003) != 0) _exit(1);
  });
  EXPECT_EQ(table.processWithIdentifier(process.identifier()).value()->effectiveUserID, 1002u);
  EXPECT_EQ(entryOf(process.identifier())->effectiveUserID, 1002u);
}

}  // namespace
}  // namespace vantrell
