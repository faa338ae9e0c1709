// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/SearchRecords.h"

#include <utility>
#include <vector>

#include "catalogue/FeedbackMessages.h"
#include "fileops/FileObjectInfo.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

std::string ShownObjects::pathOf(const WalkedObject& object) const {
  std::string path;
  path.reserve(prefix_.size() + object.relativePath().size());
  path += prefix_;
  path += object.relativePath();
  return path;
}

Result<host::FileStatus> ShownObjects::statusOf(const WalkedObject& object) const {
  return object.isPathFaithful() ? object.status() : fileSystem_.status(pathOf(object), host::FollowLinks::No);
}

void ShownObjects::addRecord(Array& records, const WalkedObject& object) const {
  addFileObjectRecord(records, pathOf(object), statusOf(object));
}

void addFileObjectRecord(Array& records, const std::string& path, const Result<host::FileStatus>& status) {
  if (status) records.emplace_back(fileObjectInfo(path, *status));
}

Dictionary resultsMessage(double fraction, Array records) {
  std::vector<DictionaryEntry> entries;
  entries.reserve(2);
  entries.push_back({"FileObjectInfo", std::move(records)});
  entries.push_back({feedback_key::kProgressFraction, fraction});
  return Dictionary::fromEntries(std::move(entries));
}

SearchResults::SearchResults(QELPrivilegedOperationFeedbackProtocol* feedback, const IsCancelled& isCancelled)
    : feedback_(feedback), isCancelled_(isCancelled) {
  records_.reserve(kBatchSize);
}

ErrorOrNil SearchResults::objectDone() {
  if (records_.size() >= kBatchSize) {
    send(resultsMessage(0.0, std::exchange(records_, {})));
    records_.reserve(kBatchSize);
  }
  if (index_++ % kObjectsPerLook != 0) return std::nullopt;
  send(progressMessage(0.0));
  if (isCancelled_ && isCancelled_()) return Error::posix(posix::kCanceled);
  return std::nullopt;
}

void SearchResults::finish() {
  send(resultsMessage(1.0, std::exchange(records_, {})));
}

void SearchResults::send(Dictionary message) {
  if (feedback_) feedback_->processPrivilegedOperationFeedback(message);
}

}  // namespace vantrell
