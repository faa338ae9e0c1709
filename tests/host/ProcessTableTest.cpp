// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/Host.h"
#include "tests/host/IdleProcess.h"

namespace vantrell {
namespace {

using tests::entryIn;
using tests::IdleProcess;

class ProcessTable : public testing::Test {
 protected:
  std::unique_ptr<host::ProcessTable> owner_ = host::makeHost().processTable;
  host::ProcessTable& table_ = *owner_;
};

TEST_F(ProcessTable, HoldsThisProcessWithItsNameAndUser) {
  const auto alone = table_.processWithIdentifier(getpid()).value();
  const auto amongAll = entryIn(table_, getpid());
  for (const auto& record : {alone, amongAll}) {
    ASSERT_TRUE(record);
    EXPECT_EQ(record->identifier, getpid());
    EXPECT_FALSE(record->name.empty());
    EXPECT_LE(record->name.size(), table_.nameLength());
    EXPECT_EQ(record->effectiveUserID, geteuid());
  }
  EXPECT_EQ(alone->name, amongAll->name);
  EXPECT_TRUE(entryIn(table_, 1));
}

TEST_F(ProcessTable, AProcessThatHasEndedIsGoneOnceItWasWaitedFor) {
  IdleProcess process;
  const auto identifier = process.identifier();
  const auto name = table_.processWithIdentifier(identifier).value()->name;
  process.kill();
  siginfo_t information;
  waitid(P_PID, static_cast<id_t>(identifier), &information, WEXITED | WNOWAIT);
  ASSERT_TRUE(table_.processWithIdentifier(identifier).value());
  EXPECT_EQ(table_.processWithIdentifier(identifier).value()->name, name);
  EXPECT_TRUE(entryIn(table_, identifier));
  process.end();
  EXPECT_FALSE(table_.processWithIdentifier(identifier).value());
  EXPECT_FALSE(entryIn(table_, identifier));
}

TEST_F(ProcessTable, NoProcessHasANumberThatIsNotPositive) {
  for (const std::int32_t identifier : {0, -1, INT32_MIN, INT32_MAX})
    EXPECT_FALSE(table_.processWithIdentifier(identifier).value()) << identifier;
  const auto records = table_.processes();
  ASSERT_TRUE(records);
  EXPECT_TRUE(std::ranges::all_of(*records, [](const auto& record) { return record.identifier > 0; }));
}

TEST_F(ProcessTable, PassesOverProcessesThatEndMeanwhile) {
  std::atomic<bool> end = false;
  std::thread starter([&] {
    while (!end) {
      const pid_t child = fork();
      if (child == 0) _exit(0);
      if (child > 0) waitpid(child, nullptr, 0);
    }
  });
  for (int i = 0; i < 100; ++i) {
    const auto records = table_.processes();
    EXPECT_TRUE(records);
    EXPECT_TRUE(records &&
                std::ranges::any_of(*records, [](const auto& record) { return record.identifier == getpid(); }));
  }
  end = true;
  starter.join();
}

using ProcessTableAsRoot = ProcessTable;

TEST_F(ProcessTableAsRoot, TellsTheEffectiveUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may become another user";
  const IdleProcess process([] {
    if (setreuid(1001, 1002) != 0) _exit(1);
  });
  EXPECT_EQ(table_.processWithIdentifier(process.identifier()).value()->effectiveUserID, 1002u);
  EXPECT_EQ(entryIn(table_, process.identifier())->effectiveUserID, 1002u);
}

}  // namespace
}  // namespace vantrell
