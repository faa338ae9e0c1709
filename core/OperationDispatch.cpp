// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// From a request to its answer: checks, feedback connection, choice of the method, the queued operation, its
// completion, and cancellation.

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "catalogue/ErrorModel.h"
#include "catalogue/FeedbackMessages.h"
#include "core/ArgumentValidation.h"
#include "core/QELPrivilegedTool.h"
#include "foundation/Exception.h"

namespace vantrell {

namespace {

/// So that the final message can leave before the connection closes.
constexpr unsigned kPauseBeforeClosingMilliseconds = 250;

/// Operation codes that the service carries out itself.
constexpr std::uint64_t kCheckSecurityPolicy = 9994;
constexpr std::uint64_t kPerformUninstall = 9995;
constexpr std::uint64_t kDeleteFiles = 9996;
constexpr std::uint64_t kDiscardAuthorization = 9997;
constexpr std::uint64_t kNop = 9998;

}  // namespace

/// What will carry an operation out. The method refers to the implementor, if there is one, and both live as long as
/// the queued operation.
struct QELPrivilegedTool::Target {
  std::unique_ptr<QELPrivilegedOperationSetImplementor> implementor;
  OperationMethod method;
};

QELPrivilegedToolOperationSet::CheckResult QELPrivilegedTool::checkToken(DataView token, std::uint64_t code,
                                                                         const std::optional<Array>& arguments) const {
  return TokenCheck(operationSet_, clients_, *host_.cryptography).checkToken(token, code, arguments, Date::now());
}

Result<Uuid> QELPrivilegedTool::checkRequest(const QELPrivilegedOperation* operation, std::uint64_t code,
                                             DataView token, const std::optional<Array>& arguments) const {
  if (!operation || !arguments) {
    sysLog_.error("Received invalid operation with code {} or arguments are missing.", code);
    return failure(privileged_tool_error::invalidOperation(code));
  }
  sysLog_.info("About to perform privileged operation '{}' with {} arguments.", operation->identifier(),
               arguments->size());
  const auto check = checkToken(token, code, arguments);
  if (check.code != 0) {
    sysLog_.error(
        "Authorization problem code {} detected. There may be a trust failure for the application requesting the "
        "privileged operation. Refusing connection, operation rejected.",
        check.code);
    return failure(privileged_tool_error::authorizationProblem(check.code));
  }
  if (auto refusal = validateArguments(*operation, *arguments, sysLog_)) return failure(std::move(*refusal));
  return *check.uuid;
}

std::shared_ptr<host::FeedbackConnection> QELPrivilegedTool::openFeedbackConnection(
    const QELPrivilegedOperation& operation, std::unique_ptr<host::Endpoint> endpoint) const {
  if (!endpoint || !operation.isSupportingFeedback()) return nullptr;
  sysLog_.info("About to configure feedback protocol.");
  auto connection = host_.transport->connectionToEndpoint(std::move(endpoint));
  if (!connection) {
    sysLog_.error("The feedback connection could not be opened (error {}).", connection.error().code());
    return nullptr;
  }
  (*connection)->resume();
  const bool isProgress = operation.isSupportingProgressFeedback();
  sysLog_.info("About to open return connection for feedback (progress option {}).", isProgress ? 1 : 0);
  (*connection)->processPrivilegedOperationFeedback(isProgress ? progressMessage(0.0) : openingOutputMessage());
  return std::move(*connection);
}

QELPrivilegedTool::Target QELPrivilegedTool::chooseTarget(std::uint64_t code, const QELPrivilegedOperation& operation) {
  const auto ownMethod = [this](ErrorOrNil (QELPrivilegedTool::*method)(const Array&)) -> Target {
    return {nullptr, [this, method](const Array& arguments, auto*) { return (this->*method)(arguments); }};
  };
  switch (code) {
    case kCheckSecurityPolicy:
      return ownMethod(&QELPrivilegedTool::checkSecurityPolicyWithArguments);
    case kPerformUninstall:
      return ownMethod(&QELPrivilegedTool::performUninstallWithArguments);
    case kDeleteFiles:
      return ownMethod(&QELPrivilegedTool::deleteFileSystemObjectsWithPaths);
    case kNop:
    case kDiscardAuthorization:
      return ownMethod(&QELPrivilegedTool::doNothingWithArguments);
    default:
      break;
  }
  Target target{makeImplementor(), {}};
  // The option says what the operation supports, not whether a connection was opened.
  const auto selector =
      operationSet_.selectorForExecutionOfPrivilegedOperationWithCode(code, operation.isSupportingFeedback());
  if (target.implementor && selector) target.method = target.implementor->methodForSelector(*selector);
  return target;
}

void QELPrivilegedTool::performPrivilegedOperation(std::uint64_t code, Data token,
                                                   std::unique_ptr<host::Endpoint> feedbackEndpoint,
                                                   std::optional<Array> arguments, Reply<ErrorOrNil> reply) {
  auto operation = operationSet_.operationWithCode(code);
  const auto uuid = checkRequest(operation.get(), code, token, arguments);
  if (!uuid) {
    reply(uuid.error());
    return;
  }
  auto feedback = openFeedbackConnection(*operation, std::move(feedbackEndpoint));
  auto target = chooseTarget(code, *operation);
  if (!target.method) {
    sysLog_.error("Privileged operation {} could not be executed because no implementation found.",
                  operation->identifier());
    reply(privileged_tool_error::notImplemented(operation->identifier()));
    return;
  }

  const auto uuidText = uuid->string();
  auto* const implementor = target.implementor.get();
  auto concreteOperation = std::make_shared<BlockOperation>(
      [this, operation, target = std::move(target), arguments = std::move(*arguments), feedback, uuidText]() mutable {
        runOperation(*operation, target.method, arguments, feedback.get(), uuidText);
      });
  concreteOperation->setCompletionBlock([this, uuidText] { processCompletionOfOperationWithUUID(uuidText); });
  if (implementor) implementor->setConcreteOperation(concreteOperation.get());

  activeOperations_.enter(uuidText, {.token = std::move(token),
                                     .concreteOperation = concreteOperation,
                                     .feedbackConnection = std::move(feedback),
                                     .operationReply = std::move(reply)});
  sysLog_.info("Operation {} enqueued for execution, registered as {}.", operation->identifier(), uuidText);
  operationQueue_->addOperation(std::move(concreteOperation));
}

void QELPrivilegedTool::runOperation(const QELPrivilegedOperation& operation, OperationMethod& method,
                                     const Array& arguments, host::FeedbackConnection* feedback,
                                     const std::string& uuid) {
  sysLog_.info("Operation {} is about to be executed with feedback option {}.", operation.identifier(),
               feedback ? "enabled" : "disabled");
  auto result = callMethod(operation, method, arguments, feedback);
  sysLog_.info("Operation {} was completed with return code {}.", operation.identifier(), result ? result->code() : 0);
  activeOperations_.setResult(uuid, std::move(result));
}

ErrorOrNil QELPrivilegedTool::callMethod(const QELPrivilegedOperation& operation, OperationMethod& method,
                                         const Array& arguments, host::FeedbackConnection* feedback) const {
  const auto raised = [&](std::string name, std::string reason) -> ErrorOrNil {
    if (name.empty()) name = "<nil>";
    if (reason.empty()) reason = "<nil>";
    sysLog_.error("The exception '{}' occurred while trying to execute the privileged operation: {}", name, reason);
    return privileged_tool_error::unhandledException(operation.identifier(), name, reason);
  };
  try {
    return method(arguments, feedback);
  } catch (const Exception& exception) {
    return raised(exception.name(), exception.reason());
  } catch (const std::bad_alloc& exception) {
    return raised(NSMallocException, exception.what());
  } catch (const std::out_of_range& exception) {
    return raised(NSRangeException, exception.what());
  } catch (const std::invalid_argument& exception) {
    return raised(NSInvalidArgumentException, exception.what());
  } catch (const std::exception& exception) {
    return raised(NSGenericException, exception.what());
  }
}

void QELPrivilegedTool::processCompletionOfOperationWithUUID(const std::string& uuid) {
  const auto feedback = activeOperations_.feedbackConnectionOf(uuid);
  if (!feedback) {
    sysLog_.error("Privileged operation with UUID {} completed but is no longer registered as being active.", uuid);
    return;
  }
  if (*feedback) {
    sysLog_.info("Sending final feedback message.");
    (*feedback)->processPrivilegedOperationFeedback(finalMessage());
    host_.currentProcess->sleepForMilliseconds(kPauseBeforeClosingMilliseconds);
    sysLog_.info("Suspending feedback connection {}.", static_cast<const void*>(feedback->get()));
    (*feedback)->suspend();
    (*feedback)->invalidate();
  }
  // Another request with the same token may have taken the entry's place or removed it during the pause.
  auto descriptor = activeOperations_.take(uuid);
  if (!descriptor) return;
  descriptor->operationReply(std::move(descriptor->operationResult));
  sysLog_.info("Results of privileged operation {} have been sent.", uuid);
}

void QELPrivilegedTool::cancelPrivilegedOperation(std::uint64_t code, Data previouslyAuthorizedWithToken,
                                                  std::optional<Array> arguments) {
  const auto check = checkToken(previouslyAuthorizedWithToken, code, arguments);
  if (check.code != 0 || !check.uuid) return;
  if (const auto operation = activeOperations_.operationWithUUID(check.uuid->string())) operation->cancel();
}

}  // namespace vantrell
