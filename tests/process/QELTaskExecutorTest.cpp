// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <csignal>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/Exception.h"
#include "tests/process/TaskExecutorFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {
namespace {

using host::LogLevel;
using testing::ElementsAre;
using testing::IsEmpty;
using Arguments = std::vector<std::string>;
using namespace std::chrono_literals;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSlowed = true;
#elif defined(__has_feature)
constexpr bool kIsSlowed = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kIsSlowed = false;
#endif

class TaskExecutor : public TaskExecutorFixture {
 protected:
  /// The reason of what the launch raises.
  template <class Run>
  std::string reasonRaisedBy(Run&& run) {
    try {
      run();
    } catch (const Exception& exception) {
      EXPECT_EQ(exception.name(), NSInvalidArgumentException);
      return exception.reason();
    }
    return "nothing";
  }
};

TEST_F(TaskExecutor, TheSynchronousFormReturnsTheExitStatus) {
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, script("exit 0")), 0);
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, script("exit 255")), 255);
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, script("kill -TERM $$")), SIGTERM);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(TaskExecutor, TheDelegateIsToldInOrder) {
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, script("printf x; sleep 0.2; printf y >&2; sleep 0.2")), 0);
  EXPECT_THAT(delegate_->calls, ElementsAre("will", "did", "output", "error", "end of output", "end of error"));
  delegate_->calls.clear();
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(kShell, script("printf x; sleep 0.2; printf y >&2; sleep 0.2"),
                                              completion.handler()));
  EXPECT_EQ(completion.wait(), Completion::Answer(false, 0));
  EXPECT_THAT(delegate_->calls, ElementsAre("will", "did", "output", "error", "end of output", "end of error"));
}

TEST_F(TaskExecutor, NothingIsRelayedBeforeTheDelegateKnowsOfTheLaunch) {
  delegate_->onDidLaunch = [](QELTaskExecutor&) { std::this_thread::sleep_for(100ms); };
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath("/bin/echo", Arguments{"x"}, completion.handler()));
  completion.wait();
  EXPECT_THAT(delegate_->calls, ElementsAre("will", "did", "output", "end of output", "end of error"));
}

TEST_F(TaskExecutor, WithoutPathOrArgumentsNothingRuns) {
  EXPECT_EQ(executor_->executeProgramAtPath("", Arguments{}), -1);
  EXPECT_EQ(executor_->executeProgramAtPath("/bin/true", std::nullopt), -1);
  EXPECT_THAT(log_.entries(), IsEmpty());
  Completion completion;
  EXPECT_FALSE(executor_->executeProgramAtPath("", Arguments{}, completion.handler()));
  EXPECT_FALSE(executor_->executeProgramAtPath("/bin/true", std::nullopt, completion.handler()));
  EXPECT_THAT(log_.messages(),
              ElementsAre("Execution of the program '' was rejected due to invalid arguments or status.",
                          "Execution of the program '/bin/true' was rejected due to invalid arguments or status."));
  EXPECT_EQ(log_.entries()[0].level, LogLevel::Error);
  EXPECT_EQ(log_.entries()[0].subsystem, "");
  EXPECT_THAT(delegate_->calls, IsEmpty());
  EXPECT_FALSE(executor_->canInterruptProgram());
  EXPECT_FALSE(completion.hasCome());
}

TEST_F(TaskExecutor, AnEmptyArgumentArrayRunsTheProgramWithoutArguments) {
  const TemporaryFolder folder;
  const auto program = folder.makeFile("count", "#!/bin/sh\necho $#\n");
  ASSERT_EQ(chmod(program.c_str(), 0755), 0);
  EXPECT_EQ(executor_->executeProgramAtPath(program, Arguments{}), 0);
  EXPECT_EQ(delegate_->record.text(false), "0\n");
}

TEST_F(TaskExecutor, TheAsynchronousFormLogsStartAndEnd) {
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(kShell, script("exit 3"), completion.handler()));
  EXPECT_EQ(completion.wait(), Completion::Answer(false, 3));
  EXPECT_EQ(log_.entries(), (std::vector<RecordingLog::Entry>{
                                {LogLevel::Default, "", "", "Running external program."},
                                {LogLevel::Default, "", "", "External program completed with return code 3."}}));
  EXPECT_FALSE(executor_->canInterruptProgram());
  EXPECT_FALSE(executor_->hasInterrupted());
}

TEST_F(TaskExecutor, OneAsynchronousRunAtATime) {
  Completion first;
  Completion second;
  ASSERT_TRUE(executor_->executeProgramAtPath("/bin/cat", Arguments{}, first.handler()));
  EXPECT_FALSE(executor_->executeProgramAtPath("/bin/true", Arguments{}, second.handler()));
  EXPECT_TRUE(log_.contains("Execution of the program '/bin/true' was rejected due to invalid arguments or status."));
  executor_->interruptProgramUsingTerminationRequest(true);
  EXPECT_EQ(first.wait(), Completion::Answer(true, SIGTERM));
  EXPECT_FALSE(second.hasCome());
}

TEST_F(TaskExecutor, ANewRunCanBeStartedFromTheCompletionHandler) {
  Completion second;
  std::promise<bool> accepted;
  ASSERT_TRUE(executor_->executeProgramAtPath("/bin/true", Arguments{}, [&](bool, std::int32_t) {
    accepted.set_value(executor_->executeProgramAtPath("/bin/false", Arguments{}, second.handler()));
  }));
  EXPECT_TRUE(accepted.get_future().get());
  EXPECT_EQ(second.wait(), Completion::Answer(false, 1));
}

TEST_F(TaskExecutor, AnInterruptionIsReportedAtTheEnd) {
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(
      kShell, script("trap 'printf end; exit 5' INT; echo ready; while :; do sleep 0.05; done"), completion.handler()));
  waitForOutput("ready");
  EXPECT_TRUE(executor_->canInterruptProgram());
  executor_->interruptProgramUsingTerminationRequest(false);
  EXPECT_TRUE(executor_->hasInterrupted());
  EXPECT_EQ(completion.wait(), Completion::Answer(true, 5));
  EXPECT_THAT(log_.messages(), ElementsAre("Running external program.", "Sent signal to external program."));
  EXPECT_EQ(delegate_->record.text(false), "ready\nend");
  EXPECT_FALSE(executor_->canInterruptProgram());
  EXPECT_TRUE(executor_->hasInterrupted());
}

TEST_F(TaskExecutor, InterruptAndTerminationRequestAreDifferentSignals) {
  for (const bool terminate : {false, true}) {
    QELTaskExecutor executor(children_, Log(log_));
    Completion completion;
    ASSERT_TRUE(executor.executeProgramAtPath("/bin/sleep", Arguments{"60"}, completion.handler()));
    executor.interruptProgramUsingTerminationRequest(terminate);
    EXPECT_EQ(completion.wait(), Completion::Answer(true, terminate ? SIGTERM : SIGINT));
  }
}

TEST_F(TaskExecutor, AProgramThatIgnoresTheInterruptRunsOn) {
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(kShell, script("trap '' INT; echo ready; sleep 0.5; echo done; exit 0"),
                                              completion.handler()));
  waitForOutput("ready");
  executor_->interruptProgramUsingTerminationRequest(false);
  EXPECT_EQ(completion.wait(), Completion::Answer(true, 0));
  EXPECT_EQ(delegate_->record.text(false), "ready\ndone\n");
}

TEST_F(TaskExecutor, AnInterruptionDuringTheLaunchReachesTheProgram) {
  delegate_->onWillExecute = [](QELTaskExecutor& executor) {
    EXPECT_TRUE(executor.canInterruptProgram());
    executor.interruptProgramUsingTerminationRequest(false);
  };
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath("/bin/sleep", Arguments{"60"}, completion.handler()));
  EXPECT_EQ(completion.wait(), Completion::Answer(true, SIGINT));
}

TEST_F(TaskExecutor, NeitherAnIdleExecutorNorASynchronousRunCanBeInterrupted) {
  executor_->interruptProgramUsingTerminationRequest(true);
  delegate_->onDidLaunch = [](QELTaskExecutor& executor) {
    EXPECT_FALSE(executor.canInterruptProgram());
    executor.interruptProgramUsingTerminationRequest(true);
  };
  EXPECT_EQ(executor_->executeProgramAtPath("/bin/sleep", Arguments{"0.2"}), 0);
  EXPECT_FALSE(executor_->hasInterrupted());
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(TaskExecutor, ALaunchThatFailsRaises) {
  const TemporaryFolder folder;
  const auto before = openDescriptors();
  const auto text = folder.makeFile("text", "#!/bin/sh\n");
  for (const auto& path : {folder.path("missing"), text, folder.path(), text + "/x"}) {
    EXPECT_EQ(reasonRaisedBy([&] { executor_->executeProgramAtPath(path, Arguments{}); }),
              "launch path not accessible");
  }
  EXPECT_THAT(delegate_->calls, ElementsAre("will", "will", "will", "will"));
  EXPECT_THAT(log_.entries(), IsEmpty());
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(executor_->executeProgramAtPath("/bin/true", Arguments{}), 0);
  EXPECT_EQ(reasonRaisedBy([&] { executor_->executeProgramAtPath("/bin/true", Arguments{std::string(1, '\0')}); }),
            "Couldn't posix_spawn: error 22");
}

TEST_F(TaskExecutor, AfterAnAsynchronousLaunchThatFailsTheRunStaysUnderWay) {
  const auto before = openDescriptors();
  Completion completion;
  EXPECT_EQ(
      reasonRaisedBy([&] { executor_->executeProgramAtPath("/no/such/program", Arguments{}, completion.handler()); }),
      "launch path not accessible");
  EXPECT_THAT(delegate_->calls, ElementsAre("will"));
  EXPECT_THAT(log_.messages(), ElementsAre("Running external program."));
  EXPECT_TRUE(executor_->canInterruptProgram());
  executor_->interruptProgramUsingTerminationRequest(true);
  EXPECT_FALSE(executor_->executeProgramAtPath("/bin/true", Arguments{}, completion.handler()));
  EXPECT_FALSE(completion.hasCome());
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(TaskExecutor, RunningOutOfDescriptorsIsReported) {
  Completion completion;
  {
    const DescriptorsLeft few(2);
    EXPECT_EQ(executor_->executeProgramAtPath("/bin/true", Arguments{}), -1);
    EXPECT_FALSE(executor_->canInterruptProgram());
    EXPECT_FALSE(executor_->executeProgramAtPath("/bin/true", Arguments{}, completion.handler()));
  }
  EXPECT_EQ(log_.entries(),
            (std::vector<RecordingLog::Entry>{
                {LogLevel::Error, "", "",
                 "The operation '/bin/true' cannot be executed because the system is running out of file handles."},
                {LogLevel::Error, "", "",
                 "The program '/bin/true' cannot be executed because the system is running out of file handles."}}));
  EXPECT_THAT(delegate_->calls, IsEmpty());
  // The refused run is never forgotten.
  EXPECT_TRUE(executor_->canInterruptProgram());
  EXPECT_FALSE(executor_->executeProgramAtPath("/bin/true", Arguments{}, completion.handler()));
  EXPECT_EQ(executor_->executeProgramAtPath("/bin/true", Arguments{}), 0);
  EXPECT_FALSE(completion.hasCome());
}

TEST_F(TaskExecutor, OutputJustBeforeTheEndArrives) {
  for (int i = 0; i < 20; ++i) {
    QELTaskExecutor executor(children_, Log(log_));
    const auto delegate = std::make_shared<RecordingDelegate>();
    executor.setDelegate(delegate);
    Completion completion;
    ASSERT_TRUE(executor.executeProgramAtPath(kShell, script("head -c 200000 /dev/zero; printf last >&2; exit 1"),
                                              completion.handler()));
    EXPECT_EQ(completion.wait(), Completion::Answer(false, 1));
    EXPECT_EQ(delegate->record.text(false).size(), 200000u);
    EXPECT_EQ(delegate->record.text(true), "last");
    EXPECT_TRUE(delegate->record.eachStreamEndedOnce());
  }
}

TEST_F(TaskExecutor, AChildThatClosesItsStreamsIsWaitedFor) {
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, script("exec 1>&- 2>&-; sleep 0.3; exit 2")), 2);
  EXPECT_THAT(delegate_->calls, ElementsAre("will", "did", "end of output", "end of error"));
}

TEST_F(TaskExecutor, OutputOfAGrandchildBelongsToTheRun) {
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(kShell, script("(sleep 1; echo late) & exit 0"), completion.handler()));
  EXPECT_TRUE(log_.waitForMessage("External program completed with return code 0."));
  EXPECT_FALSE(completion.hasCome());
  EXPECT_TRUE(executor_->canInterruptProgram());
  completion.wait();
  EXPECT_EQ(delegate_->record.text(false), "late\n");
}

TEST_F(TaskExecutor, AnInterruptionAfterTheExitOnlyEndsTheWaitForOthers) {
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(kShell, script("sleep 60 & echo $!; exit 6"), completion.handler()));
  EXPECT_TRUE(log_.waitForMessage("External program completed with return code 6."));
  executor_->interruptProgramUsingTerminationRequest(false);
  EXPECT_EQ(completion.wait(), Completion::Answer(false, 6));
  EXPECT_TRUE(executor_->hasInterrupted());
  kill(std::stoi(delegate_->record.text(false)), SIGKILL);
}

TEST_F(TaskExecutor, WhatTheDelegateThrowsIsLoggedAndTheRelayGoesOn) {
  delegate_->onOutput = [&](DataView bytes, bool isError) {
    if (textOf(bytes) == "one") throw Exception("QELSomeException", "some reason");
    if (textOf(bytes) == "two") throw std::runtime_error("other reason");
    if (textOf(bytes) == "three") throw Exception("NSFileHandleOperationException", "silent");
    if (bytes.empty() && isError) throw 5;
  };
  EXPECT_EQ(executor_->executeProgramAtPath(
                kShell, script("for i in one two three four; do printf $i; sleep 0.2; done; exit 7")),
            7);
  EXPECT_EQ(delegate_->record.text(false), "onetwothreefour");
  EXPECT_TRUE(delegate_->record.eachStreamEndedOnce());
  EXPECT_THAT(log_.messages(), ElementsAre("Handled unexpected exception 'QELSomeException' (some reason)!",
                                           "Handled unexpected exception 'NSGenericException' (other reason)!",
                                           "Handled unexpected exception 'NSGenericException' ()!"));
  EXPECT_EQ(log_.entries()[0].level, LogLevel::Error);
}

TEST_F(TaskExecutor, ADelegateThatThrowsAfterTheLaunchDoesNotLoseTheRun) {
  delegate_->onDidLaunch = [](QELTaskExecutor&) { throw Exception(NSInvalidArgumentException, "no"); };
  Completion completion;
  EXPECT_EQ(
      reasonRaisedBy([&] { executor_->executeProgramAtPath(kShell, script("echo x; exit 4"), completion.handler()); }),
      "no");
  EXPECT_EQ(completion.wait(), Completion::Answer(false, 4));
  EXPECT_EQ(delegate_->record.text(false), "x\n");
}

TEST_F(TaskExecutor, WithoutADelegateOutputGoesToTheOwnStreams) {
  delegate_.reset();
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, script("printf out; printf err >&2")), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "out");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "err");
}

TEST_F(TaskExecutor, TheDelegateIsNotKeptAlive) {
  EXPECT_EQ(executor_->delegate(), delegate_);
  delegate_.reset();
  EXPECT_EQ(executor_->delegate(), nullptr);
}

/// Checks a stream of equal blocks, each followed by its number.
class NumberedBlocks {
 public:
  explicit NumberedBlocks(const std::string& block) : block_(block) {}

  bool take(DataView bytes) {
    for (auto rest = textOf(bytes); !rest.empty();) {
      if (offset_ == expected_.size()) {
        expected_ = block_ + std::to_string(count_++) + "\n";
        offset_ = 0;
      }
      const auto part = std::min(rest.size(), expected_.size() - offset_);
      if (rest.substr(0, part) != std::string_view(expected_).substr(offset_, part)) return false;
      offset_ += part;
      rest.remove_prefix(part);
    }
    return true;
  }
  bool isWhole(int blocks) const { return count_ == blocks && offset_ == expected_.size(); }

 private:
  const std::string& block_;
  int count_ = 0;
  std::string expected_;
  std::size_t offset_ = 0;
};

// Both streams in turn, far beyond what any pipe holds: nothing is lost, nothing waits for the other stream.
TEST_F(TaskExecutor, NothingIsLostOfAGibibyte) {
  constexpr int kBlocks = kIsSlowed ? 16 : 512;
  std::string block(1 << 20, 0);
  std::mt19937 random(7);
  for (auto& byte : block) byte = static_cast<char>(random());
  const TemporaryFolder folder;
  const auto file = folder.makeFile("block", block);

  struct Checker final : QELTaskExecutorDelegate {
    explicit Checker(const std::string& block) : output(block), error(block) {}
    void receiveTaskOutput(DataView bytes, bool isError) override {
      isRight = isRight && (isError ? error : output).take(bytes);
    }
    NumberedBlocks output;
    NumberedBlocks error;
    bool isRight = true;
  };
  const auto checker = std::make_shared<Checker>(block);
  executor_->setDelegate(checker);
  const auto line = "i=0; while [ $i -lt " + std::to_string(kBlocks) +
                    " ]; do cat $0; echo $i; { cat $0; echo $i; } >&2; i=$((i+1)); done; exit 11";
  EXPECT_EQ(executor_->executeProgramAtPath(kShell, Arguments{"-c", line, file}), 11);
  EXPECT_TRUE(checker->isRight);
  EXPECT_TRUE(checker->output.isWhole(kBlocks));
  EXPECT_TRUE(checker->error.isWhole(kBlocks));
}

}  // namespace
}  // namespace vantrell::tests
