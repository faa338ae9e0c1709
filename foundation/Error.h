// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Dictionary.h"

namespace vantrell {

/// What went wrong (or, with code 0, what was found out): a domain, a code whose meaning the domain fixes, and user
/// info. Immutable and cheap to copy; copies share their contents.
class Error {
 public:
  Error(std::string domain, std::int64_t code);
  Error(std::string domain, std::int64_t code, Dictionary userInfo);

  /// An error of the POSIX domain without user info. `code` is Darwin's number on every host (foundation/PosixCodes.h).
  static Error posix(std::int64_t code);

  const std::string& domain() const noexcept;
  std::int64_t code() const noexcept;
  /// Empty when there is none.
  const Dictionary& userInfo() const noexcept;
  /// An error that was given no user info is told apart from one whose user info is empty.
  bool hasUserInfo() const noexcept;

  bool isPosix() const noexcept;
  bool isPosix(std::int64_t code) const noexcept { return isPosix() && this->code() == code; }

  bool operator==(const Error& other) const;

 private:
  struct Contents;
  std::shared_ptr<const Contents> contents_;
};

/// Nothing means success.
using ErrorOrNil = std::optional<Error>;

// The platform's error domains.
inline constexpr std::string_view kPosixErrorDomain = "NSPOSIXErrorDomain";
inline constexpr std::string_view kCocoaErrorDomain = "NSCocoaErrorDomain";

// The platform's user-info keys; the constants bear the platform's names, the texts are what travels.
inline constexpr char NSLocalizedDescriptionKey[] = "NSLocalizedDescription";
inline constexpr char NSLocalizedRecoverySuggestionErrorKey[] = "NSLocalizedRecoverySuggestion";
inline constexpr char NSUnderlyingErrorKey[] = "NSUnderlyingError";
inline constexpr char NSFilePathErrorKey[] = "NSFilePath";
inline constexpr char NSSourceFilePathErrorKey[] = "NSSourceFilePathErrorKey";
inline constexpr char NSDestinationFilePathErrorKey[] = "NSDestinationFilePath";
inline constexpr char NSUserStringVariantErrorKey[] = "NSUserStringVariant";

}  // namespace vantrell
