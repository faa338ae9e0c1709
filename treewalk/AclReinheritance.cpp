// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/AclReinheritance.h"

#include <utility>

#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "treewalk/PropagationErrors.h"
#include "treewalk/PropagationObject.h"

namespace vantrell {

using host::DirectoryHandle;
using host::FileType;
using host::FollowLinks;
using host::MountPoints;
using Kind = PropagationTemporaryObject::Kind;

namespace {

constexpr std::size_t kUsualFiles = 100;
constexpr std::size_t kUsualFolders = 50;

Error attributesError(const std::string& folderPath, const std::string& name, const Error& reason) {
  return propagation_error::attributesNotRead(stringByAppendingPathComponent(folderPath, name), reason);
}

}  // namespace

AclReinheritance::AclReinheritance(std::uint64_t device, const PropagationRights& rights, ReportProgress reportProgress,
                                   IsCancelled isCancelled)
    : device_(device),
      rights_(rights),
      reportProgress_(std::move(reportProgress)),
      isCancelled_(std::move(isCancelled)) {}

ErrorOrNil AclReinheritance::cancellation() const {
  if (isCancelled_ && isCancelled_()) return Error::posix(posix::kCanceled);
  return std::nullopt;
}

ErrorOrNil AclReinheritance::reinheritACLsInFolderAtPath(std::unique_ptr<DirectoryHandle> folder,
                                                         const std::string& path) {
  if (auto error = changeContents(*folder, path)) return error;
  folder->rewind();
  auto error = TreeWalk(std::move(folder), path, MountPoints::Enter, *this).run();
  // The walk itself lost its way: someone moved folders about.
  if (error && !hasFailed_) return propagation_error::folderNotRead(path, *error);
  return error;
}

// ---- what the walk meets: it leads to the folders below, each of which is dealt with as a whole before it is entered

Result<TreeVisitor::Enter> AclReinheritance::enter(TreeEntry& entry) {
  if (entry.type() != FileType::Directory && entry.type() != FileType::Unknown) return Enter::Skip;
  const auto status = entry.folder().statusOf(entry.name(), FollowLinks::No);
  if (!status || !status->isDirectory() || status->device != device_) return Enter::Skip;
  const auto folder = entry.folder().openDirectory(entry.name(), MountPoints::Enter);
  auto error = folder ? changeContents(**folder, entry.path()) : cannotDescend(entry, folder.error());
  if (!error) return Enter::Descend;
  hasFailed_ = true;
  return failure(std::move(*error));
}

Result<TreeVisitor::Leave> AclReinheritance::leave(TreeEntry&, unsigned) {
  auto error = cancellation();
  if (!error) return Leave::Done;
  hasFailed_ = true;
  return failure(std::move(*error));
}

ErrorOrNil AclReinheritance::cannotDescend(TreeEntry& entry, const Error& error) {
  return cannotRead(entry.path(), error);
}

ErrorOrNil AclReinheritance::cannotRead(const std::string& path, const Error& error) {
  hasFailed_ = true;
  return propagation_error::folderNotRead(path, error);
}

// ---- one folder

ErrorOrNil AclReinheritance::changeContents(DirectoryHandle& folder, const std::string& path) {
  auto contents = list(folder, path);
  if (!contents) return contents.error();
  if (auto error = cancellation()) return error;
  if (auto error = change(folder, path, contents->files, Kind::File)) return error;
  return change(folder, path, contents->folders, Kind::Folder);
}

Result<AclReinheritance::Contents> AclReinheritance::list(DirectoryHandle& folder, const std::string& path) const {
  Contents contents;
  contents.files.reserve(kUsualFiles);
  contents.folders.reserve(kUsualFolders);
  for (;;) {
    const auto entry = folder.next();
    if (!entry) return failure(propagation_error::folderNotRead(path, entry.error()));
    if (!*entry) return contents;
    if (auto error = sort(folder, path, std::string((*entry)->name), contents)) return failure(std::move(*error));
  }
}

ErrorOrNil AclReinheritance::sort(DirectoryHandle& folder, const std::string& path, std::string name,
                                  Contents& contents) const {
  const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
  if (!status) return attributesError(path, name, status.error());
  if (status->device != device_) return std::nullopt;
  if (status->isDirectory()) {
    contents.folders.push_back(std::move(name));
  } else if (status->type == FileType::Regular) {
    auto companion = "._" + name;
    contents.files.push_back(std::move(name));
    if (isCompanion(folder, companion)) contents.files.push_back(std::move(companion));
  }
  return std::nullopt;
}

// No more than any other link is one that bears a companion's name touched.
bool AclReinheritance::isCompanion(DirectoryHandle& folder, const std::string& name) const {
  const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
  return status && !status->isDirectory() && !status->isSymbolicLink() && status->device == device_;
}

ErrorOrNil AclReinheritance::change(DirectoryHandle& folder, const std::string& path,
                                    const std::vector<std::string>& names, Kind kind) {
  std::unique_ptr<host::AccessControlList> inherited;
  {
    const auto temporary = PropagationTemporaryObject::make(folder, path, kind);
    if (!temporary) return temporary.error();
    auto list = temporary->accessControlList();
    if (!list) return list.error();
    inherited = std::move(*list);
  }
  for (const auto& name : names)
    if (auto error = changeObject(folder, path, name, inherited.get())) return error;
  if (reportProgress_) reportProgress_(counter_);
  return cancellation();
}

ErrorOrNil AclReinheritance::changeObject(DirectoryHandle& folder, const std::string& path, const std::string& name,
                                          const host::AccessControlList* list) {
  const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
  if (!status) return attributesError(path, name, status.error());
  PropagationObject object(folder, name.c_str(), *status, path, name);
  if (rights_.skipsLocked && object.isUserImmutable()) return std::nullopt;
  ++counter_;
  return object.propagate(list, rights_);
}

}  // namespace vantrell
