// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/SearchOperations.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "catalogue/ErrorModel.h"
#include "catalogue/FeedbackMessages.h"
#include "catalogue/OperationArguments.h"
#include "foundation/Date.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "treewalk/FileNameSearch.h"
#include "treewalk/OrphanedFolders.h"
#include "treewalk/QELDirectoryEnumerator.h"
#include "treewalk/QELFileNameMatchDescriptor.h"
#include "treewalk/ReadAheadEnumerator.h"
#include "treewalk/SearchRecords.h"
#include "treewalk/StorageSize.h"

namespace vantrell {

using host::FollowLinks;

namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr std::uint32_t kRootUserID = 0;

std::optional<bool> booleanFrom(std::string_view text) {
  if (text == "0") return false;
  if (text == "1") return true;
  return std::nullopt;
}

// Nothing when one of the pairs makes no sense.
std::optional<std::vector<QELFileNameMatchDescriptor>> descriptorsFrom(const std::vector<std::string>& pairs) {
  std::vector<QELFileNameMatchDescriptor> descriptors;
  for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
    const auto& type = pairs[i];
    if (type.size() != 1 || type[0] < '0' || type[0] > '2' || pairs[i + 1].empty()) return std::nullopt;
    descriptors.push_back({static_cast<std::int8_t>(type[0] - '0'), pairs[i + 1]});
  }
  return descriptors;
}

ErrorOrNil finished(SearchResults& results) {
  results.finish();
  return std::nullopt;
}

/// One entry of a folder whose contents alone are searched.
class ListedName {
 public:
  ListedName(const host::DirectoryHandle& folder, const host::DirectoryEntry& entry)
      : folder_(folder), name_(entry.name.data()), status_(folder.statusOf(name_, FollowLinks::No)) {}

  /// Nothing for what has gone, and for a link that leads nowhere.
  std::optional<bool> isFolder() const {
    if (!status_) return std::nullopt;
    if (!status_->isSymbolicLink()) return status_->isDirectory();
    const auto target = folder_.statusOf(name_, FollowLinks::Yes);
    return target ? std::optional(target->isDirectory()) : std::nullopt;
  }
  const Result<host::FileStatus>& status() const noexcept { return status_; }

 private:
  const host::DirectoryHandle& folder_;
  const char* name_;
  Result<host::FileStatus> status_;
};

}  // namespace

SearchOperations::SearchOperations(host::FileSystem& fileSystem, FileManager& fileManager, host::Identities& identities,
                                   Log log)
    : fileSystem_(fileSystem), fileManager_(fileManager), identities_(identities), log_(std::move(log)) {}

Result<std::string> SearchOperations::resolvedFolder(const std::string& path) {
  auto resolved = fileManager_.stringByResolvingSymlinksInPath(path);
  bool isDirectory = false;
  if (!fileManager_.fileExistsAtPath(resolved, &isDirectory)) return posixFailure(posix::kNoEntry);
  if (!isDirectory) return posixFailure(posix::kNotDirectory);
  return std::string(pathWithoutTrailingSlashes(resolved));
}

Result<std::string> SearchOperations::resolvedFolder(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  if (!path || path->empty()) return posixFailure(posix::kInvalidArgument);
  return resolvedFolder(*path);
}

ErrorOrNil SearchOperations::searchAgedfiles(const Array& arguments, Feedback* feedback,
                                             const IsCancelled& isCancelled) {
  const auto* days = numberAt(arguments, 1);
  const auto* stay = numberAt(arguments, 2);
  if (!days || !stay) return Error::posix(posix::kInvalidArgument);
  const auto folder = resolvedFolder(arguments);
  if (!folder) return folder.error();
  const double threshold = static_cast<double>(days->unsignedValue()) * kSecondsPerDay;
  SearchResults results(feedback, isCancelled);
  auto enumerator = QELDirectoryEnumerator::enumeratorAtPath(fileSystem_, log_, *folder, stay->boolValue());
  if (!enumerator) return finished(results);
  ReadAheadEnumerator walk(std::move(enumerator), log_);
  const ShownObjects shown(fileSystem_, walk.basePrefix());
  while (const auto* object = walk.next()) {
    const auto status = shown.statusOf(*object);
    if (status && Date::now().secondsSince(status->modified) >= threshold) shown.addRecord(results.records(), *object);
    if (auto cancelled = results.objectDone()) return cancelled;
  }
  return finished(results);
}

ErrorOrNil SearchOperations::searchFilenames(const Array& arguments, Feedback* feedback,
                                             const IsCancelled& isCancelled) {
  const auto* prefix = textAt(arguments, 1);
  const auto* extension = textAt(arguments, 2);
  const auto* wantFolders = numberAt(arguments, 3);
  if (!prefix || !extension || !wantFolders) return Error::posix(posix::kInvalidArgument);
  const auto path = resolvedFolder(arguments);
  if (!path) return path.error();
  SearchResults results(feedback, isCancelled);
  const auto folder = fileSystem_.openDirectory(*path, FollowLinks::Yes);
  while (folder) {
    const auto entry = (*folder)->next();
    if (!entry || !*entry) break;
    const auto name = (*entry)->name;
    if (name.starts_with(*prefix) && (extension->empty() || pathExtension(name) == *extension)) {
      const ListedName listed(**folder, **entry);
      if (listed.isFolder() == wantFolders->boolValue())
        addFileObjectRecord(results.records(), stringByAppendingPathComponent(*path, name), *listed.status());
    }
    if (auto cancelled = results.objectDone()) return cancelled;
  }
  return finished(results);
}

ErrorOrNil SearchOperations::searchPatterns(const Array& arguments, Feedback* feedback) {
  if (arguments.size() < 4 || arguments.size() % 2 != 0) return Error::posix(posix::kInvalidArgument);
  std::vector<std::string> texts;
  texts.reserve(arguments.size());
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto* text = textAt(arguments, i);
    if (!text) return Error::posix(posix::kInvalidArgument);
    texts.push_back(*text);
  }
  const auto stay = booleanFrom(texts[1]);
  const auto path = std::move(texts[0]);
  if (path.empty() || !stay) return Error::posix(posix::kInvalidArgument);
  texts.erase(texts.begin(), texts.begin() + 2);
  return searchForFileNamesAtPath(path, *stay, texts, [feedback](const Dictionary& message) {
    if (feedback) feedback->processPrivilegedOperationFeedback(message);
  });
}

ErrorOrNil SearchOperations::searchForFileNamesAtPath(const std::string& path, bool stayOnFileSystem,
                                                      const std::vector<std::string>& matchTypePatternPairs,
                                                      const FeedbackBlock& feedbackBlock) {
  if (matchTypePatternPairs.size() < 2 || matchTypePatternPairs.size() % 2 != 0)
    return Error::posix(posix::kInvalidArgument);
  const auto folder = resolvedFolder(path);
  if (!folder) return folder.error();
  const FeedbackBlock send = [&](const Dictionary& message) {
    if (feedbackBlock) feedbackBlock(message);
  };
  send(progressMessage(0.0));
  const auto descriptors = descriptorsFrom(matchTypePatternPairs);
  if (!descriptors) return Error::posix(posix::kInvalidArgument);
  send(progressMessage(0.01));
  const auto makeWalk = [&] {
    return QELDirectoryEnumerator::enumeratorAtPath(fileSystem_, log_, *folder, stayOnFileSystem);
  };
  ObjectCount total(makeWalk());
  CountedResults results(total, send);
  if (const auto walk = makeWalk()) {
    const ShownObjects shown(fileSystem_, walk->basePrefix());
    for (std::size_t index = 0; const auto* object = walk->next(); ++index) {
      if (anyMatches(*descriptors, object->name())) shown.addRecord(results.records(), *object);
      results.objectDone(index);
    }
  }
  if (!results.finish()) return Error::posix(posix::kNoEntry);
  send(finalMessage());
  return std::nullopt;
}

ErrorOrNil SearchOperations::searchFileorphans(const Array& arguments, Feedback* feedback,
                                               const IsCancelled& isCancelled) {
  const auto* stay = numberAt(arguments, 1);
  if (!stay) return Error::posix(posix::kInvalidArgument);
  const auto folder = resolvedFolder(arguments);
  if (!folder) return folder.error();
  auto userIDs = allKnownUserIDs(identities_);
  userIDs.insert(kRootUserID);
  KnownOwners owners(std::move(userIDs), &identities_);
  SearchResults results(feedback, isCancelled);
  auto enumerator = QELDirectoryEnumerator::enumeratorAtPath(fileSystem_, log_, *folder, stay->boolValue());
  if (!enumerator) return finished(results);
  ReadAheadEnumerator walk(std::move(enumerator), log_);
  const ShownObjects shown(fileSystem_, walk.basePrefix());
  while (const auto* object = walk.next()) {
    const auto status = shown.statusOf(*object);
    if (status && !owners.contains(status->owner)) {
      const auto isHit = status->isDirectory() ? standsForContents(*object, shown, owners, isCancelled) : true;
      if (!isHit) return isHit.error();
      if (*isHit) shown.addRecord(results.records(), *object);
      if (*isHit && status->isDirectory()) walk.skipDescendents();
    }
    if (auto cancelled = results.objectDone()) return cancelled;
  }
  return finished(results);
}

Result<bool> SearchOperations::standsForContents(const WalkedObject& object, const ShownObjects& shown,
                                                 KnownOwners& owners, const IsCancelled& isCancelled) {
  const auto path = shown.pathOf(object);
  auto folder = object.isPathFaithful() ? object.folder().openDirectory(object.name().data(), host::MountPoints::Enter)
                                        : fileSystem_.openDirectory(path, FollowLinks::No);
  if (!folder) return false;
  return isEmptyOrHoldsOrphansOnly(fileSystem_, log_, std::move(*folder), path, owners, isCancelled);
}

ErrorOrNil SearchOperations::inspectStoragesize(const Array& arguments, const IsCancelled& isCancelled) {
  const auto path = resolvedFolder(arguments);
  if (!path) return path.error();
  auto folder = fileSystem_.openDirectory(*path, FollowLinks::Yes);
  const auto total = folder ? storageSize(std::move(*folder), isCancelled) : Result<std::uint64_t>(0);
  if (!total) return total.error();
  return Error(privilegedOperationErrorDomain(), 0, Dictionary{{"Size", *total}});
}

bool SearchOperations::isFolderAtPath(const std::string& path,
                                      const UserIDSet& emptyOrAllContentsNotOwnedByUsersInSet) {
  if (path.empty() || emptyOrAllContentsNotOwnedByUsersInSet.empty()) return false;
  auto folder = fileSystem_.openDirectory(path, FollowLinks::Yes);
  if (!folder) return false;
  KnownOwners owners(emptyOrAllContentsNotOwnedByUsersInSet);
  const auto answer = isEmptyOrHoldsOrphansOnly(fileSystem_, log_, std::move(*folder), path, owners, {});
  return answer && *answer;
}

}  // namespace vantrell
