// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/OperationQueue.h"
#include "foundation/UniqueFunction.h"
#include "foundation/Value.h"
#include "host/Transport.h"

namespace vantrell {

class QELPrivilegedTool;

/// What carries an operation out: its arguments and where feedback goes (null: nowhere).
using OperationMethod =
    UniqueFunction<ErrorOrNil(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback)>;

/// The base of what carries out the operations of a set. One instance serves one request.
class QELPrivilegedOperationSetImplementor {
 public:
  QELPrivilegedOperationSetImplementor(const QELPrivilegedToolOperationSet& operationSet,
                                       QELPrivilegedTool& privilegedTool)
      : operationSet_(operationSet), privilegedTool_(privilegedTool) {}
  QELPrivilegedOperationSetImplementor(const QELPrivilegedOperationSetImplementor&) = delete;
  QELPrivilegedOperationSetImplementor& operator=(const QELPrivilegedOperationSetImplementor&) = delete;
  virtual ~QELPrivilegedOperationSetImplementor() = default;

  /// Null when either argument is null.
  template <class Implementor>
  static std::unique_ptr<QELPrivilegedOperationSetImplementor> initToImplementOperationSet(
      const QELPrivilegedToolOperationSet* operationSet, QELPrivilegedTool* forTool) {
    if (!operationSet || !forTool) return nullptr;
    return std::make_unique<Implementor>(*operationSet, *forTool);
  }

  const QELPrivilegedToolOperationSet& operationSet() const noexcept { return operationSet_; }
  QELPrivilegedTool& privilegedTool() const noexcept { return privilegedTool_; }

  /// The operation that runs the current request, which owns this object; null before it was set.
  BlockOperation* concreteOperation() const noexcept { return concreteOperation_; }
  void setConcreteOperation(BlockOperation* operation) noexcept { concreteOperation_ = operation; }
  bool isCancelled() const noexcept { return concreteOperation_ && concreteOperation_->isCancelled(); }

  const Data& incomingOutputData() const noexcept { return incomingOutputData_; }
  const Data& incomingErrorData() const noexcept { return incomingErrorData_; }

  /// Takes a chunk of a child program's output; does nothing unless both arguments are there. This one collects it.
  virtual void receiveTaskOutput(std::optional<DataView> data, std::optional<bool> isError);

  /// The method that answers to a selector, bound to this object; empty when there is none.
  virtual OperationMethod methodForSelector(std::string_view selector) = 0;

 private:
  const QELPrivilegedToolOperationSet& operationSet_;
  QELPrivilegedTool& privilegedTool_;
  BlockOperation* concreteOperation_ = nullptr;
  Data incomingOutputData_;
  Data incomingErrorData_;
};

}  // namespace vantrell
