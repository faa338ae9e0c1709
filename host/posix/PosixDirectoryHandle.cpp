// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixDirectoryHandle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/DescriptorCalls.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileCreationCalls.h"
#include "host/posix/LinkTarget.h"
#include "host/posix/OwnerCalls.h"
#include "host/posix/PosixFileStreams.h"

namespace vantrell::host {
namespace {

constexpr unsigned kAccessBits = 0777;
constexpr unsigned kAllBits = 07777;

}  // namespace

ErrorOrNil PosixDirectoryHandle::removeFile(const char* name) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  if (unlinkat(folder(), name, 0) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil PosixDirectoryHandle::removeDirectory(const char* name) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  if (unlinkat(folder(), name, AT_REMOVEDIR) != 0) return errorFromErrno();
  return std::nullopt;
}

Result<std::string> PosixDirectoryHandle::readLinkOf(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readLinkTarget(folder(), name);
}

Result<std::unique_ptr<FileReader>> PosixDirectoryHandle::openFile(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  auto file = openRegularFile(folder(), name);
  if (!file) return failure(file.error());
  return std::make_unique<PosixFileReader>(std::move(*file));
}

Result<std::unique_ptr<FileWriter>> PosixDirectoryHandle::createFile(const char* name, std::uint16_t permissions) {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
  FileDescriptor file(openat(folder(), name, kFlags, permissions & kAccessBits));
  if (!file) return errnoFailure();
  // A file system that keeps no modes refuses.
  if (fchmod(file.get(), permissions & kAllBits) != 0 && errno != EPERM && errno != EOPNOTSUPP && errno != ENOTSUP)
    return errnoFailure();
  return std::make_unique<PosixFileWriter>(std::move(file));
}

ErrorOrNil PosixDirectoryHandle::makeDirectory(const char* name, std::uint16_t permissions) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return createFolder(folder(), name, permissions);
}

ErrorOrNil PosixDirectoryHandle::makeSymbolicLink(const char* name, const std::string& target) {
  if (!isEntryName(name) || target.find('\0') != std::string::npos) return Error::posix(posix::kInvalidArgument);
  if (symlinkat(target.c_str(), folder(), name) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil PosixDirectoryHandle::makeSpecialFile(const char* name, const FileStatus& like) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return createSpecialFile(folder(), name, like);
}

// Another host's handle is another file system.
ErrorOrNil PosixDirectoryHandle::makeLink(const char* name, const DirectoryHandle& sourceFolder,
                                          const char* sourceName) {
  if (!isEntryName(name) || !isEntryName(sourceName)) return Error::posix(posix::kInvalidArgument);
  const auto* source = dynamic_cast<const PosixDirectoryHandle*>(&sourceFolder);
  if (!source) return Error::posix(posix::kCrossDevice);
  if (linkat(source->folder(), sourceName, folder(), name, 0) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil PosixDirectoryHandle::rename(const char* name, DirectoryHandle& destination, const char* newName) {
  if (!isEntryName(name) || !isEntryName(newName)) return Error::posix(posix::kInvalidArgument);
  const auto* target = dynamic_cast<const PosixDirectoryHandle*>(&destination);
  if (!target) return Error::posix(posix::kCrossDevice);
  return renameWithoutReplacing(folder(), name, target->folder(), newName);
}

ErrorOrNil PosixDirectoryHandle::setOwnerOf(const char* name, std::optional<std::uint32_t> owner,
                                            std::optional<std::uint32_t> group) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return writeOwnerOfEntry(folder(), name, owner, group);
}

ErrorOrNil PosixDirectoryHandle::synchronize() {
  const auto error = synchronizeDescriptor(folder());
  if (!error || !error->isPosix(posix::kBadDescriptor)) return error;
  // Held as a place only.
  const FileDescriptor opened(openat(folder(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return opened ? synchronizeDescriptor(opened.get()) : errorFromErrno();
}

}  // namespace vantrell::host
