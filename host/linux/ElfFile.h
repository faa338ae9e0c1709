// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// One section as it lies in the file. Name and contents are borrowed from the file's bytes.
struct ElfSection {
  std::string_view name;
  bool isAllocated = false;        // SHF_ALLOC: part of the program in memory
  bool occupiesFileSpace = false;  // not SHT_NOBITS
  DataView contents;               // empty where no file space is occupied
};

/// The sections of an ELF file of either class and byte order, read from its bytes in memory; those must outlive this.
/// Every section was checked against the file's end.
class ElfFile {
 public:
  /// Longer names, which no executable has, are refused: thousands of sections may share one.
  static constexpr std::size_t kMaximumNameLength = 4096;

  /// Longer files are not worth loading.
  static constexpr std::uint64_t kMaximumFileSize = std::uint64_t{8} << 30;

  /// POSIX error 79 for what is no ELF file; 94 for one whose headers are inconsistent, that has no sections, or has
  /// more of them than the header's 16-bit count can say (extended numbering, which only unlinked files need).
  static Result<ElfFile> fromBytes(DataView bytes);

  /// In the order of the section header table, without its unused entries.
  const std::vector<ElfSection>& sections() const noexcept { return sections_; }

  /// Contents of the last section of that name; nothing when there is none.
  std::optional<DataView> contentsOf(std::string_view name) const noexcept;

 private:
  std::vector<ElfSection> sections_;
};

}  // namespace vantrell::host
