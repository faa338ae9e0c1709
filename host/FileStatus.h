// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include "foundation/Date.h"

namespace vantrell::host {

/// Object flags in BSD's numbering (sys/stat.h). A host maps what its kernel has; what it has not never appears.
namespace file_flags {
inline constexpr std::uint32_t kUserNoDump = 0x1;            // UF_NODUMP
inline constexpr std::uint32_t kUserImmutable = 0x2;         // UF_IMMUTABLE
inline constexpr std::uint32_t kUserAppend = 0x4;            // UF_APPEND
inline constexpr std::uint32_t kDataVault = 0x80;            // UF_DATAVAULT
inline constexpr std::uint32_t kSystemImmutable = 0x20000;   // SF_IMMUTABLE
inline constexpr std::uint32_t kSystemAppend = 0x40000;      // SF_APPEND
inline constexpr std::uint32_t kSystemRestricted = 0x80000;  // SF_RESTRICTED
inline constexpr std::uint32_t kSystemNoUnlink = 0x100000;   // SF_NOUNLINK
}  // namespace file_flags

enum class FileType : std::uint8_t {
  Unknown,
  Regular,
  Directory,
  SymbolicLink,
  Fifo,
  Socket,
  CharacterDevice,
  BlockDevice,
  Whiteout,
};

struct FileStatus {
  FileType type = FileType::Unknown;
  std::uint16_t permissions = 0;  // the low twelve mode bits as shown; see DirectoryHandle::ownPermissionsOf
  std::uint32_t flags = 0;        // file_flags
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t links = 0;
  std::uint64_t size = 0;           // bytes
  std::uint64_t specialDevice = 0;  // what a device object stands for, in the host's own numbering
  Date accessed;
  Date modified;
  std::optional<Date> created;  // where the file system keeps it

  bool isDirectory() const noexcept { return type == FileType::Directory; }
  bool isSymbolicLink() const noexcept { return type == FileType::SymbolicLink; }
};

enum class FollowLinks : bool { No, Yes };

}  // namespace vantrell::host
