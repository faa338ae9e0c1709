// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "process/QELTaskExecutor.h"

#include <future>
#include <thread>
#include <utility>

#include "foundation/PathUtilities.h"
#include "process/ExecutorState.h"

namespace vantrell {
namespace {

constexpr std::int32_t kNotStarted = -1;
constexpr std::uint16_t kWritableByOthers = 0022;

/// Tells the thread of a run, at the end of the scope and however that is left, whether there is a child to relay.
class RunSignal {
 public:
  explicit RunSignal(std::promise<bool> launched) : launched_(std::move(launched)) {}
  RunSignal(const RunSignal&) = delete;
  RunSignal& operator=(const RunSignal&) = delete;
  ~RunSignal() { launched_.set_value(isLaunched_); }

  void setLaunched() noexcept { isLaunched_ = true; }

 private:
  std::promise<bool> launched_;
  bool isLaunched_ = false;
};

bool isRootsAlone(const host::FileStatus& status) {
  return status.owner == 0 && status.group == 0 && (status.permissions & kWritableByOthers) == 0;
}

}  // namespace

QELTaskExecutor::QELTaskExecutor(host::ChildProcesses& childProcesses, Log log)
    : state_(std::make_shared<ExecutorState>(childProcesses, std::move(log))) {}

QELTaskExecutor::~QELTaskExecutor() = default;

void QELTaskExecutor::setDelegate(std::weak_ptr<QELTaskExecutorDelegate> delegate) {
  state_->setDelegate(std::move(delegate));
}
std::shared_ptr<QELTaskExecutorDelegate> QELTaskExecutor::delegate() const {
  return state_->delegate();
}

// A link that is left after resolving (in a loop, or in a relative path) leads to where nobody has looked.
bool QELTaskExecutor::hasExecutableSafePermissionsAtPath(const std::string& path, FileManager& fileManager,
                                                         host::FileSystem& fileSystem) {
  if (path.empty()) return false;
  const auto resolved = fileManager.stringByResolvingSymlinksInPath(path);
  const auto status = fileSystem.status(resolved, host::FollowLinks::No);
  if (!status || status->isDirectory() || status->isSymbolicLink() || !isRootsAlone(*status)) return false;
  const auto parent = fileSystem.status(stringByDeletingLastPathComponent(resolved), host::FollowLinks::No);
  return parent && parent->isDirectory() && isRootsAlone(*parent);
}

std::int32_t QELTaskExecutor::executeProgramAtPath(const std::string& path, const Arguments& arguments) {
  if (path.empty() || !arguments) return kNotStarted;
  auto pipes = state_->childProcesses().makePipes();
  if (!pipes) {
    state_->log().error("The operation '{}' cannot be executed because the system is running out of file handles.",
                        path);
    return kNotStarted;
  }
  if (const auto receiver = delegate()) receiver->taskWillExecute(*this);
  const auto child = state_->launch(path, *arguments, *std::move(pipes));
  if (const auto receiver = delegate()) receiver->taskDidLaunch(*this);
  return child->relayOutputUntilExit(
      [state = state_](host::ChildStream stream, DataView bytes) { state->receive(stream, bytes); });
}

bool QELTaskExecutor::executeProgramAtPath(const std::string& path, const Arguments& arguments,
                                           CompletionHandler completionHandler) {
  if (path.empty() || !arguments || !state_->beginRun()) {
    state_->log().error("Execution of the program '{}' was rejected due to invalid arguments or status.", path);
    return false;
  }
  auto pipes = state_->childProcesses().makePipes();
  if (!pipes) {
    state_->log().error("The program '{}' cannot be executed because the system is running out of file handles.", path);
    return false;
  }
  if (const auto receiver = delegate()) receiver->taskWillExecute(*this);
  state_->log().notice("Running external program.");

  // The thread comes first: without one nothing may be launched. It waits until the delegate has been told.
  std::promise<bool> launched;
  std::thread([state = state_, isLaunched = launched.get_future(), handler = std::move(completionHandler)]() mutable {
    if (isLaunched.get()) state->finishRun(handler);
  }).detach();
  RunSignal signal(std::move(launched));
  state_->setChild(state_->launch(path, *arguments, *std::move(pipes)));
  signal.setLaunched();
  if (const auto receiver = delegate()) receiver->taskDidLaunch(*this);
  return true;
}

bool QELTaskExecutor::canInterruptProgram() const {
  return state_->isRunning();
}

void QELTaskExecutor::interruptProgramUsingTerminationRequest(bool useTerminationRequest) {
  state_->interrupt(useTerminationRequest ? host::ChildSignal::Terminate : host::ChildSignal::Interrupt);
}

bool QELTaskExecutor::hasInterrupted() const {
  return state_->hasInterrupted();
}

}  // namespace vantrell
