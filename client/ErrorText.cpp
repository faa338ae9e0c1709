// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/ErrorText.h"

#include <cstdint>
#include <string_view>

#include <fmt/core.h>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "client/PosixMessages.h"
#include "foundation/Value.h"

namespace vantrell {

namespace {

constexpr std::size_t kMostCauses = 8;

std::string textUnder(const Error& error, const char* key) {
  const auto* value = error.userInfo().find(key);
  const auto* text = value ? value->asString() : nullptr;
  return text ? *text : std::string();
}

/// The platform's codes of its file manager and of its property lists.
std::string_view cocoaMessage(std::int64_t code) {
  switch (code) {
    case 4:
      return "The file or folder does not exist.";
    case 256:
      return "The file or folder could not be read.";
    case 257:
      return "The file or folder could not be read because the permission is missing.";
    case 258:
    case 514:
      return "The name of the file or folder is not valid.";
    case 260:
      return "There is no such file or folder.";
    case 263:
      return "The file is too large to be read.";
    case 512:
      return "The file or folder could not be changed.";
    case 513:
      return "The file or folder could not be changed because the permission is missing.";
    case 516:
      return "A file or folder with this name exists already.";
    case 640:
      return "There is not enough space left on the volume.";
    case 642:
      return "The volume can only be read.";
    case 3840:
      return "The property list is damaged.";
    case 3851:
      return "The data can't be stored in a property list.";
    default:
      return {};
  }
}

std::string sentenceFor(const Error& error) {
  if (error.isPosix()) return std::string(posixMessage(error.code()));
  if (error.domain() == kCocoaErrorDomain) return std::string(cocoaMessage(error.code()));
  return {};
}

std::string descriptionFor(const Error& error) {
  auto sentence = sentenceFor(error);
  if (sentence.empty()) return "The operation could not be completed.";
  for (const char* key : {NSFilePathErrorKey, NSSourceFilePathErrorKey}) {
    if (const auto path = textUnder(error, key); !path.empty()) return path + ": " + sentence;
  }
  return sentence;
}

}  // namespace

ErrorText textOfError(const Error& error) {
  const auto localized = QELPrivilegedToolOperationSet::localizedErrorForPrivilegedOperationError(error);
  ErrorText text{textUnder(*localized, NSLocalizedDescriptionKey),
                 textUnder(*localized, NSLocalizedRecoverySuggestionErrorKey)};
  if (text.description.empty() && error.code() != 0) text.description = descriptionFor(error);
  return text;
}

std::vector<std::string> causesOfError(const Error& error) {
  std::vector<std::string> causes;
  Error current = error;
  while (causes.size() < kMostCauses) {
    const auto* value = current.userInfo().find(NSUnderlyingErrorKey);
    const auto* cause = value ? value->asError() : nullptr;
    if (!cause) break;
    // By way of a copy: `current` owns what `cause` points to.
    current = Error(*cause);
    causes.push_back(textOfError(current).description + " " + originOfError(current));
  }
  return causes;
}

std::string originOfError(const Error& error) {
  return fmt::format("({}, code {})", error.domain(), error.code());
}

}  // namespace vantrell
