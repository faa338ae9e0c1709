// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/OperationQueue.h"
#include "foundation/PosixCodes.h"
#include "host/Transport.h"

namespace vantrell {

/// One operation that was enqueued and has not been answered.
struct ConcreteOperationDescriptor {
  Data token;
  std::shared_ptr<BlockOperation> concreteOperation;
  std::shared_ptr<host::FeedbackConnection> feedbackConnection;  // null without feedback
  ErrorOrNil operationResult = Error::posix(posix::kCanceled);   // what holds if the body never runs
  Reply<ErrorOrNil> operationReply;
};

/// The operations in flight, by the text of their UUID. Safe from any thread; no call keeps the lock beyond the
/// look-up.
class ActiveOperations {
 public:
  /// Enters an operation. One that is there under the same UUID is replaced; it will be answered no more.
  void enter(const std::string& uuid, ConcreteOperationDescriptor descriptor);

  /// Null when there is none.
  std::shared_ptr<BlockOperation> operationWithUUID(const std::string& uuid) const;

  void setResult(const std::string& uuid, ErrorOrNil result);

  /// Whether there is such an operation, and its feedback connection (which may be null).
  std::optional<std::shared_ptr<host::FeedbackConnection>> feedbackConnectionOf(const std::string& uuid) const;

  /// Removes and hands out.
  std::optional<ConcreteOperationDescriptor> take(const std::string& uuid);

 private:
  std::map<std::string, ConcreteOperationDescriptor> activeOperationsByUUID_;
  mutable std::mutex activeOperationsLock_;
};

}  // namespace vantrell
