// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "catalogue/ErrorModel.h"
#include "foundation/Exception.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/posix/PosixChildProcesses.h"
#include "process/SystemProgramRunner.h"
#include "tests/support/ChildScripts.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using std::chrono::milliseconds;

class Feedback final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override {
    const std::lock_guard lock(mutex_);
    messages_.push_back(message);
  }
  std::vector<Dictionary> messages() const {
    const std::lock_guard lock(mutex_);
    return messages_;
  }
  /// All that came under a key, joined.
  std::string text(const char* key) const {
    std::string all;
    for (const auto& message : messages()) {
      if (const auto* value = message.find(key)) all += textOf(*value->asData());
    }
    return all;
  }
  bool waitForText(const char* key, const std::string& wanted) const {
    for (int i = 0; i < 10000; ++i) {
      if (text(key).find(wanted) != std::string::npos) return true;
      std::this_thread::sleep_for(milliseconds(1));
    }
    return false;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Dictionary> messages_;
};

class SystemProgram : public testing::Test {
 protected:
  /// Trusted, so that where the program lies doesn't matter.
  ErrorOrNil run(const std::string& line, BlockOperation* operation = nullptr, bool safePath = false) {
    return runner(operation).executeTrusted(true, tests::kShell, tests::script(line), safePath, &feedback_);
  }
  SystemProgramRunner runner(BlockOperation* operation = nullptr) {
    return {children_, fileManager_, fileSystem_, Log(log_), operation};
  }

  host::PosixChildProcesses children_;
  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  tests::RecordingLog log_;
  Feedback feedback_;
};

TEST_F(SystemProgram, StatusZeroIsSuccessEvenWithWordsOnStandardError) {
  EXPECT_EQ(run("echo complaint >&2"), std::nullopt);
  EXPECT_EQ(feedback_.text("ErrorData"), "complaint\n");
  EXPECT_EQ(feedback_.text("OutputData"), "");
}

TEST_F(SystemProgram, AnotherStatusIsError3WithTheStatusAsItsParameter) {
  const auto error = [](const char* status) {
    return Error(privilegedOperationErrorDomain(), 3,
                 {{"NSLocalizedDescription", "It was not possible to complete the operation successfully."},
                  {"QELLocalizedRecoverySuggestionTemplate",
                   "The operating system could not perform the requested operation. It returned error code $1$."},
                  {"QELLocalizedRecoverySuggestionParameters", Array{Value(status)}}});
  };
  EXPECT_EQ(run("exit 1"), error("1"));
  EXPECT_EQ(run("exit 255"), error("255"));
  EXPECT_EQ(run("kill -9 $$"), error("9")) << "the number of the signal that ended it";
}

TEST_F(SystemProgram, OutputIsNumberedOverBothStreamsFromZeroInEveryRun) {
  for (int round = 0; round < 2; ++round) {
    Feedback feedback;
    ASSERT_EQ(
        runner().executeTrusted(true, tests::kShell, tests::script("echo 1; sleep .05; echo 2 >&2; sleep .05; echo 3"),
                                false, &feedback),
        std::nullopt);
    const auto messages = feedback.messages();
    ASSERT_EQ(messages.size(), 5u) << "three pieces and an empty one for the end of each stream";
    for (std::size_t i = 0; i < messages.size(); ++i) {
      EXPECT_EQ(messages[i].size(), 2u);
      EXPECT_EQ(*messages[i].find("SequenceNumber"), Value(i));
    }
    EXPECT_EQ(feedback.text("OutputData"), "1\n3\n");
    EXPECT_EQ(feedback.text("ErrorData"), "2\n");
    EXPECT_TRUE(messages[3].find("OutputData")->asData()->empty());
    EXPECT_TRUE(messages[4].find("ErrorData")->asData()->empty());
  }
}

TEST_F(SystemProgram, RunsWithoutAnybodyListening) {
  EXPECT_EQ(runner().executeTrusted(true, tests::kShell, tests::script("echo lost"), false, nullptr), std::nullopt);
}

TEST_F(SystemProgram, WithoutASafePathThereIsNoneAtAll) {
  children_.setSearchPath("/somewhere");
  EXPECT_EQ(run("tr '\\0' '\\n' </proc/$$/environ"), std::nullopt);
  EXPECT_EQ(("\n" + feedback_.text("OutputData")).find("\nPATH="), std::string::npos);
  EXPECT_EQ(children_.searchPath(), std::nullopt) << "the change stays";
  children_.setSearchPath("/usr/bin:/bin");
}

TEST_F(SystemProgram, TheSafePathIsSetAndStays) {
  children_.setSearchPath("/somewhere");
  EXPECT_EQ(run("tr '\\0' '\\n' </proc/$$/environ", nullptr, true), std::nullopt);
  EXPECT_NE(("\n" + feedback_.text("OutputData")).find("\nPATH=/usr/bin:/bin:/usr/sbin:/sbin\n"), std::string::npos);
  EXPECT_EQ(children_.searchPath(), "/usr/bin:/bin:/usr/sbin:/sbin");
}

TEST_F(SystemProgram, ACancellationInterruptsItAndIsTheResult) {
  ErrorOrNil result;
  auto* body = &result;
  std::shared_ptr<BlockOperation> operation;
  operation = std::make_shared<BlockOperation>([&, body] {
    *body = run("trap 'echo interrupted; exit 7' INT; echo ready; while :; do sleep .01; done", operation.get());
  });
  std::thread worker([&] { operation->run(); });
  EXPECT_TRUE(feedback_.waitForText("OutputData", "ready"));
  operation->cancel();
  worker.join();
  EXPECT_EQ(result, Error::posix(89));
  EXPECT_NE(feedback_.text("OutputData").find("interrupted"), std::string::npos) << "SIGINT, not SIGTERM";
  EXPECT_TRUE(log_.contains("Sent signal to external program."));
}

TEST_F(SystemProgram, AProgramThatIgnoresTheInterruptIsWaitedFor) {
  ErrorOrNil result;
  std::shared_ptr<BlockOperation> operation;
  operation = std::make_shared<BlockOperation>(
      [&] { result = run("trap '' INT; echo ready; sleep .4; echo done", operation.get()); });
  std::thread worker([&] { operation->run(); });
  EXPECT_TRUE(feedback_.waitForText("OutputData", "ready"));
  operation->cancel();
  worker.join();
  EXPECT_EQ(result, Error::posix(89));
  EXPECT_NE(feedback_.text("OutputData").find("done"), std::string::npos);
}

TEST_F(SystemProgram, ACancellationJustBeforeTheStartIsNotLost) {
  BlockOperation operation([] {});
  operation.cancel();
  EXPECT_EQ(run("sleep 20", &operation), Error::posix(89));
}

TEST_F(SystemProgram, AFailedLaunchRaises) {
  EXPECT_THROW((void)runner().executeTrusted(true, "/no/such/program", {}, false, &feedback_), Exception);
}

TEST_F(SystemProgram, ARefusedStartEndsWithAnErrorInsteadOfWaiting) {
  class NoPipes final : public host::ChildProcesses {
   public:
    Result<std::unique_ptr<host::ChildPipes>> makePipes() override { return posixFailure(24); }
    Result<std::unique_ptr<host::ChildProcess>> launch(const std::string&, const std::vector<std::string>&,
                                                       std::unique_ptr<host::ChildPipes>) override {
      ADD_FAILURE() << "launched without pipes";
      return posixFailure(24);
    }
    void setSearchPath(const std::optional<std::string>&) override {}
    std::optional<std::string> searchPath() override { return std::nullopt; }
    std::unique_ptr<host::OpenFileCreationMask> openFileCreationMask() override { return nullptr; }
    void writeToOwnStream(host::ChildStream, DataView) noexcept override {}
  } children;
  SystemProgramRunner runner(children, fileManager_, fileSystem_, Log(log_), nullptr);
  EXPECT_EQ(runner.executeTrusted(true, tests::kShell, {}, false, &feedback_), Error::posix(24));
  EXPECT_TRUE(
      log_.contains(host::LogLevel::Error,
                    "The program '/bin/sh' cannot be executed because the system is running out of file handles."));
}

TEST_F(SystemProgram, UtilitiesAreRefusedWhateverElseTheArgumentsAre) {
  for (const Array& arguments : {Array{}, Array{"app"}, Array{"app", "rm"}, Array{"app", "/bin/chmod"},
                                 Array{"", "chmod"}, Array{"app", ""}, Array{"app", "chmod", 5}}) {
    EXPECT_EQ(runner().executeUtility(arguments, &feedback_), Error::posix(22));
  }
  EXPECT_TRUE(feedback_.messages().empty());
}

class SystemProgramAsRoot : public SystemProgram {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "safe programs belong to root";
    program_ = folder_.makeFile("program", "#!/bin/sh\necho ran\n");
    ASSERT_EQ(chmod(program_.c_str(), 0755), 0);
  }
  tests::TemporaryFolder folder_;
  std::string program_;
};

TEST_F(SystemProgramAsRoot, ASafeProgramRuns) {
  EXPECT_EQ(runner().executeTrusted(false, program_, {}, false, &feedback_), std::nullopt);
  EXPECT_EQ(feedback_.text("OutputData"), "ran\n");
}

TEST_F(SystemProgramAsRoot, AnUnsafeOneIsError2AndDoesNotRun) {
  ASSERT_EQ(chmod(program_.c_str(), 0775), 0);
  EXPECT_EQ(runner().executeTrusted(false, program_, {}, false, &feedback_),
            Error(privilegedOperationErrorDomain(), 2,
                  {{"NSLocalizedDescription",
                    "Permission settings for a system utility at the Unix level are unsafe. The command cannot be "
                    "executed for security reasons."},
                   {"QELLocalizedRecoverySuggestionTemplate",
                    "Please verify that the executable '$1$' and its parent folder are owned by the operating system "
                    "and cannot be modified by any user."},
                   {"QELLocalizedRecoverySuggestionParameters", Array{Value(program_)}},
                   {"NSFilePath", program_}}));
  EXPECT_TRUE(feedback_.messages().empty());
}

TEST_F(SystemProgramAsRoot, ATrustedOneRunsUnchecked) {
  ASSERT_EQ(chmod(program_.c_str(), 0777), 0);
  EXPECT_EQ(runner().executeTrusted(true, program_, {}, false, &feedback_), std::nullopt);
}

}  // namespace
}  // namespace vantrell
