// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/ActiveOperations.h"

namespace vantrell {

void ActiveOperations::enter(const std::string& uuid, ConcreteOperationDescriptor descriptor) {
  std::optional<ConcreteOperationDescriptor> replaced;  // let go of after the lock
  const std::lock_guard lock(activeOperationsLock_);
  const auto [entry, isNew] = activeOperationsByUUID_.try_emplace(uuid);
  if (!isNew) replaced = std::move(entry->second);
  entry->second = std::move(descriptor);
}

std::shared_ptr<BlockOperation> ActiveOperations::operationWithUUID(const std::string& uuid) const {
  const std::lock_guard lock(activeOperationsLock_);
  const auto entry = activeOperationsByUUID_.find(uuid);
  return entry == activeOperationsByUUID_.end() ? nullptr : entry->second.concreteOperation;
}

void ActiveOperations::setResult(const std::string& uuid, ErrorOrNil result) {
  const std::lock_guard lock(activeOperationsLock_);
  const auto entry = activeOperationsByUUID_.find(uuid);
  if (entry != activeOperationsByUUID_.end()) entry->second.operationResult = std::move(result);
}

std::optional<std::shared_ptr<host::FeedbackConnection>> ActiveOperations::feedbackConnectionOf(
    const std::string& uuid) const {
  const std::lock_guard lock(activeOperationsLock_);
  const auto entry = activeOperationsByUUID_.find(uuid);
  if (entry == activeOperationsByUUID_.end()) return std::nullopt;
  return entry->second.feedbackConnection;
}

std::optional<ConcreteOperationDescriptor> ActiveOperations::take(const std::string& uuid) {
  const std::lock_guard lock(activeOperationsLock_);
  const auto entry = activeOperationsByUUID_.find(uuid);
  if (entry == activeOperationsByUUID_.end()) return std::nullopt;
  auto descriptor = std::move(entry->second);
  activeOperationsByUUID_.erase(entry);
  return descriptor;
}

}  // namespace vantrell
