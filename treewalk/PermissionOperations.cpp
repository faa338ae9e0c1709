// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/PermissionOperations.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "catalogue/FeedbackMessages.h"
#include "catalogue/OperationArguments.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "treewalk/AclReinheritance.h"
#include "treewalk/PropagationErrors.h"
#include "treewalk/PropagationPipeline.h"
#include "treewalk/QELDirectoryEnumerator.h"

namespace vantrell {

using host::FollowLinks;

namespace option = propagation_option;

/// The folder whose rights are propagated, and these as they were at the start.
struct PermissionOperations::Source {
  std::string path;
  std::unique_ptr<host::ObjectHandle> folder;
  host::FileStatus status;
  std::uint16_t mode = 0;  // the object's own, whatever a list puts in the group's place
  std::unique_ptr<host::AccessControlList> list;
};

struct PermissionOperations::Request {
  std::uint8_t options = 0;
  std::uint64_t expectedObjects = 1;
  QELPrivilegedOperationFeedbackProtocol* feedback = nullptr;
  const IsCancelled& isCancelled;

  bool has(std::uint8_t bit) const noexcept { return (options & bit) != 0; }
  bool reinherits() const noexcept { return has(option::kReinheritance) && !has(option::kAccessControlList); }

  PropagationRights rights(const Source& source) const {
    PropagationRights rights;
    if (has(option::kOwner)) rights.owner = source.status.owner;
    if (has(option::kGroup)) rights.group = source.status.group;
    rights.ownerMode = has(option::kOwnerMode);
    rights.groupMode = has(option::kGroupMode);
    rights.othersMode = has(option::kOthersMode);
    rights.mode = source.mode;
    rights.skipsLocked = has(option::kSkipLocked);
    return rights;
  }

  bool isAskedToEnd() const { return isCancelled && isCancelled(); }

  void report(double fraction) const {
    if (feedback) feedback->processPrivilegedOperationFeedback(progressMessage(fraction));
  }
  // Not clamped: the client's estimate is the client's.
  void reportCount(std::uint64_t objects) const {
    report(static_cast<double>(objects) / static_cast<double>(expectedObjects));
  }
};

namespace {

constexpr std::uint64_t kObjectsPerReport = 100;

}  // namespace

ErrorOrNil PermissionOperations::modifyAcl(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* data = arguments.size() > 1 ? arguments[1].asData() : nullptr;
  if (!path || path->empty() || !data || data->empty()) return Error::posix(posix::kInvalidArgument);
  const auto list = fileSystem_.accessControlListFromExternalForm(*data);
  if (!list) return Error::posix(posix::kInvalidArgument);
  const auto object = fileSystem_.openObject(*path, FollowLinks::Yes);
  if (!object) return object.error();
  return (*object)->setAccessControlList(list->get());
}

ErrorOrNil PermissionOperations::propPermissions(const Array& arguments,
                                                 QELPrivilegedOperationFeedbackProtocol* feedback,
                                                 const IsCancelled& isCancelled) {
  const auto* path = textAt(arguments, 0);
  const auto* expectedObjects = numberAt(arguments, 1);
  const auto* options = numberAt(arguments, 2);
  if (!path || path->empty() || !expectedObjects || !options) return Error::posix(posix::kInvalidArgument);
  const auto source = readSource(*path);
  if (!source) return source.error();
  const Request request{static_cast<std::uint8_t>(options->unsignedValue()),
                        std::max<std::uint64_t>(expectedObjects->unsignedValue(), 1), feedback, isCancelled};
  auto error = request.reinherits() ? reinherit(*source, request) : copyRights(*source, request);
  if (request.reinherits() || !error || !error->isPosix(posix::kCanceled)) request.report(1.0);
  return error;
}

Result<PermissionOperations::Source> PermissionOperations::readSource(const std::string& path) {
  Source source;
  source.path = fileManager_.stringByResolvingSymlinksInPath(path);
  bool isDirectory = false;
  if (!fileManager_.fileExistsAtPath(source.path, &isDirectory)) return posixFailure(posix::kNoEntry);
  if (!isDirectory) return posixFailure(posix::kNotDirectory);
  auto folder = fileSystem_.openObject(source.path, FollowLinks::Yes);
  if (!folder) return failure(folder.error());
  const auto status = (*folder)->status();
  if (!status) return failure(status.error());
  auto list = (*folder)->accessControlList();
  if (!list) return failure(propagation_error::accessControlListNotRead(source.path, list.error()));
  const auto mode = (*folder)->ownPermissions(*status);
  if (!mode) return failure(propagation_error::accessControlListNotRead(source.path, mode.error()));
  source.folder = std::move(*folder);
  source.status = *status;
  source.mode = *mode;
  source.list = std::move(*list);
  return source;
}

ErrorOrNil PermissionOperations::copyRights(const Source& source, const Request& request) {
  auto folder = source.folder->openDirectory();
  if (!folder) return std::nullopt;  // as any folder that the walk can't read
  const auto rights = request.rights(source);
  std::optional<const host::AccessControlList*> list;
  if (request.has(option::kAccessControlList)) list = source.list.get();
  PropagationPipeline objects(
      std::make_unique<QELDirectoryEnumerator>(std::move(*folder), log_, source.path, source.status.device), log_,
      {list, rights, source.path});
  std::uint64_t count = 0;
  while (auto* entry = objects.next()) {
    if (!entry->object) {
      const auto path = stringByAppendingPathComponent(source.path, entry->relativePath);
      return propagation_error::attributesNotRead(path, entry->status->error());
    }
    if (!rights.skipsLocked || !entry->object->isUserImmutable())
      if (auto error = entry->object->propagate(list, rights)) return error;
    if (++count % kObjectsPerReport != 0) continue;
    if (request.isAskedToEnd()) return Error::posix(posix::kCanceled);
    request.reportCount(count);
  }
  return std::nullopt;
}

ErrorOrNil PermissionOperations::reinherit(const Source& source, const Request& request) {
  auto folder = source.folder->openDirectory();
  if (!folder) return propagation_error::folderNotRead(source.path, folder.error());
  AclReinheritance reinheritance(
      source.status.device, request.rights(source), [&](std::uint64_t counter) { request.reportCount(counter); },
      request.isCancelled);
  return reinheritance.reinheritACLsInFolderAtPath(std::move(*folder), source.path);
}

}  // namespace vantrell
