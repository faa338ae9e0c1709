// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

namespace vantrell::macho {

/// What the reading of one file may cost. Structures of a Mach-O file may overlap and a load command of length 0 is
/// read again and again, so the file's length alone bounds neither time nor memory. Each limit is one that no
/// well-formed file exceeds, plus room for the small overlaps that are met in practice.
class MachOReadingBudget {
 public:
  explicit MachOReadingBudget(std::uint64_t fileLength) noexcept;

  /// The kernel of macOS reads the fat header and its records from the file's first page, of 16 KiB at most:
  /// (16384 - 8) / 20.
  static constexpr std::uint64_t kMaximumParts = 818;

  /// Segments, sections and signatures of all parts together. A part's symbol table numbers its sections with one byte
  /// (MAX_SECT is 255 in mach-o/nlist.h); 255 of them and 65 segments and signatures in each of 818 parts come to
  /// 261,760.
  static constexpr std::uint64_t kMaximumRecords = 262'144;

  /// The kernel refuses load commands shorter than their own first two words, so commands that follow one another are
  /// at most one for each 8 bytes of the file. So many more may be readings of a command of length 0.
  static constexpr std::uint64_t kRepeatedCommands = 1'048'576;

  /// The signatures of a file don't overlap and are together no longer than it is.
  static constexpr std::uint64_t kRepeatedSignatureBytes = 16 << 20;

  /// The contents of sections don't overlap, but for thread-local zero-fill ones: their stored offset means nothing. A
  /// part has one of them, or in unlinked files a few.
  static constexpr std::uint64_t kContentReadings = 16;
  static constexpr std::uint64_t kRepeatedContentBytes = 16 << 20;

  // Each takes its share and is false when nothing is left.
  [[nodiscard]] bool takeCommand() noexcept { return take(commands_, 1); }
  [[nodiscard]] bool takeRecords(std::uint64_t count) noexcept { return take(records_, count); }
  [[nodiscard]] bool takeSignature(std::uint64_t bytes) noexcept { return take(signatureBytes_, bytes); }
  [[nodiscard]] bool takeContents(std::uint64_t bytes) noexcept { return take(contentBytes_, bytes); }

 private:
  static bool take(std::uint64_t& left, std::uint64_t share) noexcept;

  std::uint64_t commands_;
  std::uint64_t records_ = kMaximumRecords;
  std::uint64_t signatureBytes_;
  std::uint64_t contentBytes_;
};

}  // namespace vantrell::macho
