// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManagerErrors.h"

#include <string>

#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

constexpr std::int64_t kReadUnknown = 256;
constexpr std::int64_t kWriteUnknown = 512;

struct CocoaCodes {
  std::int64_t posix;
  std::int64_t reading;
  std::int64_t writing;
};

// The platform's codes (its public FoundationErrors.h) and which error numbers it gives them for. A folder that can't
// be removed because it is not empty counts as not permitted.
constexpr CocoaCodes kCocoaCodes[] = {
    {posix::kNoEntry, 260, 4},
    {posix::kNotPermitted, 257, 513},
    {posix::kAccessDenied, 257, 513},
    {posix::kNameTooLong, 258, 514},
    {posix::kFileTooLarge, 263, kWriteUnknown},
    {posix::kExists, kReadUnknown, 516},
    {posix::kNoSpace, kReadUnknown, 640},
    {posix::kQuotaExceeded, kReadUnknown, 640},
    {posix::kReadOnlyFileSystem, kReadUnknown, 642},
    {posix::kNotEmpty, kReadUnknown, 513},
};

const CocoaCodes* cocoaCodesFor(const Error& posixError) {
  for (const auto& codes : kCocoaCodes)
    if (posixError.isPosix(codes.posix)) return &codes;
  return nullptr;
}

}  // namespace

Error fileReadingError(const Error& posixError, std::string_view path) {
  const auto* codes = cocoaCodesFor(posixError);
  return {std::string(kCocoaErrorDomain), codes ? codes->reading : kReadUnknown,
          Dictionary{{NSFilePathErrorKey, displayablePath(path)}, {NSUnderlyingErrorKey, posixError}}};
}

Error fileWritingError(const Error& posixError, std::string_view path, std::string_view variant) {
  const auto* codes = cocoaCodesFor(posixError);
  return {std::string(kCocoaErrorDomain), codes ? codes->writing : kWriteUnknown,
          Dictionary{{NSFilePathErrorKey, displayablePath(path)},
                     {NSUnderlyingErrorKey, posixError},
                     {NSUserStringVariantErrorKey, Array{Value(variant)}}}};
}

}  // namespace vantrell
