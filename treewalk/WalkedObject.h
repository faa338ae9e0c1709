// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "foundation/Result.h"
#include "host/DirectoryHandle.h"

namespace vantrell {

/// Why a folder that should have been entered was not.
enum class EntryRefusal : std::uint8_t {
  None,
  PathTooLong,   // the relative path limit
  TooDeep,       // the limit of open levels
  Inaccessible,  // it could not be opened
};

/// One object as a walk hands it out. Texts and references hold until the walk's next step.
class WalkedObject {
 public:
  /// Relative to the walk's base: what clients are shown, never for system calls.
  std::string_view relativePath() const noexcept { return relativePath_; }
  /// Followed by a zero byte.
  std::string_view name() const noexcept { return name_; }

  /// The folder that holds the object; also while the walk has entered the object, or left the folder.
  host::DirectoryHandle& folder() const noexcept { return *folder_; }

  /// The same, for whoever has to do with the object for longer.
  const std::shared_ptr<host::DirectoryHandle>& sharedFolder() const noexcept { return folder_; }

  /// What the folder says of it; Unknown where it says nothing.
  host::FileType listedType() const noexcept { return listedType_; }

  /// Of the object itself, a link included; read once, when it is first asked for (by the walk, perhaps).
  const Result<host::FileStatus>& status() const {
    if (!status_) status_.emplace(folder_->statusOf(name_.data(), host::FollowLinks::No));
    return *status_;
  }

  /// The walk goes on inside this folder.
  bool isEntered() const noexcept { return isEntered_; }
  EntryRefusal refusal() const noexcept { return refusal_; }

  /// False below a folder whose name the relative path lacks (see QELDirectoryEnumerator): the path then names another
  /// object, or none.
  bool isPathFaithful() const noexcept { return isPathFaithful_; }

 private:
  friend class QELDirectoryEnumerator;
  friend class ReadAheadEnumerator;
  friend class ReadAheadBlock;

  std::string_view relativePath_;
  std::string_view name_;
  std::shared_ptr<host::DirectoryHandle> folder_;
  host::FileType listedType_ = host::FileType::Unknown;
  mutable std::optional<Result<host::FileStatus>> status_;
  bool isEntered_ = false;
  bool isPathFaithful_ = true;
  EntryRefusal refusal_ = EntryRefusal::None;
};

}  // namespace vantrell
