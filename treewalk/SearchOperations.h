// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "host/FileSystem.h"
#include "host/Identities.h"
#include "host/Transport.h"
#include "treewalk/KnownOwners.h"

namespace vantrell {

class ShownObjects;
class WalkedObject;

/// The operations that look for objects in folders which their client may not be allowed to read, and one that measures
/// a tree.
///
/// The folder comes first among the arguments. Its links are resolved, and all paths are told as below what they lead
/// to. POSIX errors without user info: 22 for an empty folder and for arguments that the catalogue would not have let
/// through, 2 where nothing is there, 20 for what is no folder, 89 after cancellation. Folders inside that can't be
/// read count as empty. `feedback` may be null and `isCancelled` empty.
///
/// Hits travel as {"ProgressFraction", "FileObjectInfo": records} with exactly 20 records in all messages but the last
/// (fileops/FileObjectInfo.h); see treewalk/SearchRecords.h for when what is sent. Objects that vanish meanwhile are
/// left out.
///
/// Stateless; safe from any thread. What it is given must outlive it.
class SearchOperations {
 public:
  using IsCancelled = std::function<bool()>;
  using Feedback = QELPrivilegedOperationFeedbackProtocol;
  using FeedbackBlock = std::function<void(const Dictionary&)>;

  /// `log` is the default log.
  SearchOperations(host::FileSystem& fileSystem, FileManager& fileManager, host::Identities& identities, Log log);

  /// Folder, age in days, whether to stay on its file system: objects that were last modified so long ago, or longer.
  ErrorOrNil searchAgedfiles(const Array& arguments, Feedback* feedback, const IsCancelled& isCancelled);

  /// Folder, prefix, extension, whether folders are wanted: what lies directly in the folder, is a folder (links are
  /// followed) as wanted or not, and is named like that. An empty prefix or extension suits all names.
  ErrorOrNil searchFilenames(const Array& arguments, Feedback* feedback, const IsCancelled& isCancelled);

  /// Texts: folder, whether to stay on its file system ("0" or "1"), then pairs for searchForFileNamesAtPath, whose
  /// messages go to `feedback` unchanged.
  ErrorOrNil searchPatterns(const Array& arguments, Feedback* feedback);

  /// Folder, whether to stay on its file system: objects whose owner is nobody. A folder that holds nothing else stands
  /// for its contents.
  ErrorOrNil searchFileorphans(const Array& arguments, Feedback* feedback, const IsCancelled& isCancelled);

  /// Folder: the sum of the logical sizes of all that it contains (folders and links with their own, each hard link
  /// again), other file systems included, comes back as an error of the operation set's domain with code 0 and "Size"
  /// (an unsigned number, bytes) as its only user info. `isCancelled` is asked with every hundredth object, by one
  /// thread at a time, which need not be the caller's.
  ErrorOrNil inspectStoragesize(const Array& arguments, const IsCancelled& isCancelled);

  /// The objects in the tree whose names suit one of the pairs: each a type ("0", "1" or "2", see
  /// QELFileNameMatchDescriptor) and a text that is not empty. The tree is walked twice, to count it and to match it,
  /// so that fractions are those of the objects seen. Messages in this order: the fraction 0; the fraction 0.01 once
  /// the pairs are found good; hits; the rest of them with the fraction 1; the final message. No cancellation. POSIX
  /// error 22 for pairs that make no sense, 2 for a folder without contents.
  ErrorOrNil searchForFileNamesAtPath(const std::string& path, bool stayOnFileSystem,
                                      const std::vector<std::string>& matchTypePatternPairs,
                                      const FeedbackBlock& feedbackBlock);

  /// True when the folder is empty, or none of what its file system holds in it is owned by one of these users. False
  /// for an empty path or set, and when the folder or the owner of something in it can't be read.
  bool isFolderAtPath(const std::string& path, const UserIDSet& emptyOrAllContentsNotOwnedByUsersInSet);

 private:
  Result<std::string> resolvedFolder(const std::string& path);
  Result<std::string> resolvedFolder(const Array& arguments);
  Result<bool> standsForContents(const WalkedObject& object, const ShownObjects& shown, KnownOwners& owners,
                                 const IsCancelled& isCancelled);

  host::FileSystem& fileSystem_;
  FileManager& fileManager_;
  host::Identities& identities_;
  Log log_;
};

}  // namespace vantrell
