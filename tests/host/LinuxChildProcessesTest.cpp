// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "host/posix/FileDescriptor.h"
#include "host/posix/PosixChildProcesses.h"
#include "tests/support/ChildScripts.h"

namespace vantrell::tests {
namespace {

/// What /proc tells of children.
class LinuxChildProcesses : public testing::Test {
 protected:
  std::string outputOf(const std::string& path, const std::vector<std::string>& arguments) {
    auto child = children_.launch(path, arguments, children_.makePipes().value()).value();
    OutputRecord record;
    EXPECT_EQ(child->relayOutputUntilExit([&](host::ChildStream, DataView bytes) { record.add(bytes, false); }), 0);
    return record.text(false);
  }

  host::PosixChildProcesses children_;
};

TEST_F(LinuxChildProcesses, TheFirstWordIsThePath) {
  EXPECT_EQ(outputOf("/bin/cat", {"/proc/self/cmdline"}), std::string("/bin/cat\0/proc/self/cmdline\0", 28));
}

TEST_F(LinuxChildProcesses, TheChildHasNoDescriptorButItsStreams) {
  const host::FileDescriptor leaking(open("/dev/null", O_RDONLY));
  const host::FileDescriptor high(fcntl(leaking.get(), F_DUPFD, 1000));
  EXPECT_EQ(outputOf("/bin/ls", {"/proc/self/fd"}), "0\n1\n2\n3\n");  // the last is the folder being listed
}

TEST_F(LinuxChildProcesses, NoSignalIsBlockedOrIgnored) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  auto* const handler = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(outputOf("/bin/grep", {"-E", "^Sig(Blk|Ign)", "/proc/self/status"}),
            "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
  std::signal(SIGPIPE, handler);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace
}  // namespace vantrell::tests
