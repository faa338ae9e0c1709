// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "foundation/Data.h"
#include "macho/LiteralStrings.h"
#include "macho/MachOFormat.h"

/// The structures of a Mach-O file, each a copy of its bytes with the numbers in host order (little-endian on every
/// platform that this is built for). The accessors bear the names that the format gives the fields.
namespace vantrell::macho {

/// The two forms that most structures have.
enum class Width : std::uint8_t { Bits32, Bits64 };

/// Stored numbers are big-endian, or those of a part in the opposite byte order.
enum class Swapped : bool { No, Yes };

/// The 32-bit number at `offset`, which must lie within `bytes` with all its four bytes.
std::uint32_t readWord(DataView bytes, std::size_t offset, Swapped swapped = Swapped::No) noexcept;

/// The bytes of one structure. A source that is too short is taken as filled up with zero bytes.
template <std::size_t kCapacity>
class Record {
 public:
  /// The structure's own length, its numbers in host order.
  DataView bytes() const noexcept { return {storage_.data(), size_}; }
  std::size_t size() const noexcept { return size_; }

  bool operator==(const Record&) const = default;

 protected:
  /// `layout` lists the structure's fields: the width of a number, or the negative length of bytes that have no order.
  Record(DataView source, std::span<const std::int8_t> layout, Swapped swapped) noexcept;

  std::uint32_t word(std::size_t offset) const noexcept;
  std::uint64_t longWord(std::size_t offset) const noexcept;
  std::optional<std::string> text(std::size_t offset) const;

 private:
  std::array<std::uint8_t, kCapacity> storage_{};
  std::size_t size_ = 0;
};

/// One architecture of a fat file (fat_arch, 20 bytes).
class FatArch : public Record<kFatArchSize> {
 public:
  FatArch(DataView source, Swapped swapped) noexcept;
  /// The record made up for a thin file.
  FatArch(std::int32_t cputype, std::int32_t cpusubtype, std::uint32_t size) noexcept;

  std::int32_t cputype() const noexcept { return static_cast<std::int32_t>(word(0)); }
  std::int32_t cpusubtype() const noexcept { return static_cast<std::int32_t>(word(4)); }
  std::uint32_t offset() const noexcept { return word(8); }  // of the part, from the start of the file
  std::uint32_t partSize() const noexcept { return word(12); }
  std::uint32_t align() const noexcept { return word(16); }  // exponent of a power of two
};

/// mach_header (28 bytes) or mach_header_64 (32 bytes).
class MachHeader : public Record<kHeaderSize64> {
 public:
  MachHeader(DataView source, Width width, Swapped swapped) noexcept;

  std::uint32_t magic() const noexcept { return word(0); }
  std::int32_t cputype() const noexcept { return static_cast<std::int32_t>(word(4)); }
  std::int32_t cpusubtype() const noexcept { return static_cast<std::int32_t>(word(8)); }
  std::uint32_t filetype() const noexcept { return word(12); }
  std::uint32_t ncmds() const noexcept { return word(16); }
  std::uint32_t sizeofcmds() const noexcept { return word(20); }
  std::uint32_t flags() const noexcept { return word(24); }
  std::uint32_t reserved() const noexcept { return word(28); }  // 0 in the 32-bit form, which has no such field
};

/// segment_command (56 bytes) or segment_command_64 (72 bytes).
class Segment : public Record<kSegmentSize64> {
 public:
  Segment(DataView source, Width width, Swapped swapped) noexcept;

  Width width() const noexcept { return size() == kSegmentSize64 ? Width::Bits64 : Width::Bits32; }
  std::uint32_t cmd() const noexcept { return word(0); }
  std::uint32_t cmdsize() const noexcept { return word(4); }
  std::optional<std::string> segname() const { return text(8); }
  std::uint64_t vmaddr() const noexcept { return address(0); }
  std::uint64_t vmsize() const noexcept { return address(1); }
  std::uint64_t fileoff() const noexcept { return address(2); }
  std::uint64_t filesize() const noexcept { return address(3); }
  std::uint32_t maxprot() const noexcept { return last(0); }
  std::uint32_t initprot() const noexcept { return last(1); }
  std::uint32_t nsects() const noexcept { return last(2); }
  std::uint32_t flags() const noexcept { return last(3); }

 private:
  std::uint64_t address(std::size_t index) const noexcept;
  std::uint32_t last(std::size_t index) const noexcept;
};

/// section (68 bytes) or section_64 (80 bytes).
class Section : public Record<kSectionSize64> {
 public:
  Section(DataView source, Width width, Swapped swapped) noexcept;

  Width width() const noexcept { return size() == kSectionSize64 ? Width::Bits64 : Width::Bits32; }
  std::optional<std::string> sectname() const { return text(0); }
  std::optional<std::string> segname() const { return text(kNameSize); }
  std::uint64_t addr() const noexcept { return address(0); }
  std::uint64_t contentSize() const noexcept { return address(1); }
  std::uint32_t offset() const noexcept { return rest(0); }  // of the contents, from the start of the part
  std::uint32_t align() const noexcept { return rest(1); }
  std::uint32_t reloff() const noexcept { return rest(2); }
  std::uint32_t nreloc() const noexcept { return rest(3); }
  std::uint32_t flags() const noexcept { return rest(4); }
  std::uint32_t reserved1() const noexcept { return rest(5); }
  std::uint32_t reserved2() const noexcept { return rest(6); }
  std::uint32_t type() const noexcept { return flags() & kSectionTypeMask; }

 private:
  std::uint64_t address(std::size_t index) const noexcept;
  std::uint32_t rest(std::size_t index) const noexcept;
};

/// Sections under "SEGMENT,SECTION".
using SectionsByName = std::map<std::string, Section, LiteralOrder>;

/// The section's key: both names, "(null)" for one that is no text.
std::string keyForSection(const Section& section);

}  // namespace vantrell::macho
