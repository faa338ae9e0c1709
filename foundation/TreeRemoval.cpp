// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/TreeRemoval.h"

#include <utility>

#include "foundation/FileManagerErrors.h"
#include "foundation/PosixCodes.h"
#include "foundation/TreeWalk.h"

namespace vantrell {

using host::FileType;
using host::FollowLinks;
using host::MountPoints;

namespace {

// How often a folder is enumerated that others go on filling. One scan more than is needed on a quiet system.
constexpr unsigned kMaximumScans = 4;

Error removalError(const Error& error, const std::string& path) {
  return fileWritingError(error, path, "Remove");
}

bool saysGone(const Error& error) {
  return error.isPosix(posix::kNoEntry);
}
bool saysNoFolder(const Error& error) {
  return error.isPosix(posix::kNotDirectory) || error.isPosix(posix::kTooManyLinks);
}
// Systems differ in what they say of an attempt to unlink a folder.
bool mayMeanFolder(const Error& error) {
  return error.isPosix(posix::kIsDirectory) || error.isPosix(posix::kNotPermitted);
}

// Without a state of its own, for two threads call it.
class RemovalVisitor final : public TreeVisitor {
 public:
  Result<Enter> enter(TreeEntry& entry) override {
    if (entry.type() == FileType::Directory) return Enter::Descend;
    const auto error = entry.folder().removeFile(entry.name());
    if (!error || saysGone(*error)) return Enter::Skip;
    if (mayMeanFolder(*error)) {
      const auto status = entry.folder().statusOf(entry.name(), FollowLinks::No);
      if (!status && saysGone(status.error())) return Enter::Skip;
      if (status && status->isDirectory()) return Enter::Descend;
    }
    return failure(removalError(*error, entry.path()));
  }

  Result<Leave> leave(TreeEntry& entry, unsigned scan) override {
    const auto error = entry.folder().removeDirectory(entry.name());
    if (!error || saysGone(*error)) return Leave::Done;
    if (error->isPosix(posix::kNotEmpty) && scan < kMaximumScans) return Leave::ScanAgain;
    return failure(removalError(*error, entry.path()));
  }

  ErrorOrNil cannotDescend(TreeEntry& entry, const Error& reason) override {
    if (saysGone(reason)) return std::nullopt;
    // It was swapped for something else; or it is empty, so that reading it isn't needed; or it is a mount point, which
    // is busy.
    const auto error =
        saysNoFolder(reason) ? entry.folder().removeFile(entry.name()) : entry.folder().removeDirectory(entry.name());
    if (!error || saysGone(*error)) return std::nullopt;
    return removalError(error->isPosix(posix::kNotEmpty) ? reason : *error, entry.path());
  }

  ErrorOrNil cannotRead(const std::string& path, const Error& error) override { return removalError(error, path); }
};

// Nothing means: emptied, as far as it could be seen.
ErrorOrNil removeContents(host::DirectoryHandle& parent, const std::string& name, const std::string& path) {
  auto folder = parent.openDirectory(name.c_str(), MountPoints::Enter);
  if (!folder) return folder.error();
  RemovalVisitor visitor;
  return TreeWalk::runOnTwoThreads(std::move(*folder), path, MountPoints::Refuse, visitor);
}

}  // namespace

ErrorOrNil removeTree(host::DirectoryHandle& parent, const std::string& name, const std::string& path) {
  for (unsigned scan = 1;; ++scan) {
    const auto obstacle = removeContents(parent, name, path);
    // The visitor's errors are complete; those of the walk itself, and of opening its top, are not. A folder that can't
    // be read may still be empty.
    if (obstacle && !obstacle->isPosix()) return obstacle;
    const auto error = parent.removeDirectory(name.c_str());
    if (!error) return std::nullopt;
    if (obstacle) return removalError(*obstacle, path);
    if (!error->isPosix(posix::kNotEmpty) || scan >= kMaximumScans) return removalError(*error, path);
  }
}

}  // namespace vantrell
