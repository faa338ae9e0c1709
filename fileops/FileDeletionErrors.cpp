// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FileDeletionErrors.h"

#include <utility>

#include "catalogue/ErrorModel.h"
#include "foundation/PathUtilities.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

struct Message {
  FileDeletionErrorCode code;
  std::int64_t operationCode;
  const char* description;
  const char* suggestionTemplate;
};

constexpr Message kMessages[] = {
    {FileDeletionErrorCode::Whiteout, 6, "It is not possible to delete a file system object of type 'whiteout'.",
     "Please check the type of the object located at '$1$'. Whiteouts cannot really exist in current versions of "
     "macOS."},
    {FileDeletionErrorCode::UserFlagsNotCleared, 7, "The operating system could not change protection flags.",
     "Please check if the file system storing the object '$1$' is working properly."},
    {FileDeletionErrorCode::SystemFlags, 8, "Single User Mode is required to remove this object.",
     "The object located at '$1$' uses special protection which should only be deactivated when the system is not in "
     "full operation. Please restart the operating system in Single User Mode and remove the protection attribute."},
    {FileDeletionErrorCode::SystemIntegrityProtection, 17, "Your computer is protecting this file system object.",
     "The object at '$1$' cannot be modified because System Integrity Protection is active on this computer. It might "
     "be possible to deactivate this feature by changing a hardware setting via the recovery operating system. Please "
     "see the reference manual for more information."},
    {FileDeletionErrorCode::PrivacyControl, 24, "Your privacy policy is protecting this file system object.",
     "The object at '$1$' cannot be accessed because you haven't given your approval yet to allow the application to "
     "work with data which could be critical to your privacy. Please use System Preferences to give your consent for "
     "'Full Disk Access'."},
};

const Message* messageFor(std::int64_t code) {
  for (const auto& message : kMessages)
    if (static_cast<std::int64_t>(message.code) == code) return &message;
  return nullptr;
}

std::string pathIn(const Dictionary& userInfo) {
  const auto* value = userInfo.find(NSFilePathErrorKey);
  const auto* text = value ? value->asString() : nullptr;
  return text ? *text : std::string();
}

}  // namespace

std::string fileDeletionErrorDomain() {
  return vendorDomainPrefix() + ".error.file-deletion";
}

Error fileDeletionError(FileDeletionErrorCode code, const std::string& path, const ErrorOrNil& underlying) {
  Dictionary userInfo{{NSFilePathErrorKey, displayablePath(path)}};
  if (underlying) userInfo.set(NSUnderlyingErrorKey, *underlying);
  return {fileDeletionErrorDomain(), static_cast<std::int64_t>(code), std::move(userInfo)};
}

Error privilegedOperationErrorForFileDeletionError(const Error& error) {
  if (error.domain() != fileDeletionErrorDomain()) return error;
  const auto* message = messageFor(error.code());
  const auto code = message ? message->operationCode : 0;
  if (!error.hasUserInfo()) return {privilegedOperationErrorDomain(), code};
  auto userInfo = error.userInfo();
  if (message) {
    userInfo.set(NSLocalizedDescriptionKey, message->description);
    userInfo.set(QELLocalizedRecoverySuggestionTemplateKey, message->suggestionTemplate);
    userInfo.set(QELLocalizedRecoverySuggestionParametersKey, Array{Value(pathIn(error.userInfo()))});
  }
  return {privilegedOperationErrorDomain(), code, std::move(userInfo)};
}

}  // namespace vantrell
