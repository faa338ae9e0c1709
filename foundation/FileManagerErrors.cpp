// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManagerErrors.h"

#include <string>
#include <utility>

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

std::int64_t readingCode(const Error& posixError) {
  const auto* codes = cocoaCodesFor(posixError);
  return codes ? codes->reading : kReadUnknown;
}
std::int64_t writingCode(const Error& posixError) {
  const auto* codes = cocoaCodesFor(posixError);
  return codes ? codes->writing : kWriteUnknown;
}

Error cocoaError(std::int64_t code, const Error& posixError, std::string_view path, std::string_view variant = {}) {
  Dictionary userInfo{{NSFilePathErrorKey, displayablePath(path)}, {NSUnderlyingErrorKey, posixError}};
  if (!variant.empty()) userInfo.set(NSUserStringVariantErrorKey, Array{Value(variant)});
  return {std::string(kCocoaErrorDomain), code, std::move(userInfo)};
}

Error withTransfer(const Error& error, const FileTransfer& transfer) {
  auto userInfo = error.userInfo();
  userInfo.set(NSSourceFilePathErrorKey, displayablePath(transfer.source));
  userInfo.set(NSDestinationFilePathErrorKey, displayablePath(transfer.destination));
  return {error.domain(), error.code(), std::move(userInfo)};
}

}  // namespace

Error fileReadingError(const Error& posixError, std::string_view path) {
  return cocoaError(readingCode(posixError), posixError, path);
}

Error fileWritingError(const Error& posixError, std::string_view path) {
  return cocoaError(writingCode(posixError), posixError, path);
}

Error fileWritingError(const Error& posixError, std::string_view path, std::string_view variant) {
  return cocoaError(writingCode(posixError), posixError, path, variant);
}

Error fileTransferError(const Error& posixError, std::string_view failed, const FileTransfer& transfer) {
  return withTransfer(cocoaError(writingCode(posixError), posixError, failed, transfer.variant), transfer);
}

Error fileTransferReadingError(const Error& posixError, std::string_view failed, const FileTransfer& transfer) {
  return withTransfer(cocoaError(readingCode(posixError), posixError, failed, transfer.variant), transfer);
}

}  // namespace vantrell
