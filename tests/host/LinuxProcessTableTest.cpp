// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/linux/LinuxProcessTable.h"
#include "tests/host/IdleProcess.h"

namespace vantrell {
namespace {

using tests::entryIn;

/// Has a process take that name.
std::function<void()> bearing(const std::string& name) {
  return [name] { prctl(PR_SET_NAME, name.c_str()); };
}

TEST(LinuxProcessTable, TellsTheNameThatTheProcessKnowsItselfBy) {
  host::LinuxProcessTable table;
  char name[16] = {};
  prctl(PR_GET_NAME, name);
  EXPECT_EQ(table.processWithIdentifier(getpid()).value()->name, name);
}

TEST(LinuxProcessTable, NamesMayHoldAnyBytes) {
  host::LinuxProcessTable table;
  for (const std::string name :
       {"a b) S 1 (c", "x\nUid:\t7\t7", "back\\slash\\n\t", "\xFF\xFE\x80", ")))(((", "\\", "\n", " "}) {
    const tests::IdleProcess process(bearing(name));
    const auto record = table.processWithIdentifier(process.identifier()).value();
    ASSERT_TRUE(record) << name;
    EXPECT_EQ(record->name, name);
    EXPECT_EQ(record->effectiveUserID, geteuid());
    ASSERT_TRUE(entryIn(table, process.identifier()));
    EXPECT_EQ(entryIn(table, process.identifier())->name, name);
  }
}

TEST(LinuxProcessTable, NamesAreCutAsTheKernelCutsThem) {
  host::LinuxProcessTable table;
  const tests::IdleProcess process(bearing("sixteen-bytes-16-and-more"));
  EXPECT_EQ(table.nameLength(), 15u);
  EXPECT_EQ(table.processWithIdentifier(process.identifier()).value()->name, "sixteen-bytes-1");
}

TEST(LinuxProcessTable, ThreadsAreNoProcesses) {
  host::LinuxProcessTable table;
  std::atomic<pid_t> identifier = 0;
  std::atomic<bool> end = false;
  std::thread thread([&] {
    identifier = static_cast<pid_t>(syscall(SYS_gettid));
    identifier.notify_one();
    end.wait(false);
  });
  identifier.wait(0);
  EXPECT_FALSE(table.processWithIdentifier(identifier).value());
  EXPECT_FALSE(entryIn(table, identifier));
  end = true;
  end.notify_one();
  thread.join();
}

}  // namespace
}  // namespace vantrell
