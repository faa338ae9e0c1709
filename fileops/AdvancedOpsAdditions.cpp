// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/AdvancedOpsAdditions.h"

#include <optional>
#include <utility>

#include "fileops/FileDeletionErrors.h"
#include "fileops/FileObjectInfo.h"
#include "fileops/ForcedRemoval.h"
#include "fileops/ImmutableFlagVisitor.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

using host::FollowLinks;
using host::MountPoints;
namespace file_flags = host::file_flags;

namespace {

constexpr std::uint32_t kRestrictionFlags =
    file_flags::kDataVault | file_flags::kSystemRestricted | file_flags::kSystemNoUnlink;
constexpr std::uint32_t kNoFileSystem = 0xFFFFFFFF;

}  // namespace

AdvancedOpsAdditions::AdvancedOpsAdditions(FileManager& fileManager, host::FileSystem& fileSystem,
                                           NSProcessInfoQELAdditions& processInfo, Log log,
                                           std::uint32_t effectiveUserID, PrivacyPolicy* privacyPolicy)
    : fileManager_(fileManager),
      fileSystem_(fileSystem),
      processInfo_(processInfo),
      log_(std::move(log)),
      effectiveUserID_(effectiveUserID),
      privacyPolicy_(privacyPolicy) {}

std::string AdvancedOpsAdditions::fileDeletionErrorDomain() const {
  return vantrell::fileDeletionErrorDomain();
}

ErrorOrNil AdvancedOpsAdditions::enforceRemovalOfFileSystemObjectAtPath(const std::string& path, bool recursive) {
  return recursive ? enforceRecursiveRemovalOfFileSystemObjectAtPath(path)
                   : enforceSingleRemovalOfFileSystemObjectAtPath(path);
}

ErrorOrNil AdvancedOpsAdditions::enforceSingleRemovalOfFileSystemObjectAtPath(const std::string& path) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  const auto failure = removeInSpiteOfUserFlags(fileSystem_, path);
  if (!failure) return std::nullopt;
  return failure->reason ? fileDeletionError(*failure->reason, path) : refined(path, failure->error);
}

ErrorOrNil AdvancedOpsAdditions::enforceRecursiveRemovalOfFileSystemObjectAtPath(const std::string& path) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  const auto location = fileSystem_.locate(path);
  if (location) return enforceRecursiveRemovalOfEntry(*location->folder, location->name, path);
  // Either nothing is there, or the path has no last component and the file manager knows why it can't go.
  if (!fileManager_.fileExistsAtPath(path)) return std::nullopt;
  const auto refusal = fileManager_.refusalToRemoveFolderAtPath(path);
  return refined(path, refusal ? *refusal : location.error());
}

ErrorOrNil AdvancedOpsAdditions::enforceRecursiveRemovalOfEntry(host::DirectoryHandle& folder, const std::string& name,
                                                                const std::string& path) {
  if (!folder.statusOf(name.c_str(), FollowLinks::Yes)) return std::nullopt;
  auto error = clearFlagsForRemoval(folder, name, path);
  if (!error) error = fileManager_.removeItem(folder, name, path);
  return error ? refined(path, *error) : std::nullopt;
}

// The object is no link when it is looked at, and may be one a moment later: nothing here follows it.
ErrorOrNil AdvancedOpsAdditions::clearFlagsForRemoval(host::DirectoryHandle& folder, const std::string& name,
                                                      const std::string& path) {
  const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
  if (!status) return status.error();
  if (status->isSymbolicLink()) return std::nullopt;
  if (status->isDirectory()) {
    if (auto refusal = fileManager_.refusalToRemoveFolder(*status, path)) return refusal;
  }
  const auto flags = withImmutableFlag(status->flags, false);
  if (flags != status->flags) {
    if (auto error = immutableFlagFailure(folder.setFlagsOf(name.c_str(), flags, FollowLinks::No), false)) return error;
  }
  if (!status->isDirectory()) return std::nullopt;
  auto top = folder.openDirectory(name.c_str(), MountPoints::Enter);
  // A folder that can't be read counts as one without contents, here as everywhere in it.
  if (!top) return std::nullopt;
  ImmutableFlagVisitor visitor(false, FollowLinks::No);
  return TreeWalk::runOnTwoThreads(std::move(*top), path, MountPoints::Enter, visitor);
}

ErrorOrNil AdvancedOpsAdditions::setImmutableFlag(bool value, const std::string& path,
                                                  bool checkingExistenceOfLinkTarget) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  const auto status = fileSystem_.status(path, FollowLinks::No);
  if (!status) return status.error();
  const auto object = fileSystem_.openObject(path, FollowLinks::Yes);
  if (!object && !status->isSymbolicLink()) return object.error();
  if (!object) return checkingExistenceOfLinkTarget ? ErrorOrNil(Error::posix(posix::kNoEntry)) : std::nullopt;
  return setImmutableFlagOf(**object, value);
}

ErrorOrNil AdvancedOpsAdditions::setImmutableFlagOf(host::ObjectHandle& object, bool value) {
  const auto status = object.status();
  if (!status) return status.error();
  const auto flags = withImmutableFlag(status->flags, value);
  return flags == status->flags ? std::nullopt : immutableFlagFailure(object.setFlags(flags), value);
}

// One look at the path decides what is changed and what is walked through.
ErrorOrNil AdvancedOpsAdditions::setUserImmutableAtPath(const std::string& path, bool value, bool recursive,
                                                        bool stayOnFileSystem) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  const auto object = fileSystem_.openObject(path, FollowLinks::Yes);
  if (!object) return Error::posix(posix::kNoEntry);
  std::optional<std::uint32_t> onlyFileSystem;
  if (stayOnFileSystem) onlyFileSystem = fileSystemIDForPath(path);
  if (auto error = setImmutableFlagOf(**object, value)) return error;
  if (!recursive) return std::nullopt;
  auto folder = (*object)->openDirectory();
  if (!folder) return std::nullopt;
  ImmutableFlagVisitor visitor(value, FollowLinks::Yes, onlyFileSystem);
  return TreeWalk::runOnTwoThreads(std::move(*folder), path, MountPoints::Enter, visitor);
}

std::uint32_t AdvancedOpsAdditions::fileSystemIDForPath(const std::string& path) {
  const auto status = fileSystem_.status(path, FollowLinks::No);
  return status ? fileSystemIDOf(*status) : kNoFileSystem;
}

bool AdvancedOpsAdditions::isSecurityProtectedObjectAtPath(const std::string& path, ErrorOrNil* refiningError) {
  if (path.empty() || !processInfo_.isOperatingSystemAtLeastVersion(10, 11, 0)) return false;
  if (!refiningError)
    log_.notice(
        "Check for security protection was initiated during a failed delete operation, but no error object was "
        "provided.");
  const auto incoming = refiningError ? *refiningError : std::nullopt;
  if (incoming && incoming->isPosix() && !incoming->isPosix(posix::kAccessDenied)) {
    if (!incoming->isPosix(posix::kNotPermitted)) return false;
    if (isAccessDeniedByPrivacyPolicy())
      *refiningError = fileDeletionError(FileDeletionErrorCode::PrivacyControl, path, incoming);
  }
  if (!bearsRestriction(path)) return false;
  if (refiningError)
    *refiningError = fileDeletionError(FileDeletionErrorCode::SystemIntegrityProtection, path, incoming);
  return true;
}

void AdvancedOpsAdditions::addFileSystemObjectInfoDictionaryToArray(Array* array, const std::string& path) {
  if (!array || path.empty()) return;
  if (const auto status = fileSystem_.status(path, FollowLinks::No)) array->push_back(fileObjectInfo(path, *status));
}

ErrorOrNil AdvancedOpsAdditions::refined(const std::string& path, Error error) {
  ErrorOrNil result = std::move(error);
  isSecurityProtectedObjectAtPath(path, &result);
  return result;
}

bool AdvancedOpsAdditions::isAccessDeniedByPrivacyPolicy() {
  if (!privacyPolicy_ || !processInfo_.isOperatingSystemAtLeastVersion(10, 14, 0)) return false;
  const int policy = effectiveUserID_ != 0 ? privacyPolicy_->privacyPolicyOfCurrentUserForFullDiskAccess()
                                           : privacyPolicy_->privacyPolicyOfRootForFullDiskAccess();
  return policy == PrivacyPolicy::kAccessDenied;
}

// The parent counts by what it is, not by the link that the path may reach it through: macOS restricts the links "/tmp"
// and "/var" themselves.
bool AdvancedOpsAdditions::bearsRestriction(const std::string& path) {
  const auto object = fileSystem_.status(path, FollowLinks::No);
  if (!object) return false;
  if (object->flags & kRestrictionFlags) return true;
  const auto parent = fileSystem_.status(stringByDeletingLastPathComponent(path), FollowLinks::Yes);
  return parent && (parent->flags & kRestrictionFlags);
}

}  // namespace vantrell
