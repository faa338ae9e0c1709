// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/UnixAddress.h"
#include "tests/host/LinuxTransportFixture.h"

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;

/// Helpers are shell scripts; the one that serves becomes this test program, which keeps the process identifier.
class SpawnedService : public testing::Test {
 protected:
  std::string script(const std::string& body) {
    const std::string path = folder_.makeFile("helper", "#!/bin/sh\n" + body + "\n");
    chmod(path.c_str(), 0755);
    return path;
  }
  std::string servingHelper() {
    return script("exec '" + std::filesystem::read_symlink("/proc/self/exe").string() +
                  "' --gtest_also_run_disabled_tests --gtest_filter=SpawnedServiceHelper.DISABLED_Serves >/dev/null");
  }
  std::string contents(const std::string& name) {
    std::stringstream text;
    text << std::ifstream(folder_.path(name)).rdbuf();
    return text.str();
  }

  TemporaryFolder folder_;
  host::LinuxClientTransport client_;
};

// Not a test: the helper that the tests below start. It serves the socket that it was passed until a client
// unregisters.
TEST(SpawnedServiceHelper, DISABLED_Serves) {
  RecordingLog log;
  TestService service;
  host::LinuxTransport transport(log);
  auto listener = transport.makeListener("com.vantrell.Unused");
  if (!listener) _exit(3);
  (*listener)->setDelegate(&service);
  if ((*listener)->resume()) _exit(4);
  service.waitForEvent("unregister 1");
  _exit(5);
}

TEST_F(SpawnedService, ServesOnItsSocketAndReportsItsEnd) {
  auto service = client_.spawnService(servingHelper());
  ASSERT_TRUE(service.has_value());
  EXPECT_FALSE((*service)->waitForExit(0ms));
  auto connection = client_.connectToAddress((*service)->address());
  ASSERT_TRUE(connection.has_value());
  EXPECT_EQ((*connection)->getVersionString().value(), "2.5");
  EXPECT_FALSE((*connection)->unregisterClientWithPID(1));
  EXPECT_TRUE((*connection)->waitUntilClosed(kPatience));
  EXPECT_EQ((*service)->waitForExit(kPatience), 5);
  EXPECT_EQ((*service)->waitForExit(0ms), 5);
}

TEST_F(SpawnedService, IsStartedAsAServiceManagerWould) {
  setenv("LISTEN_FDNAMES", "stale", 1);
  std::signal(SIGUSR1, SIG_IGN);
  const host::FileDescriptor inherited(open(folder_.makeFile("marker").c_str(), O_RDONLY));  // open in child programs
  const std::string output = folder_.path("output");
  auto service = client_.spawnService(
      script("echo fds=$LISTEN_FDS names=$LISTEN_FDNAMES pid=$(test $LISTEN_PID = $$ && echo own)"
             " inherited=$(ls -l /proc/$$/fd | grep -c marker) socket=$(ls -l /proc/$$/fd/3 | grep -c socket:) "
             "stdin=$(readlink /proc/$$/fd/0) session=$(test $(cut -d' ' -f6 /proc/$$/stat) = $$ && echo own)"
             " ignored=$(grep SigIgn /proc/$$/status | cut -f2) >" +
             output + ".part; mv " + output + ".part " + output));
  std::signal(SIGUSR1, SIG_DFL);
  unsetenv("LISTEN_FDNAMES");
  ASSERT_TRUE(service.has_value());
  EXPECT_EQ((*service)->waitForExit(kPatience), 0);
  const std::string report = contents("output");
  EXPECT_THAT(report, testing::StartsWith("fds=1 names= pid=own inherited=0 socket=1 stdin=/dev/null "));
  EXPECT_THAT(report, testing::HasSubstr("session=own"));
  EXPECT_THAT(report, testing::HasSubstr("ignored=0000000000000000"));
}

TEST_F(SpawnedService, EndsWithItsObjectAndLeavesNothingBehind) {
  std::string path;
  {
    auto service =
        client_.spawnService(script("trap 'echo asked >" + folder_.path("asked") + "; exit 0' TERM; echo $$ >" +
                                    folder_.path("pid") + "; while :; do sleep 0.01; done"));
    ASSERT_TRUE(service.has_value());
    path = host::pathOfUnixAddress((*service)->address()).value();
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    const std::string parent = std::filesystem::path(path).parent_path();
    ASSERT_EQ(stat(parent.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    while (contents("pid").empty()) usleep(1000);
  }
  EXPECT_EQ(contents("asked"), "asked\n");
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
  EXPECT_NE(kill(std::stoi(contents("pid")), 0), 0);
}

TEST_F(SpawnedService, IsEndedByForceWhenItDoesNotListen) {
  {
    auto service = client_.spawnService(
        script("trap '' TERM; echo $$ >" + folder_.path("pid") + "; while :; do sleep 0.01; done"));
    ASSERT_TRUE(service.has_value());
    while (contents("pid").empty()) usleep(1000);
  }
  EXPECT_NE(kill(std::stoi(contents("pid")), 0), 0);
}

TEST_F(SpawnedService, ReportsTheSignalThatEndedIt) {
  auto service = client_.spawnService(script("kill -KILL $$"));
  ASSERT_TRUE(service.has_value());
  EXPECT_EQ((*service)->waitForExit(kPatience), 128 + SIGKILL);
  const auto connection = client_.connectToAddress((*service)->address());
  ASSERT_FALSE(connection.has_value());
  EXPECT_TRUE(connection.error().isPosix(posix::kConnectionRefused)) << connection.error().code();
}

TEST_F(SpawnedService, ReportsAHelperThatCanNotBeExecuted) {
  const auto missing = client_.spawnService(folder_.path("missing"));
  ASSERT_FALSE(missing.has_value());
  EXPECT_TRUE(missing.error().isPosix(posix::kNoEntry));
  const auto plain = client_.spawnService(folder_.makeFile("plain"));
  ASSERT_FALSE(plain.has_value());
  EXPECT_TRUE(plain.error().isPosix(posix::kAccessDenied));
}

TEST(LinuxTransport, RefusesAPassedDescriptorThatDoesNotListen) {
  // In a process of its own: descriptor 3 is taken here.
  EXPECT_EXIT(
      {
        dup2(open("/dev/null", O_RDONLY), 3);
        setenv("LISTEN_FDS", "1", 1);
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
        RecordingLog log;
        host::LinuxTransport transport(log);
        _exit(transport.makeListener("com.vantrell.Test").has_value() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vantrell::tests
