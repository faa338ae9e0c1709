// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxProcessTable.h"
#include "platform/NSProcessInfoQELAdditions.h"

namespace vantrell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A table of the test's own, with names as long as macOS keeps them.
class WrittenTable final : public host::ProcessTable {
 public:
  std::size_t nameLength() const noexcept override { return 16; }
  Result<std::vector<host::ProcessRecord>> processes() override {
    if (fails) return posixFailure(posix::kNoMemory);
    return records;
  }
  Result<std::optional<host::ProcessRecord>> processWithIdentifier(std::int32_t identifier) override {
    if (fails) return posixFailure(posix::kNoMemory);
    for (const auto& record : records)
      if (record.identifier == identifier) return record;
    return std::nullopt;
  }
  std::vector<host::ProcessRecord> records;
  bool fails = false;
};

class RunningProcesses : public testing::Test {
 protected:
  host::LinuxFileSystem fileSystem_;
  WrittenTable table_;
  NSProcessInfoQELAdditions info_{fileSystem_, table_};
};

TEST_F(RunningProcesses, AreFoundByName) {
  table_.records = {{0, "idle", 0}, {1, "launchd", 0}, {7, "idle", 0}, {9, "idle", 501}, {10, "idler", 0}};
  EXPECT_THAT(info_.identifiersForRunningProcessesNamed("idle").value(), ElementsAre(7, 9));
  EXPECT_THAT(info_.identifiersForRunningProcessesNamed("Idle").value(), IsEmpty());
  EXPECT_TRUE(info_.isProcessRunningWithName("launchd"));
  EXPECT_FALSE(info_.isProcessRunningWithName("launch"));
}

TEST_F(RunningProcesses, LongNamesAreMatchedOnTheirBeginning) {
  table_.records = {{5, "sixteen bytes 16", 0}, {6, "fifteen bytes15", 0}};
  EXPECT_THAT(info_.identifiersForRunningProcessesNamed("sixteen bytes 16").value(), ElementsAre(5));
  EXPECT_THAT(info_.identifiersForRunningProcessesNamed("sixteen bytes 16 and more").value(), ElementsAre(5));
  EXPECT_THAT(info_.identifiersForRunningProcessesNamed("fifteen bytes15 and more").value(), IsEmpty());
}

TEST_F(RunningProcesses, AnEmptyNameIsNoQuestion) {
  table_.records = {{5, "", 0}};
  EXPECT_FALSE(info_.identifiersForRunningProcessesNamed(""));
  EXPECT_FALSE(info_.isProcessRunningWithName(""));
}

TEST_F(RunningProcesses, AreUnknownWhenTheTableCannotBeRead) {
  table_.records = {{5, "name", 0}};
  table_.fails = true;
  EXPECT_FALSE(info_.identifiersForRunningProcessesNamed("name"));
  EXPECT_FALSE(info_.isProcessRunningWithName("name"));
  EXPECT_FALSE(info_.processNameForProcessID(5));
}

TEST_F(RunningProcesses, AreNamedWithTheirUser) {
  table_.records = {{5, "name", 501}, {6, "half \xC3", 0}};
  EXPECT_EQ(info_.processNameForProcessID(5)->name, "name");
  EXPECT_EQ(info_.processNameForProcessID(5)->effectiveUserID, 501u);
  EXPECT_EQ(info_.processNameForProcessID(6)->name, "half \xEF\xBF\xBD");
  EXPECT_FALSE(info_.processNameForProcessID(7));
}

TEST_F(RunningProcesses, OfThisSystemComeAndGo) {
  host::LinuxProcessTable table;
  NSProcessInfoQELAdditions info(fileSystem_, table);
  const std::string name = "vantrell " + std::to_string(getpid()) + " test child";
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_NAME, name.c_str());
    close(ready[1]);
    for (;;) pause();
  }
  close(ready[1]);
  char nothing = 0;
  EXPECT_EQ(read(ready[0], &nothing, 1), 0);
  close(ready[0]);
  EXPECT_THAT(info.identifiersForRunningProcessesNamed(name).value(), ElementsAre(child));
  EXPECT_THAT(info.identifiersForRunningProcessesNamed(name.substr(0, 15)).value(), ElementsAre(child));
  EXPECT_TRUE(info.isProcessRunningWithName(name));
  EXPECT_EQ(info.processNameForProcessID(child)->name, name.substr(0, 15));
  EXPECT_EQ(info.processNameForProcessID(child)->effectiveUserID, geteuid());
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_FALSE(info.processNameForProcessID(child));
  EXPECT_FALSE(info.isProcessRunningWithName(name));
}

}  // namespace
}  // namespace vantrell
