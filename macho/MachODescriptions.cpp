// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/MachODescriptions.h"

#include <array>
#include <span>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "macho/MachORecords.h"

namespace vantrell::macho {

namespace {

struct FlagPhrase {
  std::uint32_t bit;
  std::string_view phrase;
};

// In the order in which the phrases appear, which is not that of the bits.
constexpr std::array kHeaderFlags = {
    FlagPhrase{0x1, "no undefined references"},
    FlagPhrase{0x2, "incremental link output"},
    FlagPhrase{0x4, "for dynamic linker"},
    FlagPhrase{0x80, "two-level namespace"},
    FlagPhrase{0x8, "bind at load"},
    FlagPhrase{0x10, "prebound"},
    FlagPhrase{0x800, "prebindable"},
    FlagPhrase{0x400, "no fix prebinding"},
    FlagPhrase{0x1000, "all modules bound"},
    FlagPhrase{0x4000, "canonicalized"},
    FlagPhrase{0x20, "split segments"},
    FlagPhrase{0x100, "force flat namespace"},
    FlagPhrase{0x2000, "subsections via symbols"},
    FlagPhrase{0x200, "no multiple definitions"},
};

constexpr std::array kSegmentFlags = {
    FlagPhrase{0x1, "high virtual memory"},
    FlagPhrase{0x4, "no relocation"},
};

constexpr std::array kSectionAttributes = {
    FlagPhrase{0x80000000, "pure instructions"},
    FlagPhrase{0x400, "some instructions"},
    FlagPhrase{0x40000000, "not for table of contents"},
    FlagPhrase{0x200, "external relocations"},
    FlagPhrase{0x100, "local relocations"},
    FlagPhrase{0x20000000, "static symbols can be stripped"},
    FlagPhrase{0x10000000, "must not be dead-stripped"},
    FlagPhrase{0x08000000, "must not be dead-stripped if live code"},
};

constexpr std::array<std::string_view, 13> kSectionTypes = {
    "regular",
    "zero-fill on demand",
    "C string literals",
    "4-byte literals",
    "8-byte literals",
    "literal pointers",
    "non-lazy symbol pointers",
    "lazy symbol pointers",
    "symbol stubs",
    "module initialization function pointers",
    "module termination function pointers",
    "coalesced",
    "zero-fill on demand > 4 GB",
};

void addPhrases(std::uint32_t flags, std::span<const FlagPhrase> table, std::vector<std::string>& phrases) {
  for (const FlagPhrase& entry : table) {
    if ((flags & entry.bit) != 0) phrases.emplace_back(entry.phrase);
  }
}

std::string joined(const std::vector<std::string>& phrases) {
  if (phrases.empty()) return "<none>";
  return fmt::format("{}", fmt::join(phrases, ", "));
}

std::string printed(const std::optional<std::string>& text) {
  return text.value_or(std::string(kMissingText));
}

}  // namespace

std::string descriptionForMachOFileType(std::uint32_t fileType) {
  switch (fileType) {
    case 1:
      return "intermediate object file";
    case 2:
      return "executable";
    case 4:
      return "core dump";
    case 5:
      return "firmware executable";
    case 6:
      return "dynamic shared library";
    case 7:
      return "dynamic linker shared library";
    case 8:
      return "loadable bundle (plug-in)";
    case 10:
      return "symbol table";
    default:
      return "unknown file type";
  }
}

std::string descriptionForMachOFlags(std::uint32_t flags) {
  std::vector<std::string> phrases;
  addPhrases(flags, kHeaderFlags, phrases);
  return joined(phrases);
}

std::string descriptionForSegmentFlags(std::uint32_t flags) {
  std::vector<std::string> phrases;
  addPhrases(flags, kSegmentFlags, phrases);
  return joined(phrases);
}

std::string descriptionForSectionFlags(std::uint32_t flags) {
  const std::uint32_t type = flags & kSectionTypeMask;
  std::vector<std::string> phrases;
  phrases.push_back(fmt::format("type: {}", type < kSectionTypes.size() ? kSectionTypes[type] : "unknown"));
  addPhrases(flags, kSectionAttributes, phrases);
  return joined(phrases);
}

std::string descriptionForSegment(DataView record) {
  if (record.empty()) return "<nil>";
  const std::uint32_t command = Segment(record, Width::Bits32, Swapped::No).cmd();
  const Segment segment(record, command == kSegment64Command ? Width::Bits64 : Width::Bits32, Swapped::No);
  if (command != kSegment64Command && command != kSegmentCommand) {
    return fmt::format("non-segment load command (type {:x}, size {})", command, segment.cmdsize());
  }
  return fmt::format(
      "segment ({} bit): '{}'\n[VM: {} size: {} offset: {} size: {} maximum protection: {} initial protection: {} "
      "sections: {} flags: {}]\n",
      command == kSegment64Command ? 64 : 32, printed(segment.segname()), segment.vmaddr(), segment.vmsize(),
      segment.fileoff(), segment.filesize(), segment.maxprot(), segment.initprot(), segment.nsects(),
      descriptionForSegmentFlags(segment.flags()));
}

std::string descriptionForSection(DataView record) {
  if (record.empty()) return "<nil>";
  if (record.size() != kSectionSize32 && record.size() != kSectionSize64) {
    return fmt::format("non-section data of size {}\n", record.size());
  }
  const Section section(record, record.size() == kSectionSize64 ? Width::Bits64 : Width::Bits32, Swapped::No);
  return fmt::format(
      "section ({} bit) '{},{}': address: {} size: {} offset: {} alignment: {} relocation offset: {} number of "
      "relocation entries: {} flags: {}",
      record.size() == kSectionSize64 ? 64 : 32, printed(section.segname()), printed(section.sectname()),
      section.addr(), section.contentSize(), section.offset(), section.align(), section.reloff(), section.nreloc(),
      descriptionForSectionFlags(section.flags()));
}

}  // namespace vantrell::macho
