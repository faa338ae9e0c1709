// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "host/FileSystem.h"
#include "host/Transport.h"
#include "treewalk/WalkedObject.h"

namespace vantrell {

/// What a search tells of the objects that a walk hands out: the object at `prefix` (see
/// QELDirectoryEnumerator::basePrefix) and its relative path. Where that path is not faithful it is what counts, as
/// clients will act on it: what lies there, mostly nothing, is told of in the object's place.
class ShownObjects {
 public:
  /// `prefix` must outlive this.
  ShownObjects(host::FileSystem& fileSystem, std::string_view prefix) : fileSystem_(fileSystem), prefix_(prefix) {}

  std::string pathOf(const WalkedObject& object) const;
  Result<host::FileStatus> statusOf(const WalkedObject& object) const;
  /// Appends the object's record unless it has gone.
  void addRecord(Array& records, const WalkedObject& object) const;

 private:
  host::FileSystem& fileSystem_;
  std::string_view prefix_;
};

/// Appends the information record (fileops/FileObjectInfo.h) of the object at `path`, unless its status can't be read.
void addFileObjectRecord(Array& records, const std::string& path, const Result<host::FileStatus>& status);

/// {"ProgressFraction": fraction, "FileObjectInfo": records}
Dictionary resultsMessage(double fraction, Array records);

/// The way of most searches to their client: hits in batches of twenty, word that the search goes on and a look for
/// cancellation with every hundredth object (the first included). Since the walk's length is not known in advance the
/// fraction is 0 to the end.
class SearchResults {
 public:
  static constexpr std::size_t kBatchSize = 20;
  static constexpr std::size_t kObjectsPerLook = 100;
  using IsCancelled = std::function<bool()>;

  /// `feedback` and what `isCancelled` holds may be nothing; both must outlive this.
  SearchResults(QELPrivilegedOperationFeedbackProtocol* feedback, const IsCancelled& isCancelled);

  /// For hits; they are sent by the two calls below.
  Array& records() noexcept { return records_; }

  /// After every object, hit or not. POSIX error 89 when the operation was cancelled: what was not sent is not to be.
  ErrorOrNil objectDone();
  /// Sends what is left with the fraction 1.
  void finish();

 private:
  void send(Dictionary message);

  QELPrivilegedOperationFeedbackProtocol* feedback_;
  const IsCancelled& isCancelled_;
  Array records_;
  std::size_t index_ = 0;
};

}  // namespace vantrell
