// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/MachOSlices.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/linux/codesign/ByteRange.h"
#include "host/linux/codesign/Findings.h"
#include "macho/MachOFormat.h"
#include "macho/MachORecords.h"

namespace vantrell::host::codesign {
namespace {

using namespace macho;

// A universal file shares its magic number with Java's class files, whose next word is never as small as this.
constexpr std::uint32_t kMaximumSlices = 32;
// Slices begin on pages of some size; nobody uses larger ones.
constexpr std::uint32_t kLargestAlignmentExponent = 15;
constexpr std::uint32_t kMaximumSections = 255;  // a segment; MAX_SECT of mach-o/nlist.h

std::unexpected<Error> malformed(const char* text) {
  return codeSigningFailure(code_signing_error::kBadObject, text);
}

std::string architectureName(std::int32_t type, std::int32_t subtype) {
  switch (type) {
    case 7:
      return "i386";
    case 0x01000007:
      return "x86_64";
    case 12:
      return "arm";
    case 0x0100000C:
      return (subtype & 0xFFFFFF) == 2 ? "arm64e" : "arm64";
    case 18:
      return "ppc";
    case 0x01000012:
      return "ppc64";
    default:
      return fmt::format("cpu-{}", type);
  }
}

/// The load commands of one slice.
class CommandReader {
 public:
  CommandReader(MachOSlice& slice, Width width, Swapped swapped, std::uint32_t count, std::uint64_t size)
      : slice_(slice), width_(width), swapped_(swapped), count_(count), size_(size) {}

  ErrorOrNil read() {
    const auto commands = rangeOf(slice_.bytes, width_ == Width::Bits64 ? kHeaderSize64 : kHeaderSize32, size_);
    if (!commands) return error("The load commands lie outside the file.");
    std::uint64_t place = 0;
    for (std::uint32_t number = 0; number < count_; ++number) {
      const auto header = rangeOf(*commands, place, kLoadCommandSize);
      if (!header) return error("There are fewer load commands than announced.");
      const std::uint32_t length = readWord(*header, 4, swapped_);
      const auto command = rangeOf(*commands, place, length);
      if (length < kLoadCommandSize || length % 4 != 0 || !command) return error("A load command has a wrong length.");
      if (auto failed = readCommand(*command)) return failed;
      place += length;
    }
    return std::nullopt;
  }

 private:
  static Error error(const char* text) { return codeSigningError(code_signing_error::kBadObject, text); }

  ErrorOrNil readCommand(DataView command) {
    switch (readWord(command, 0, swapped_)) {
      case kCodeSignatureCommand:
        return readSignature(command);
      case kSegment64Command:
        return width_ == Width::Bits64 ? readSegment(command) : error("A segment has the wrong width.");
      case kSegmentCommand:
        return width_ == Width::Bits32 ? readSegment(command) : error("A segment has the wrong width.");
      default:
        return std::nullopt;
    }
  }

  ErrorOrNil readSignature(DataView command) {
    if (slice_.signatureOffset) return error("The file has two signatures.");
    if (command.size() != kSignatureCommandSize) return error("The signature's load command has a wrong length.");
    const std::uint32_t offset = readWord(command, 8, swapped_);
    const std::uint32_t size = readWord(command, 12, swapped_);
    const auto signature = rangeOf(slice_.bytes, offset, size);
    if (!signature) return error("The signature lies outside the file.");
    if (std::uint64_t{offset} + size != slice_.bytes.size()) return error("Something follows the signature.");
    slice_.signatureOffset = offset;
    slice_.signature = *signature;
    return std::nullopt;
  }

  ErrorOrNil readSegment(DataView command) {
    const std::size_t header = width_ == Width::Bits64 ? kSegmentSize64 : kSegmentSize32;
    const std::size_t length = width_ == Width::Bits64 ? kSectionSize64 : kSectionSize32;
    if (command.size() < header) return error("A segment is cut off.");
    const Segment segment(command, width_, swapped_);
    const std::uint32_t count = segment.nsects();
    if (count > kMaximumSections || command.size() - header < count * length) return error("A segment is cut off.");
    for (std::size_t index = 0; index < count; ++index) {
      const Section section(command.subspan(header + index * length, length), width_, swapped_);
      if (section.segname() != "__TEXT" || section.sectname() != "__info_plist") continue;
      const auto content = rangeOf(slice_.bytes, section.offset(), section.contentSize());
      if (!content) return error("The information list lies outside the file.");
      slice_.informationList = *content;
    }
    return std::nullopt;
  }

  MachOSlice& slice_;
  Width width_;
  Swapped swapped_;
  std::uint32_t count_;
  std::uint64_t size_;
};

Result<MachOSlice> readSlice(DataView bytes, const FatArch* record) {
  if (bytes.size() < kHeaderSize32) return malformed("This is no Mach-O file.");
  const std::uint32_t magic = readWord(bytes, 0);
  const bool wide = magic == kMagic64 || magic == kMagic64Swapped;
  if (!wide && magic != kMagic32 && magic != kMagic32Swapped) return malformed("This is no Mach-O file.");
  if (wide && bytes.size() < kHeaderSize64) return malformed("The file is cut off.");
  const Width width = wide ? Width::Bits64 : Width::Bits32;
  const Swapped swapped{magic == kMagic64Swapped || magic == kMagic32Swapped};
  const MachHeader header(bytes, width, swapped);
  if (record != nullptr && (record->cputype() != header.cputype() || record->cpusubtype() != header.cpusubtype())) {
    return malformed("The universal header names another architecture than the file part does.");
  }
  MachOSlice slice{architectureName(header.cputype(), header.cpusubtype()), bytes, {}, {}, {}};
  if (auto error = CommandReader(slice, width, swapped, header.ncmds(), header.sizeofcmds()).read()) {
    return failure(*std::move(error));
  }
  return slice;
}

Result<std::vector<FatArch>> universalRecords(DataView file) {
  const std::uint32_t count = readWord(file, 4, Swapped::Yes);
  if (count == 0 || count > kMaximumSlices) return malformed("This is no universal file.");
  const auto records = rangeOf(file, kFatHeaderSize, std::uint64_t{count} * kFatArchSize);
  if (!records) return malformed("The universal header is cut off.");
  std::vector<FatArch> list;
  for (std::size_t index = 0; index < count; ++index) {
    const FatArch& record = list.emplace_back(records->subspan(index * kFatArchSize, kFatArchSize), Swapped::Yes);
    if (!rangeOf(file, record.offset(), record.partSize())) return malformed("A file part lies outside the file.");
    if (record.align() > kLargestAlignmentExponent || record.offset() % (1U << record.align()) != 0) {
      return malformed("A file part isn't aligned as the universal header says.");
    }
  }
  return list;
}

bool nothingBetween(DataView file, std::vector<FatArch> records) {
  std::ranges::sort(records, {}, [](const FatArch& record) { return record.offset(); });
  std::uint64_t end = kFatHeaderSize + records.size() * kFatArchSize;
  for (const FatArch& record : records) {
    if (record.offset() < end || !isAllZero(*rangeOf(file, end, record.offset() - end))) return false;
    end = std::uint64_t{record.offset()} + record.partSize();
  }
  return isAllZero(*rangeOf(file, end, file.size() - end));
}

}  // namespace

Result<std::vector<MachOSlice>> machOSlices(DataView file) {
  std::vector<MachOSlice> slices;
  if (file.size() < kFatHeaderSize || readWord(file, 0) != kFatMagicSwapped) {
    auto slice = readSlice(file, nullptr);
    if (!slice) return failure(slice.error());
    slices.push_back(*std::move(slice));
    return slices;
  }
  const auto records = universalRecords(file);
  if (!records) return failure(records.error());
  if (!nothingBetween(file, *records)) {
    return malformed("The universal file's parts overlap, or there is something between or behind them.");
  }
  for (const FatArch& record : *records) {
    auto slice = readSlice(*rangeOf(file, record.offset(), record.partSize()), &record);
    if (!slice) return failure(slice.error());
    slices.push_back(*std::move(slice));
  }
  return slices;
}

}  // namespace vantrell::host::codesign
