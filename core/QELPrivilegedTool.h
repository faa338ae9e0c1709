// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "core/ActiveOperations.h"
#include "core/ClassRegistry.h"
#include "core/ClientRegistry.h"
#include "core/QELPrivilegedOperationSetImplementor.h"
#include "core/TokenCheck.h"
#include "foundation/Log.h"
#include "foundation/OperationQueue.h"
#include "host/Host.h"
#include "host/Transport.h"
#include "platform/NSProcessInfoQELAdditions.h"
#include "system/SmcSharedController.h"

namespace vantrell {

/// The service: takes in connections, keeps the clients' keys, checks requests and runs them.
///
/// Threads: the protocol's functions are called on the transport's threads, several at once; operations and their
/// completions run on the operation queue's workers. The locks of the client registry and of the running operations are
/// never held together, nor while an operation runs, feedback is sent or a reply is called.
class QELPrivilegedTool final : public QELPrivilegedToolProtocol, public host::ListenerDelegate {
 public:
  static constexpr char kClassName[] = "QELPrivilegedTool";

  /// Null when the operation set or the log is missing, or when the set's implementor class is not to be had (which is
  /// logged). All arguments must outlive the service.
  static std::unique_ptr<QELPrivilegedTool> initForOperationSet(const QELPrivilegedToolOperationSet* operationSet,
                                                                const Log* usingSubsystemLog, host::Host& host,
                                                                const ClassRegistry& classes);
  QELPrivilegedTool(const QELPrivilegedTool&) = delete;
  QELPrivilegedTool& operator=(const QELPrivilegedTool&) = delete;
  /// Takes in nothing more and waits for the operations under way.
  ~QELPrivilegedTool() override;

  /// Takes in clients and runs the main loop; returns only the error that kept it from listening.
  ErrorOrNil run();
  /// `run` without the main loop.
  ErrorOrNil startListening();

  /// Ends the process with status 0, whatever is under way.
  void terminatePrivilegedHelper();

  void setKeyPrefix(std::optional<Data> keyPrefix) { keyPrefix_ = std::move(keyPrefix); }
  const std::optional<Data>& keyPrefix() const noexcept { return keyPrefix_; }
  const QELPrivilegedToolOperationSet& operationSet() const noexcept { return operationSet_; }
  const Log& sysLog() const noexcept { return sysLog_; }
  host::Host& host() const noexcept { return host_; }
  ClientRegistry& clients() noexcept { return clients_; }
  NSProcessInfoQELAdditions& processInfo() noexcept { return processInfo_; }
  SmcSharedController& smcController() noexcept { return smcController_; }

  // host::ListenerDelegate
  bool listenerShouldAcceptNewConnection(host::Listener& listener, host::Connection& newConnection) override;

  // QELPrivilegedToolProtocol
  void getVersionStringUsingReply(Reply<std::string> reply) override;
  void registerClientWithPID(std::int32_t pid, Reply<Data> saltReply) override;
  void unregisterClientWithPID(std::int32_t pid) override;
  void performPrivilegedOperation(std::uint64_t code, Data token, std::unique_ptr<host::Endpoint> feedbackEndpoint,
                                  std::optional<Array> arguments, Reply<ErrorOrNil> reply) override;
  void cancelPrivilegedOperation(std::uint64_t code, Data previouslyAuthorizedWithToken,
                                 std::optional<Array> arguments) override;

  // Built-in operations
  ErrorOrNil doNothingWithArguments(const Array& arguments);
  /// Removes each path that is a text; the last failure is the result.
  ErrorOrNil deleteFileSystemObjectsWithPaths(const Array& paths);
  /// Arguments: the requester's process identifier and the helper's two installed files. Ends the process, unless it is
  /// refused.
  ErrorOrNil performUninstallWithArguments(const Array& arguments);
  /// Whether the operating system lets this process read what its privacy protection guards: an error with code 0 and
  /// the answer, 2 yes, 1 no, 0 not known.
  ErrorOrNil checkSecurityPolicyWithArguments(const Array& arguments);

 private:
  struct Target;

  QELPrivilegedTool(const QELPrivilegedToolOperationSet& operationSet, const Log& sysLog, host::Host& host,
                    const ClassRegistry& classes);

  std::unique_ptr<QELPrivilegedOperationSetImplementor> makeImplementor();
  void prepareToListen();
  ErrorOrNil enforceRemovalOfFileSystemObjectAtPath(const std::string& path);
  ErrorOrNil refuseUninstallForOtherClients(std::int32_t requester);
  void removeFromServiceManagement();
  unsigned securityPolicyCheckResult();

  QELPrivilegedToolOperationSet::CheckResult checkToken(DataView token, std::uint64_t code,
                                                        const std::optional<Array>& arguments) const;
  /// The operation's UUID, or the refusal.
  Result<Uuid> checkRequest(const QELPrivilegedOperation* operation, std::uint64_t code, DataView token,
                            const std::optional<Array>& arguments) const;
  std::shared_ptr<host::FeedbackConnection> openFeedbackConnection(const QELPrivilegedOperation& operation,
                                                                   std::unique_ptr<host::Endpoint> endpoint) const;
  Target chooseTarget(std::uint64_t code, const QELPrivilegedOperation& operation);
  void runOperation(const QELPrivilegedOperation& operation, OperationMethod& method, const Array& arguments,
                    host::FeedbackConnection* feedback, const std::string& uuid);
  ErrorOrNil callMethod(const QELPrivilegedOperation& operation, OperationMethod& method, const Array& arguments,
                        host::FeedbackConnection* feedback) const;
  void processCompletionOfOperationWithUUID(const std::string& uuid);

  const Log& sysLog_;
  const QELPrivilegedToolOperationSet& operationSet_;
  host::Host& host_;
  const ClassRegistry& classes_;
  NSProcessInfoQELAdditions processInfo_;
  SmcSharedController smcController_;
  ClientRegistry clients_;
  std::optional<Data> keyPrefix_;
  ActiveOperations activeOperations_;
  std::unique_ptr<OperationQueue> operationQueue_;
  ErrorOrNil listenerError_;
  std::unique_ptr<host::Listener> listener_;  // goes first: its threads use everything above, and itself to the end
};

}  // namespace vantrell
