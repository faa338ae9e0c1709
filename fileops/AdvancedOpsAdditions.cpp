// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/AdvancedOpsAdditions.h"

#include <optional>
#include <utility>

#include "fileops/FileDeletionErrors.h"
#include "fileops/FileObjectInfo.h"
#include "fileops/ImmutableFlagVisitor.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

using host::FollowLinks;
using host::MountPoints;
namespace file_flags = host::file_flags;

namespace {

constexpr std::uint32_t kUserFlags = file_flags::kUserImmutable | file_flags::kUserAppend;
constexpr std::uint32_t kSystemFlags = file_flags::kSystemImmutable | file_flags::kSystemAppend;
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
  const auto status = fileSystem_.status(path, FollowLinks::No);
  if (!status) return refined(path, status.error());
  if (status->type == host::FileType::Whiteout) return fileDeletionError(FileDeletionErrorCode::Whiteout, path);
  if (status->flags & kSystemFlags) return fileDeletionError(FileDeletionErrorCode::SystemFlags, path);
  if (status->flags & kUserFlags) {
    if (fileSystem_.setFlags(path, status->flags & ~kUserFlags, FollowLinks::No))
      return fileDeletionError(FileDeletionErrorCode::UserFlagsNotCleared, path);
  }
  const auto error = status->isDirectory() ? fileSystem_.removeDirectory(path) : fileSystem_.removeFile(path);
  return error ? refined(path, *error) : std::nullopt;
}

ErrorOrNil AdvancedOpsAdditions::enforceRecursiveRemovalOfFileSystemObjectAtPath(const std::string& given) {
  if (given.empty()) return Error::posix(posix::kInvalidArgument);
  // A slash at the end would make the link before it look like the folder that it leads to.
  const std::string path(pathWithoutTrailingSlashes(given));
  if (!fileManager_.fileExistsAtPath(path)) return std::nullopt;
  auto error = clearFlagsForRemoval(path);
  if (!error) error = fileManager_.removeItemAtPath(path);
  return error ? refined(given, *error) : std::nullopt;
}

// The object is no link when it is looked at, and may be one a moment later: nothing here follows it.
ErrorOrNil AdvancedOpsAdditions::clearFlagsForRemoval(const std::string& path) {
  const auto status = fileSystem_.status(path, FollowLinks::No);
  if (!status) return status.error();
  if (status->isSymbolicLink()) return std::nullopt;
  if (status->isDirectory()) {
    if (auto refusal = fileManager_.refusalToRemoveFolderAtPath(path)) return refusal;
  }
  if (auto error = changeFlag(path, *status, false, FollowLinks::No)) return error;
  if (!status->isDirectory()) return std::nullopt;
  ImmutableFlagVisitor visitor(false, FollowLinks::No);
  return changeFlagsBelow(path, FollowLinks::No, visitor);
}

ErrorOrNil AdvancedOpsAdditions::setImmutableFlag(bool value, const std::string& path,
                                                  bool checkingExistenceOfLinkTarget) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  auto status = fileSystem_.status(path, FollowLinks::No);
  if (!status) return status.error();
  if (status->isSymbolicLink()) {
    status = fileSystem_.status(path, FollowLinks::Yes);
    if (!status && checkingExistenceOfLinkTarget) return Error::posix(posix::kNoEntry);
    if (!status) return std::nullopt;
  }
  return changeFlag(path, *status, value, FollowLinks::Yes);
}

ErrorOrNil AdvancedOpsAdditions::setUserImmutableAtPath(const std::string& path, bool value, bool recursive,
                                                        bool stayOnFileSystem) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  bool isDirectory = false;
  if (!fileManager_.fileExistsAtPath(path, &isDirectory)) return Error::posix(posix::kNoEntry);
  if (auto error = setImmutableFlag(value, path, true)) return error;
  if (!recursive || !isDirectory) return std::nullopt;
  std::optional<std::uint32_t> onlyFileSystem;
  if (stayOnFileSystem) onlyFileSystem = fileSystemIDForPath(path);
  ImmutableFlagVisitor visitor(value, FollowLinks::Yes, onlyFileSystem);
  return changeFlagsBelow(path, FollowLinks::Yes, visitor);
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

ErrorOrNil AdvancedOpsAdditions::changeFlag(const std::string& path, const host::FileStatus& status, bool value,
                                            FollowLinks follow) {
  const auto flags = withImmutableFlag(status.flags, value);
  if (flags == status.flags) return std::nullopt;
  return immutableFlagFailure(fileSystem_.setFlags(path, flags, follow), value);
}

// A folder that can't be read counts as one without contents, here as everywhere in it.
ErrorOrNil AdvancedOpsAdditions::changeFlagsBelow(const std::string& path, FollowLinks followTop,
                                                  TreeVisitor& visitor) {
  auto folder = fileSystem_.openDirectory(path, followTop);
  if (!folder) return std::nullopt;
  return TreeWalk(std::move(*folder), path, MountPoints::Enter, visitor).run();
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
