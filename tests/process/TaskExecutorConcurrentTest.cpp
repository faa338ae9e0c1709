// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <csignal>

#include "tests/process/TaskExecutorFixture.h"

// Interruptions and ends that meet; run again under ThreadSanitizer.

namespace vantrell::tests {
namespace {

using Arguments = std::vector<std::string>;
using namespace std::chrono_literals;

class TaskExecutorConcurrent : public TaskExecutorFixture {};

TEST_F(TaskExecutorConcurrent, AnotherThreadInterruptsAtAnyMoment) {
  for (int i = 0; i < 30; ++i) {
    QELTaskExecutor executor(children_, Log(log_));
    const auto delegate = std::make_shared<RecordingDelegate>();
    executor.setDelegate(delegate);
    Completion completion;
    std::atomic<bool> done = false;
    std::thread interrupter([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(200) * i);
      while (!done) executor.interruptProgramUsingTerminationRequest(i % 2 == 0);
    });
    ASSERT_TRUE(executor.executeProgramAtPath("/usr/bin/yes", Arguments{}, completion.handler()));
    EXPECT_EQ(completion.wait(), Completion::Answer(true, i % 2 == 0 ? SIGTERM : SIGINT));
    done = true;
    interrupter.join();
    EXPECT_TRUE(delegate->record.eachStreamEndedOnce());
  }
}

TEST_F(TaskExecutorConcurrent, TheEndAndAnInterruptionMeet) {
  for (int i = 0; i < 40; ++i) {
    QELTaskExecutor executor(children_, Log(log_));
    executor.setDelegate(delegate_);
    Completion completion;
    ASSERT_TRUE(executor.executeProgramAtPath("/bin/true", Arguments{}, completion.handler()));
    std::thread interrupter([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(50) * i);
      if (executor.canInterruptProgram()) executor.interruptProgramUsingTerminationRequest(false);
    });
    const auto [interrupted, status] = completion.wait();
    interrupter.join();
    EXPECT_TRUE(status == 0 || (interrupted && status == SIGINT)) << status;
    if (interrupted) {
      EXPECT_TRUE(executor.hasInterrupted());
    }
  }
}

TEST_F(TaskExecutorConcurrent, TheExecutorMayGoInTheCompletionHandler) {
  for (int i = 0; i < 20; ++i) {
    auto log = std::make_unique<RecordingLog>();
    auto children = std::make_unique<host::PosixChildProcesses>();
    auto executor = std::make_unique<QELTaskExecutor>(*children, Log(*log));
    executor->setDelegate(delegate_);
    std::promise<void> gone;
    std::promise<void> started;
    ASSERT_TRUE(executor->executeProgramAtPath("/bin/true", Arguments{}, [&](bool, std::int32_t) {
      started.get_future().wait();
      executor.reset();
      gone.set_value();
    }));
    started.set_value();
    gone.get_future().wait();
    // Whatever the executor was given may go now as well.
    children.reset();
    log.reset();
  }
}

TEST_F(TaskExecutorConcurrent, TheExecutorMayGoBeforeTheEnd) {
  Completion completion;
  ASSERT_TRUE(executor_->executeProgramAtPath(kShell, script("sleep 0.2; echo x; exit 8"), completion.handler()));
  executor_.reset();
  EXPECT_EQ(completion.wait(), Completion::Answer(false, 8));
  EXPECT_EQ(delegate_->record.text(false), "x\n");
}

TEST_F(TaskExecutorConcurrent, TheDelegateMayGoDuringTheRun) {
  struct Counter final : QELTaskExecutorDelegate {
    explicit Counter(std::atomic<std::size_t>& count) : bytes(count) {}
    void receiveTaskOutput(DataView data, bool) override { bytes += data.size(); }
    std::atomic<std::size_t>& bytes;
  };
  struct NowhereChildren final : host::ChildProcesses {
    Result<std::unique_ptr<host::ChildPipes>> makePipes() override { return real.makePipes(); }
    Result<std::unique_ptr<host::ChildProcess>> launch(const std::string& path, const Arguments& arguments,
                                                       std::unique_ptr<host::ChildPipes> pipes) override {
      return real.launch(path, arguments, std::move(pipes));
    }
    void setSearchPath(const std::optional<std::string>&) override {}
    std::optional<std::string> searchPath() override { return std::nullopt; }
    std::unique_ptr<host::OpenFileCreationMask> openFileCreationMask() override { return real.openFileCreationMask(); }
    void writeToOwnStream(host::ChildStream, DataView bytes) noexcept override { rest += bytes.size(); }
    host::PosixChildProcesses real;
    std::atomic<std::size_t> rest = 0;
  };
  std::atomic<std::size_t> received = 0;
  NowhereChildren children;
  QELTaskExecutor executor(children, Log(log_));
  auto counter = std::make_shared<Counter>(received);
  executor.setDelegate(counter);
  Completion completion;
  ASSERT_TRUE(executor.executeProgramAtPath("/usr/bin/yes", Arguments{}, completion.handler()));
  while (received == 0) std::this_thread::sleep_for(1ms);
  counter.reset();
  while (children.rest == 0) std::this_thread::sleep_for(1ms);
  executor.interruptProgramUsingTerminationRequest(true);
  EXPECT_TRUE(completion.wait().first);
}

TEST_F(TaskExecutorConcurrent, OnlyOneOfManyStartsIsAccepted) {
  std::atomic<int> accepted = 0;
  Completion completion;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      if (executor_->executeProgramAtPath("/bin/cat", Arguments{}, completion.handler())) ++accepted;
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(accepted, 1);
  executor_->interruptProgramUsingTerminationRequest(true);
  EXPECT_EQ(completion.wait(), Completion::Answer(true, SIGTERM));
}

}  // namespace
}  // namespace vantrell::tests
