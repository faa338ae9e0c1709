// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "process/ExecutorState.h"

#include <exception>
#include <utility>

#include <fmt/core.h>

#include "foundation/Exception.h"
#include "foundation/PosixCodes.h"

namespace vantrell {
namespace {

// The platform's name of what a read or write on a file handle raises.
constexpr char kFileHandleOperationException[] = "NSFileHandleOperationException";

/// What the platform's task raises.
Exception launchException(const Error& error) {
  switch (error.code()) {
    case posix::kNoEntry:
    case posix::kAccessDenied:
    case posix::kNotDirectory:
    case posix::kIsDirectory:
    case posix::kTooManyLinks:
    case posix::kNameTooLong:
      return {NSInvalidArgumentException, "launch path not accessible"};
    default:
      return {NSInvalidArgumentException, fmt::format("Couldn't posix_spawn: error {}", error.code())};
  }
}

}  // namespace

void ExecutorState::setDelegate(std::weak_ptr<QELTaskExecutorDelegate> delegate) {
  const std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

std::shared_ptr<QELTaskExecutorDelegate> ExecutorState::delegate() const {
  const std::lock_guard lock(mutex_);
  return delegate_.lock();
}

bool ExecutorState::beginRun() {
  const std::lock_guard lock(mutex_);
  return !std::exchange(isRunning_, true);
}

bool ExecutorState::isRunning() const {
  const std::lock_guard lock(mutex_);
  return isRunning_;
}

bool ExecutorState::hasInterrupted() const {
  const std::lock_guard lock(mutex_);
  return hasInterrupted_;
}

// Signals are sent under the lock, which takes no longer than any other use of it: the child can't go meanwhile.
void ExecutorState::interrupt(host::ChildSignal signal) {
  const std::lock_guard lock(mutex_);
  if (!isRunning_) return;
  hasInterrupted_ = true;
  if (child_) {
    child_->sendSignal(signal);
  } else {
    signalForLaunch_ = signal;
  }
}

std::unique_ptr<host::ChildProcess> ExecutorState::launch(const std::string& path,
                                                          const std::vector<std::string>& arguments,
                                                          std::unique_ptr<host::ChildPipes> pipes) {
  auto child = childProcesses_.launch(path, arguments, std::move(pipes));
  if (!child) throw launchException(child.error());
  return std::move(*child);
}

void ExecutorState::setChild(std::unique_ptr<host::ChildProcess> child) {
  const std::lock_guard lock(mutex_);
  child_ = std::move(child);
  if (const auto signal = std::exchange(signalForLaunch_, std::nullopt)) child_->sendSignal(*signal);
}

void ExecutorState::finishRun(const QELTaskExecutor::CompletionHandler& completionHandler) {
  bool interrupted = false;
  const auto status =
      child_->relayOutputUntilExit([this](host::ChildStream stream, DataView bytes) { receive(stream, bytes); },
                                   [&](std::int32_t exitStatus) {
                                     interrupted = hasInterrupted();
                                     if (interrupted) {
                                       log_.notice("Sent signal to external program.");
                                     } else {
                                       log_.notice("External program completed with return code {}.", exitStatus);
                                     }
                                   });
  {
    const std::lock_guard lock(mutex_);
    child_.reset();
    isRunning_ = false;
  }
  if (completionHandler) completionHandler(interrupted, status);
}

void ExecutorState::receive(host::ChildStream stream, DataView bytes) {
  try {
    passOn(stream, bytes);
  } catch (const Exception& exception) {
    if (exception.name() != kFileHandleOperationException) logException(exception.name(), exception.reason());
  } catch (const std::exception& exception) {
    logException(NSGenericException, exception.what());
  } catch (...) {
    logException(NSGenericException, "");
  }
}

void ExecutorState::passOn(host::ChildStream stream, DataView bytes) {
  if (const auto receiver = delegate()) {
    receiver->receiveTaskOutput(bytes, stream == host::ChildStream::Error);
  } else {
    childProcesses_.writeToOwnStream(stream, bytes);
  }
}

void ExecutorState::logException(const std::string& name, const std::string& reason) const {
  log_.error("Handled unexpected exception '{}' ({})!", name, reason);
}

}  // namespace vantrell
