// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/Findings.h"

#include <fmt/format.h>

#include "foundation/PathUtilities.h"
#include "foundation/Value.h"

namespace vantrell::host::codesign {
namespace {

Array arrayOf(const std::vector<std::string>& paths) {
  Array array;
  array.reserve(paths.size());
  for (const std::string& path : paths) array.emplace_back(displayablePath(path));
  return array;
}

}  // namespace

ErrorOrNil Findings::asError() const {
  if (!general_.empty()) return codeSigningError(general_.front().code, general_.front().text);
  if (!hasResourceFindings()) return std::nullopt;
  Dictionary lists;
  if (!added_.empty()) lists.set(SecCSResourceAdded, arrayOf(added_));
  if (!altered_.empty()) lists.set(SecCSResourceAltered, arrayOf(altered_));
  if (!missing_.empty()) lists.set(SecCSResourceMissing, arrayOf(missing_));
  return Error(kCodeSigningErrorDomain, code_signing_error::kBadResource, std::move(lists));
}

std::vector<std::string> Findings::sentences() const {
  std::vector<std::string> sentences;
  for (const Finding& finding : general_) sentences.push_back(finding.text);
  const auto list = [&sentences](const std::vector<std::string>& paths, const char* what) {
    for (const std::string& path : paths) sentences.push_back(fmt::format("{}: {}", what, path));
    if (paths.size() == kMaximumPaths) sentences.emplace_back("There may be more; the list ends here.");
  };
  list(added_, "Not sealed, but there");
  list(altered_, "Not as it was sealed");
  list(missing_, "Sealed, but missing");
  return sentences;
}

Error codeSigningError(std::int64_t code, std::string text) {
  return Error(kCodeSigningErrorDomain, code, {{NSLocalizedDescriptionKey, std::move(text)}});
}

std::string sentenceOf(const Error& error) {
  const Value* description = error.userInfo().find(NSLocalizedDescriptionKey);
  if (description != nullptr && description->asString() != nullptr) return *description->asString();
  return fmt::format("{} error {}", error.domain(), error.code());
}

}  // namespace vantrell::host::codesign
