// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FileObjectOperations.h"

#include <cstddef>

#include "catalogue/ErrorModel.h"
#include "catalogue/FeedbackMessages.h"
#include "fileops/FileDeletionErrors.h"
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

ErrorOrNil FileObjectOperations::inspectFileobject(const Array& arguments) {
  const auto* path = arguments.empty() ? nullptr : arguments.front().asString();
  if (!path || path->empty()) return Error::posix(posix::kInvalidArgument);
  bool isDirectory = false;
  const bool exists = fileManager_.fileExistsAtPath(fileManager_.stringByResolvingSymlinksInPath(*path), &isDirectory);
  const auto existence = !exists ? Existence::Nothing : isDirectory ? Existence::Folder : Existence::Other;
  return Error(privilegedOperationErrorDomain(), 0,
               Dictionary{{"ObjectExistence", static_cast<std::uint32_t>(existence)}});
}

}  // namespace vantrell
