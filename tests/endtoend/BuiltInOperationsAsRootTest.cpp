// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What the real helper does itself, among it its own uninstallation, over the real wire.

#include <chrono>
#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "tests/endtoend/SystemProgramsFixture.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/RunProgram.h"

namespace vantrell {
namespace {

using namespace tests;

const std::string kToolErrors = std::string(VANTRELL_VENDOR_DOMAIN_PREFIX) + ".error.privileged-tool";
constexpr std::chrono::seconds kPatience{20};

/// Another process, which sleeps until it is ended.
class SleepingProcess {
 public:
  SleepingProcess() {
    char name[] = "sleep";
    char duration[] = "600";
    char* words[] = {name, duration, nullptr};
    if (posix_spawn(&pid_, "/bin/sleep", nullptr, nullptr, words, environ) != 0) ADD_FAILURE() << "no sleep";
  }
  SleepingProcess(const SleepingProcess&) = delete;
  SleepingProcess& operator=(const SleepingProcess&) = delete;
  ~SleepingProcess() { end(); }

  pid_t pid() const { return pid_; }
  void end() {
    if (ended_ || pid_ <= 0) return;
    ended_ = true;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }

 private:
  pid_t pid_ = -1;
  bool ended_ = false;
};

class UninstallAsRoot : public SystemProgramsFixture {
 protected:
  void SetUp() override {
    SystemProgramsFixture::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    putLaunchControl(0);
    helperFile_ = folder_.makeFile("helper");
    jobFile_ = folder_.makeFile("job");
  }

  /// One that records its arguments and ends with this status.
  void putLaunchControl(int status) {
    folders_->putScript("/bin/launchctl", R"(for word in "$@"; do printf '[%s]' "$word"; done >> )" + record() +
                                              "\nexit " + std::to_string(status));
  }
  std::string record() const { return folder_.path("record"); }
  Array arguments() const { return {host_.currentProcess->identifier(), helperFile_, jobFile_}; }

  void expectRefusal(const Array& arguments, const Error& error) {
    EXPECT_EQ(perform(kPerformUninstall, arguments), error);
    expectNothingDone();
  }
  void expectNothingDone() const {
    EXPECT_TRUE(exists(helperFile_));
    EXPECT_TRUE(exists(jobFile_));
    EXPECT_FALSE(exists(record()));
  }
  /// No reply, but an end.
  void expectUninstallation() {
    const auto answer = client_->perform(kPerformUninstall, arguments());
    EXPECT_FALSE(answer) << "it was answered";
    if (!answer) {
      EXPECT_TRUE(answer.error().isPosix()) << answer.error().domain();
    }
    EXPECT_EQ(service_->waitForExit(kPatience), 0);
    EXPECT_FALSE(exists(helperFile_));
    EXPECT_FALSE(exists(jobFile_));
    EXPECT_EQ(contentOf(record()), "[remove][Vantrell-PrivilegedTool]");
  }
  std::unique_ptr<host::ServiceConnection> connection() {
    return std::move(host_.clientTransport->connectToAddress(service_->address()).value());
  }

  std::string helperFile_;
  std::string jobFile_;
};

const Error& unsafeLaunchControl() {
  static const Error error{
      kToolErrors, 11,
      Dictionary{{"NSLocalizedDescription",
                  "A security issue was detected with the launch control subsystem of this operating system."},
                 {"NSLocalizedRecoverySuggestion",
                  "The request to remove the privileged helper was rejected to avoid a possible security breach. "
                  "Required permission settings in your system installation are unsafe and may have been "
                  "manipulated."},
                 {"NSFilePath", "/bin/launchctl"}}};
  return error;
}

TEST_F(UninstallAsRoot, DeletesBothFilesTellsLaunchControlAndEndsWithoutAReply) {
  expectUninstallation();
}

TEST_F(UninstallAsRoot, DeletesAProtectedFile) {
  try {
    addInodeFlags(helperFile_, FS_IMMUTABLE_FL);
  } catch (const std::system_error& error) {
    GTEST_SKIP() << error.what();
  }
  expectUninstallation();
}

TEST_F(UninstallAsRoot, EndsInOrderAlsoWhenLaunchControlFails) {
  putLaunchControl(3);
  expectUninstallation();
}

TEST_F(UninstallAsRoot, IsRefusedWhileAnotherRegisteredProcessIsAlive) {
  SleepingProcess other;
  const auto otherConnection = connection();
  ASSERT_TRUE(otherConnection->registerClientWithPID(other.pid()));
  const auto own = std::to_string(getpid());
  expectRefusal(
      arguments(),
      Error(
          kToolErrors, 10,
          Dictionary{{"NSLocalizedDescription",
                      "The security component is currently busy. It may be working for another user session."},
                     {"QELLocalizedRecoverySuggestionTemplate",
                      "The request to remove the privileged helper was rejected (your process $1$). Process $2$ "
                      "($3$) is still using it."},
                     {"QELLocalizedRecoverySuggestionParameters", Array{own, "sleep", std::to_string(other.pid())}}}));
  // Its registration is stale as soon as it has ended.
  other.end();
  expectUninstallation();
}

TEST_F(UninstallAsRoot, IsRefusedWhereLaunchControlIsUnsafeOrMissing) {
  for (const mode_t mode : {0775u, 0757u}) {
    ASSERT_EQ(chmod("/bin/launchctl", mode), 0);
    expectRefusal(arguments(), unsafeLaunchControl());
  }
  std::filesystem::remove("/bin/launchctl");
  expectRefusal(arguments(), unsafeLaunchControl());
}

TEST_F(UninstallAsRoot, IsRefusedWithAnEmptyPathBeforeAnythingElseIsLookedAt) {
  SleepingProcess other;
  const auto otherConnection = connection();
  ASSERT_TRUE(otherConnection->registerClientWithPID(other.pid()));
  ASSERT_EQ(chmod("/bin/launchctl", 0775), 0);
  const auto invalid = Error::posix(posix::kInvalidArgument);
  expectRefusal({host_.currentProcess->identifier(), helperFile_, ""}, invalid);
  expectRefusal({host_.currentProcess->identifier(), "", jobFile_}, invalid);
}

TEST_F(UninstallAsRoot, GoesNoFurtherWhereAFileCantBeDeleted) {
  jobFile_ = folder_.makeFolder("full");
  folder_.makeFile("full/file");
  EXPECT_EQ(perform(kPerformUninstall, arguments()), Error::posix(posix::kNotEmpty));
  EXPECT_FALSE(exists(helperFile_));
  EXPECT_FALSE(exists(record()));
  EXPECT_EQ(perform(kDiscardAuth, {}), std::nullopt) << "the helper still serves";
}

TEST_F(UninstallAsRoot, TheCommandTakesTheEndForSuccess) {
  // Without the client of this test's own; the command bears the number of the shell that it takes the place of.
  const auto line =
      "exec " + kProgram + " --spawn " + kHelper + " run perform-uninstall $$ " + helperFile_ + " " + jobFile_;
  const auto result = runProgram("/bin/sh", {"-c", line});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output + result.error, "");
  EXPECT_FALSE(exists(helperFile_));
  EXPECT_FALSE(exists(jobFile_));
  EXPECT_EQ(contentOf(record()), "[remove][Vantrell-PrivilegedTool]");
}

class BuiltInOperationsAsRoot : public SystemProgramsFixture {};

TEST_F(BuiltInOperationsAsRoot, DeletingGoesOnAfterAFolderThatIsNotEmpty) {
  const auto full = folder_.makeFolder("full");
  folder_.makeFile("full/file");
  const auto empty = folder_.makeFolder("empty");
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(perform(kDeleteFiles, {full, empty, file}), Error::posix(posix::kNotEmpty));
  EXPECT_TRUE(exists(full + "/file"));
  EXPECT_FALSE(exists(empty));
  EXPECT_FALSE(exists(file));
}

TEST_F(BuiltInOperationsAsRoot, DeletingReportsTheLastFailure) {
  const auto full = folder_.makeFolder("full");
  folder_.makeFile("full/file");
  const auto link = folder_.makeLink("link", full);
  EXPECT_EQ(perform(kDeleteFiles, {full, folder_.path("missing"), link}), Error::posix(posix::kNoEntry));
  EXPECT_FALSE(exists(link));
  EXPECT_TRUE(exists(full + "/file"));
  EXPECT_EQ(perform(kDeleteFiles, {full, ""}), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(perform(kDeleteFiles, {}), std::nullopt);
}

TEST_F(BuiltInOperationsAsRoot, NothingIsGuardedOnASystemWithoutAVersionList) {
  if (exists("/System/Library/CoreServices/SystemVersion.plist")) GTEST_SKIP() << "this one has a version list";
  EXPECT_EQ(perform(kCheckSecurityPolicy, {}),
            Error(kOperationErrors, 0, Dictionary{{"QELSecurityPolicyCheckResult", 2}}));
}

TEST_F(BuiltInOperationsAsRoot, DiscardingAnAuthorizationSucceeds) {
  EXPECT_EQ(perform(kDiscardAuth, {}), std::nullopt);
}

}  // namespace
}  // namespace vantrell
