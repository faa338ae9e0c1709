// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PropertyListFile.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

FileSignature signatureFrom(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_size};
}

/// Everything in the file, or an error when that is more than `limit` bytes.
Result<Data> readAll(int file, std::size_t expected, std::size_t limit) {
  Data content(expected + 1);  // a file of the expected size shows its end with the first reading
  std::size_t size = 0;
  for (;;) {
    const auto count = read(file, content.data() + size, content.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errnoFailure();
    size += static_cast<std::size_t>(count);
    if (size > limit) return posixFailure(posix::kFileTooLarge);
    if (count == 0) break;
    if (size == content.size()) content.resize(size * 2);
  }
  content.resize(size);
  return content;
}

ErrorOrNil writeAll(int file, DataView content) {
  while (!content.empty()) {
    const auto count = write(file, content.data(), content.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errorFromErrno();
    if (count == 0) return Error::posix(posix::kNoSpace);
    content = content.subspan(static_cast<std::size_t>(count));
  }
  return std::nullopt;
}

// Some file systems keep folders in such a way that there is nothing to synchronise, and say so.
ErrorOrNil synchronizeFolder(int folder) {
  if (fsync(folder) == 0 || errno == EINVAL || errno == EROFS) return std::nullopt;
  return errorFromErrno();
}

ErrorOrNil fillFile(int file, DataView content, const FileReplacement& replacement) {
  if (replacement.owner && fchown(file, replacement.owner->first, replacement.owner->second) != 0)
    return errorFromErrno();
  if (fchmod(file, replacement.permissions) != 0) return errorFromErrno();
  if (auto error = writeAll(file, content)) return error;
  if (fsync(file) != 0) return errorFromErrno();
  return std::nullopt;
}

}  // namespace

Result<std::optional<PropertyListFile>> readPropertyListFile(int folder, const std::string& name) {
  // What is no file after all, a pipe for example, must not be waited for.
  const FileDescriptor file(openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file && errno == ENOENT) return std::nullopt;
  if (!file) return errnoFailure();
  struct stat status;
  if (fstat(file.get(), &status) != 0) return errnoFailure();
  if (!S_ISREG(status.st_mode)) return posixFailure(posix::kWrongFormat);
  constexpr PropertyListLimits kLimits;
  if (static_cast<std::size_t>(status.st_size) > kLimits.maximumSize) return posixFailure(posix::kFileTooLarge);
  const auto content = readAll(file.get(), static_cast<std::size_t>(status.st_size), kLimits.maximumSize);
  if (!content) return failure(content.error());
  auto list = propertyListFromData(*content, kLimits);
  if (!list) return failure(list.error());
  auto* contents = list->root.asDictionary();
  if (!contents) return posixFailure(posix::kWrongFormat);
  return PropertyListFile{std::move(*contents), signatureFrom(status), status.st_mode & 07777u, status.st_uid,
                          status.st_gid};
}

Result<std::optional<FileSignature>> signatureOfFile(int folder, const std::string& name) {
  struct stat status;
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return signatureFrom(status);
  if (errno == ENOENT) return std::nullopt;
  return errnoFailure();
}

ErrorOrNil replaceFile(int folder, const std::string& name, DataView content, const FileReplacement& replacement) {
  const auto* temporary = replacement.temporaryName.c_str();
  if (unlinkat(folder, temporary, 0) != 0 && errno != ENOENT) return errorFromErrno();
  const FileDescriptor file(
      openat(folder, temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file) return errorFromErrno();
  auto error = fillFile(file.get(), content, replacement);
  if (!error && renameat(folder, temporary, folder, name.c_str()) != 0) error = errorFromErrno();
  if (error) {
    unlinkat(folder, temporary, 0);
    return error;
  }
  return synchronizeFolder(folder);
}

ErrorOrNil removeFile(int folder, const std::string& name) {
  if (unlinkat(folder, name.c_str(), 0) == 0) return synchronizeFolder(folder);
  if (errno == ENOENT) return std::nullopt;
  return errorFromErrno();
}

}  // namespace vantrell::host
