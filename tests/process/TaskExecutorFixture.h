// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/posix/PosixChildProcesses.h"
#include "process/QELTaskExecutor.h"
#include "tests/support/ChildScripts.h"
#include "tests/support/RecordingLog.h"

namespace vantrell::tests {

/// Keeps what it is told, and does what the test wants besides.
class RecordingDelegate final : public QELTaskExecutorDelegate {
 public:
  void taskWillExecute(QELTaskExecutor& executor) override {
    calls.emplace_back("will");
    if (onWillExecute) onWillExecute(executor);
  }
  void taskDidLaunch(QELTaskExecutor& executor) override {
    calls.emplace_back("did");
    if (onDidLaunch) onDidLaunch(executor);
  }
  void receiveTaskOutput(DataView bytes, bool isError) override {
    calls.emplace_back(bytes.empty() ? isError ? "end of error" : "end of output" : isError ? "error" : "output");
    record.add(bytes, isError);
    if (onOutput) onOutput(bytes, isError);
  }

  std::vector<std::string> calls;  // by one thread at a time
  OutputRecord record;
  std::function<void(QELTaskExecutor&)> onWillExecute;
  std::function<void(QELTaskExecutor&)> onDidLaunch;
  std::function<void(DataView, bool)> onOutput;
};

/// What a completion handler was called with, to be waited for.
class Completion {
 public:
  using Answer = std::pair<bool, std::int32_t>;  // interrupted, status

  QELTaskExecutor::CompletionHandler handler() {
    return [promise = promise_](bool interrupted, std::int32_t status) { promise->set_value({interrupted, status}); };
  }
  bool hasCome() const { return answer_.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }
  Answer wait() {
    if (answer_.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
      ADD_FAILURE() << "no completion";
      return {};
    }
    return answer_.get();
  }

 private:
  std::shared_ptr<std::promise<Answer>> promise_ = std::make_shared<std::promise<Answer>>();
  std::shared_future<Answer> answer_ = promise_->get_future();
};

class TaskExecutorFixture : public testing::Test {
 protected:
  TaskExecutorFixture() { executor_->setDelegate(delegate_); }

  /// Waits until the program has written that text.
  void waitForOutput(const std::string& text) {
    for (int i = 0; i < 20000; ++i) {
      if (delegate_->record.text(false).find(text) != std::string::npos) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ADD_FAILURE() << "no output: " << text;
  }

  RecordingLog log_;
  host::PosixChildProcesses children_;
  std::shared_ptr<RecordingDelegate> delegate_ = std::make_shared<RecordingDelegate>();
  std::unique_ptr<QELTaskExecutor> executor_ = std::make_unique<QELTaskExecutor>(children_, Log(log_));
};

}  // namespace vantrell::tests
