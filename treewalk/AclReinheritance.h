// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "foundation/TreeWalk.h"
#include "host/DirectoryHandle.h"
#include "treewalk/PropagationRights.h"
#include "treewalk/PropagationTemporaryObject.h"

namespace vantrell {

/// Gives every file and folder of a tree the access control list that its folder gives to new ones, from the top down.
///
/// Folder by folder: what lies in it is listed once, then the files are changed and after them the folders; what these
/// contain follows when all of that is done. A companion file ("._" and the name of another) follows the file that it
/// belongs to, in addition to its own turn. Objects that are neither files nor folders, links among them, and those of
/// other devices are left alone.
///
/// Memory is bounded by the names in one folder and by the depth, which may be any (see TreeWalk).
class AclReinheritance final : private TreeVisitor {
 public:
  using IsCancelled = std::function<bool()>;
  /// Receives the counter as it stands.
  using ReportProgress = std::function<void(std::uint64_t counter)>;

  /// Progress is reported twice for each folder. Cancellation is looked for once before a folder's contents are
  /// changed, after each report, and after all of a subfolder.
  AclReinheritance(std::uint64_t device, const PropagationRights& rights, ReportProgress reportProgress,
                   IsCancelled isCancelled);

  /// Once. `path` is shown for the folder, which itself is not changed. Nothing, or what ended it: POSIX error 89 when
  /// it was cancelled, error 22 for a folder that can't be listed, 23 where no list can be read, 13, or a failed step.
  /// What was changed until then stays changed.
  ErrorOrNil reinheritACLsInFolderAtPath(std::unique_ptr<host::DirectoryHandle> folder, const std::string& path);

  /// Objects that were given a list.
  std::uint64_t counter() const noexcept { return counter_; }

 private:
  struct Contents {
    std::vector<std::string> files;
    std::vector<std::string> folders;
  };

  Result<Enter> enter(TreeEntry& entry) override;
  Result<Leave> leave(TreeEntry& entry, unsigned scan) override;
  ErrorOrNil cannotDescend(TreeEntry& entry, const Error& error) override;
  ErrorOrNil cannotRead(const std::string& path, const Error& error) override;

  ErrorOrNil changeContents(host::DirectoryHandle& folder, const std::string& path);
  Result<Contents> list(host::DirectoryHandle& folder, const std::string& path) const;
  ErrorOrNil sort(host::DirectoryHandle& folder, const std::string& path, std::string name, Contents& contents) const;
  bool isCompanion(host::DirectoryHandle& folder, const std::string& name) const;
  ErrorOrNil change(host::DirectoryHandle& folder, const std::string& path, const std::vector<std::string>& names,
                    PropagationTemporaryObject::Kind kind);
  ErrorOrNil changeObject(host::DirectoryHandle& folder, const std::string& path, const std::string& name,
                          const host::AccessControlList* list);
  ErrorOrNil cancellation() const;

  std::uint64_t device_;
  PropagationRights rights_;
  ReportProgress reportProgress_;
  IsCancelled isCancelled_;
  std::uint64_t counter_ = 0;
  bool hasFailed_ = false;  // the error that ends the walk is one of ours, not the walk's own
};

}  // namespace vantrell
