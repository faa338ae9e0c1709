// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FileObjectOperations.h"

#include <cstddef>

#include "catalogue/FeedbackMessages.h"
#include "fileops/FileDeletionErrors.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {
namespace {

void reportProgress(QELPrivilegedOperationFeedbackProtocol* feedback, double fraction) {
  if (feedback) feedback->processPrivilegedOperationFeedback(progressMessage(fraction));
}

// Nothing when any of them is no text.
std::optional<std::vector<std::string>> textsOf(const Array& arguments) {
  std::vector<std::string> texts;
  texts.reserve(arguments.size());
  for (const auto& argument : arguments) {
    const auto* text = argument.asString();
    if (!text) return std::nullopt;
    texts.push_back(*text);
  }
  return texts;
}

Result<std::vector<std::string>> namesIn(host::DirectoryHandle& folder) {
  std::vector<std::string> names;
  for (;;) {
    const auto entry = folder.next();
    if (!entry) return failure(entry.error());
    if (!*entry) return names;
    names.emplace_back((*entry)->name);
  }
}

}  // namespace

std::optional<bool> FileObjectOperations::getBool(std::string_view fromStringArgument) {
  if (fromStringArgument == "0") return false;
  if (fromStringArgument == "1") return true;
  return std::nullopt;
}

ErrorOrNil FileObjectOperations::deleteFileobjects(const Array& arguments,
                                                   QELPrivilegedOperationFeedbackProtocol* feedback,
                                                   const IsCancelled& isCancelled) {
  auto texts = textsOf(arguments);
  if (!texts || texts->size() < 3) return Error::posix(posix::kInvalidArgument);
  const auto recursive = getBool((*texts)[0]);
  const auto stopOnFirstError = getBool((*texts)[1]);
  if (!recursive || !stopOnFirstError) return Error::posix(posix::kInvalidArgument);
  texts->erase(texts->begin(), texts->begin() + 2);
  return deleteFileSystemObjectsAtPaths(*texts, *recursive, *stopOnFirstError, feedback, isCancelled);
}

ErrorOrNil FileObjectOperations::deleteFileSystemObjectsAtPaths(const std::vector<std::string>& paths, bool recursive,
                                                                bool stopOnFirstError,
                                                                QELPrivilegedOperationFeedbackProtocol* feedback,
                                                                const IsCancelled& isCancelled) {
  ErrorOrNil result;
  std::size_t handled = 0;
  for (const auto& path : paths) {
    if (isCancelled && isCancelled()) return Error::posix(posix::kCanceled);
    if (const auto error = advancedOps_.enforceRemovalOfFileSystemObjectAtPath(path, recursive)) {
      result = privilegedOperationErrorForFileDeletionError(*error);
      if (stopOnFirstError) break;
    }
    reportProgress(feedback, static_cast<double>(++handled) / static_cast<double>(paths.size()));
  }
  reportProgress(feedback, 1.0);
  return result;
}

ErrorOrNil FileObjectOperations::deleteFoldercontents(const Array& arguments,
                                                      QELPrivilegedOperationFeedbackProtocol* feedback,
                                                      const IsCancelled& isCancelled) {
  const auto paths = textsOf(arguments);
  if (!paths || paths->empty()) return Error::posix(posix::kInvalidArgument);
  std::size_t index = 0;
  for (const auto& path : *paths) {
    if (isCancelled && isCancelled()) return Error::posix(posix::kCanceled);
    reportProgress(feedback, static_cast<double>(index++) / static_cast<double>(paths->size()));
    bool isDirectory = false;
    if (!fileManager_.fileExistsAtPath(path, &isDirectory)) continue;
    if (!isDirectory) return Error::posix(posix::kNotDirectory);
    if (auto error = deleteContents(path, isCancelled)) return error;
  }
  reportProgress(feedback, 1.0);
  return std::nullopt;
}

// All names first, for what is added meanwhile would keep this busy forever.
ErrorOrNil FileObjectOperations::deleteContents(const std::string& path, const IsCancelled& isCancelled) {
  const auto folder = fileSystem_.openDirectory(path, host::FollowLinks::Yes);
  if (!folder) return fileReadingError(folder.error(), path);
  const auto names = namesIn(**folder);
  if (!names) return fileReadingError(names.error(), path);
  for (const auto& name : *names) {
    if (isCancelled && isCancelled()) return Error::posix(posix::kCanceled);
    const auto error =
        advancedOps_.enforceRecursiveRemovalOfEntry(**folder, name, stringByAppendingPathComponent(path, name));
    if (error) return privilegedOperationErrorForFileDeletionError(*error);
  }
  return std::nullopt;
}

}  // namespace vantrell
