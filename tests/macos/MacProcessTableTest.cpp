// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <mach-o/dyld.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/macos/MacProcessTable.h"
#include "host/posix/PosixChildProcesses.h"
#include "tests/host/IdleProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {
namespace {

std::string ownExecutable() {
  std::vector<char> path(4096);
  auto size = static_cast<std::uint32_t>(path.size());
  return _NSGetExecutablePath(path.data(), &size) == 0 ? path.data() : "";
}

/// The table's name for a process whose executable bears `name`: this program, started once more under it. It has ended
/// by then, and nobody has waited for it yet.
std::string nameInTableOf(const std::string& name) {
  const TemporaryFolder folder;
  std::filesystem::copy_file(ownExecutable(), folder.path(name));
  host::PosixChildProcesses children;
  const auto child = children.launch(folder.path(name), {"--help"}, children.makePipes().value()).value();
  siginfo_t information;
  waitid(P_PID, static_cast<id_t>(child->identifier()), &information, WEXITED | WNOWAIT);
  host::MacProcessTable table;
  const auto alone = table.processWithIdentifier(child->identifier()).value();
  const auto amongAll = entryIn(table, child->identifier());
  if (!alone || !amongAll) return "none";
  EXPECT_EQ(alone->name, amongAll->name);
  EXPECT_EQ(alone->effectiveUserID, geteuid());
  return alone->name;
}

TEST(MacProcessTable, AProcessHasItsExecutablesName) {
  for (const std::string name : {"short", "a b) (c", "fifteen-bytes--", "sixteen-bytes---"})
    EXPECT_EQ(nameInTableOf(name), name);
}

TEST(MacProcessTable, NamesAreCutAsTheKernelCutsThem) {
  EXPECT_EQ(host::MacProcessTable().nameLength(), 16u);
  EXPECT_EQ(nameInTableOf("sixteen-bytes-16-and-more"), "sixteen-bytes-16");
}

TEST(MacProcessTable, TheKernelsOwnTaskIsNotInIt) {
  host::MacProcessTable table;
  EXPECT_FALSE(entryIn(table, 0));
}

}  // namespace
}  // namespace vantrell::tests
