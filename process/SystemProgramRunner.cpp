// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "process/SystemProgramRunner.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "catalogue/ErrorModel.h"
#include "catalogue/FeedbackMessages.h"
#include "foundation/PosixCodes.h"
#include "process/QELTaskExecutor.h"
#include "process/TrustedUtilities.h"

namespace vantrell {

namespace {

constexpr std::size_t kLeadingArguments = 2;  // application path and utility name

/// Numbers each piece of output and sends it on. Pieces are counted, also where nobody listens.
class OutputRelay final : public QELTaskExecutorDelegate {
 public:
  explicit OutputRelay(QELPrivilegedOperationFeedbackProtocol* connection) : outputConnection_(connection) {}

  void receiveTaskOutput(DataView data, bool isError) override {
    const auto number = outputSequenceNumber_++;
    if (outputConnection_) outputConnection_->processPrivilegedOperationFeedback(outputMessage(data, isError, number));
  }

 private:
  QELPrivilegedOperationFeedbackProtocol* outputConnection_;
  std::uint64_t outputSequenceNumber_ = 0;
};

/// The outcome of a run, handed from its thread to the one that waits for it.
class Outcome {
 public:
  void set(ErrorOrNil error) {
    const std::lock_guard lock(mutex_);
    error_ = std::move(error);
    isThere_ = true;
    changed_.notify_all();
  }
  ErrorOrNil wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isThere_; });
    return error_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isThere_ = false;
  ErrorOrNil error_;
};

/// Interrupts the program when the operation is cancelled, for as long as this lives.
class InterruptionOnCancel {
 public:
  InterruptionOnCancel(BlockOperation* operation, QELTaskExecutor& executor)
      : operation_(operation), executor_(executor) {
    if (operation_) token_ = operation_->addCancellationObserver([this] { interrupt(); });
  }
  InterruptionOnCancel(const InterruptionOnCancel&) = delete;
  InterruptionOnCancel& operator=(const InterruptionOnCancel&) = delete;
  ~InterruptionOnCancel() {
    if (operation_) operation_->removeCancellationObserver(token_);
  }

  /// For a cancellation that came before there was a program.
  void catchUp() {
    if (operation_ && operation_->isCancelled() && !executor_.hasInterrupted()) interrupt();
  }

 private:
  void interrupt() {
    if (executor_.canInterruptProgram()) executor_.interruptProgramUsingTerminationRequest(false);
  }

  BlockOperation* operation_;
  QELTaskExecutor& executor_;
  BlockOperation::ObserverToken token_ = 0;
};

ErrorOrNil errorForEnd(bool interrupted, std::int32_t status) {
  if (interrupted) return Error::posix(posix::kCanceled);
  if (status == 0) return std::nullopt;
  return privilegedOperationError(
      3, "It was not possible to complete the operation successfully.",
      "The operating system could not perform the requested operation. It returned error code $1$.",
      {std::to_string(status)});
}

}  // namespace

ErrorOrNil SystemProgramRunner::executeUtility(const Array& arguments,
                                               QELPrivilegedOperationFeedbackProtocol* feedback) {
  std::vector<std::string> texts;
  for (const auto& argument : arguments) {
    const auto* text = argument.asString();
    if (!text) return Error::posix(posix::kInvalidArgument);
    texts.push_back(*text);
  }
  if (texts.size() < kLeadingArguments) return Error::posix(posix::kInvalidArgument);
  const auto utility = trustedUtility(texts[0], texts[1]);
  if (!utility.path) return Error::posix(posix::kInvalidArgument);

  bool isDirectory = false;
  if (!fileManager_.fileExistsAtPath(*utility.path, &isDirectory) || isDirectory) {
    return privilegedOperationError(1, "A required component of macOS is missing in your system installation.",
                                    "Please verify that the UNIX program $1$ is present at its standard path '$2$'.",
                                    {texts[1], *utility.path}, *utility.path);
  }
  texts.erase(texts.begin(), texts.begin() + kLeadingArguments);
  return executeTrusted(!utility.isExternal, *utility.path, texts, utility.needsSafePathEnvironment, feedback);
}

ErrorOrNil SystemProgramRunner::executeTrusted(bool trusted, const std::string& systemProgramAtPath,
                                               const std::vector<std::string>& arguments, bool safePathEnvironment,
                                               QELPrivilegedOperationFeedbackProtocol* forwardingOutputToConnection) {
  if (!trusted &&
      !QELTaskExecutor::hasExecutableSafePermissionsAtPath(systemProgramAtPath, fileManager_, fileSystem_)) {
    return privilegedOperationError(
        2,
        "Permission settings for a system utility at the Unix level are unsafe. The command cannot be executed for "
        "security reasons.",
        "Please verify that the executable '$1$' and its parent folder are owned by the operating system and cannot be "
        "modified by any user.",
        {systemProgramAtPath}, systemProgramAtPath);
  }
  childProcesses_.setSearchPath(safePathEnvironment ? std::optional<std::string>(kSafeSearchPath) : std::nullopt);
  return runAndWait(systemProgramAtPath, arguments, forwardingOutputToConnection);
}

ErrorOrNil SystemProgramRunner::runAndWait(const std::string& path, const std::vector<std::string>& arguments,
                                           QELPrivilegedOperationFeedbackProtocol* feedback) {
  const auto relay = std::make_shared<OutputRelay>(feedback);
  const auto outcome = std::make_shared<Outcome>();
  QELTaskExecutor executor(childProcesses_, log_);
  executor.setDelegate(relay);
  InterruptionOnCancel interruption(operation_, executor);
  const bool isStarted = executor.executeProgramAtPath(
      path, arguments,
      [outcome](bool interrupted, std::int32_t status) { outcome->set(errorForEnd(interrupted, status)); });
  // The reason, which stands in the log, can only be a lack of descriptors; waiting would be for ever.
  if (!isStarted) return Error::posix(posix::kTooManyOpenFiles);
  interruption.catchUp();
  return outcome->wait();
}

}  // namespace vantrell
