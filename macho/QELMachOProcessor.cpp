// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/QELMachOProcessor.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "foundation/Exception.h"
#include "foundation/Log.h"
#include "macho/MachOFormat.h"
#include "macho/MachOReadingBudget.h"

namespace vantrell {

using namespace macho;

namespace {

constexpr std::string_view kClassName = "QELMachOProcessor";

bool isSwappedMagic(std::uint32_t magic) noexcept {
  return magic == kMagic32Swapped || magic == kMagic64Swapped;
}

bool isMachMagic(std::uint32_t magic) noexcept {
  return magic == kMagic32 || magic == kMagic64 || isSwappedMagic(magic);
}

template <class T>
const T* elementAt(const std::vector<T>& list, std::size_t index) noexcept {
  return index < list.size() ? &list[index] : nullptr;
}

}  // namespace

/// The file at hand. Addresses are 64-bit offsets from its start; the sentinel is the one past its last byte. No sum of
/// the 32-bit numbers in the file overflows them, and sizes of 64 bits are compared with what is left, never added.
struct QELMachOProcessor::Reading {
  DataView data;
  std::uint64_t sentinel;
  host::Cryptography& cryptography;
  Log log;
  MachOReadingBudget budget;

  /// Whether `length` bytes from `start` on end at or before the sentinel.
  bool holds(std::uint64_t start, std::uint64_t length) const noexcept {
    return start <= sentinel && length <= sentinel - start;
  }
  /// At most `length` bytes from `start` on, fewer where the file ends.
  DataView bytesAt(std::uint64_t start, std::uint64_t length) const noexcept {
    if (start >= sentinel) return {};
    return data.subspan(start, std::min(length, sentinel - start));
  }
};

/// One part of the file and the lists that its load commands fill.
struct QELMachOProcessor::Part {
  std::size_t index;
  std::uint64_t offset;
  Swapped swapped;
  Segments segments;
  SectionsByName sections;
};

bool QELMachOProcessor::isFatBinary(DataView data) noexcept {
  if (data.size() < kFatHeaderSize || readWord(data, 0) != kFatMagicSwapped) return false;
  const std::uint64_t count = readWord(data, 4, Swapped::Yes);
  return kFatHeaderSize + kFatArchSize * count <= data.size();
}

bool QELMachOProcessor::isMachOFile(DataView data) noexcept {
  return data.size() >= kHeaderSize32 && isMachMagic(readWord(data, 0));
}

std::unique_ptr<QELMachOProcessor> QELMachOProcessor::initForFileAtPath(const std::string& path,
                                                                        host::FileSystem& fileSystem,
                                                                        host::Cryptography& cryptography,
                                                                        host::SystemLog& systemLog) {
  const auto contents = fileSystem.loadFile(path, kMaximumFileSize);
  if (!contents) return nullptr;
  return initForContents((*contents)->bytes(), cryptography, systemLog);
}

std::unique_ptr<QELMachOProcessor> QELMachOProcessor::initForContents(DataView contents,
                                                                      host::Cryptography& cryptography,
                                                                      host::SystemLog& systemLog) {
  if (!isFatBinary(contents) && !isMachOFile(contents)) return nullptr;
  Reading reading{contents, contents.size(), cryptography, Log(systemLog), MachOReadingBudget(contents.size())};
  std::unique_ptr<QELMachOProcessor> processor(new QELMachOProcessor);
  if (!processor->readFileParts(reading)) return nullptr;
  for (std::size_t index = 0; index < processor->fileParts_.size(); ++index) {
    if (!processor->readMachHeader(reading, index)) return nullptr;
  }
  if (!processor->createSegmentsFromData(reading)) return nullptr;
  return processor;
}

bool QELMachOProcessor::readFileParts(Reading& reading) {
  const DataView data = reading.data;
  if (!isFatBinary(data)) {
    const Swapped swapped{isSwappedMagic(readWord(data, 0))};
    const MachHeader header(data, Width::Bits32, swapped);
    fileParts_.emplace_back(header.cputype(), header.cpusubtype(), static_cast<std::uint32_t>(data.size()));
    return true;
  }
  const std::uint64_t count = readWord(data, 4, Swapped::Yes);
  for (std::uint64_t index = 0; index < count; ++index) {
    const std::uint64_t record = kFatHeaderSize + index * kFatArchSize;
    if (!reading.holds(record, kFatArchSize) || index >= MachOReadingBudget::kMaximumParts) {
      reading.log.error("{}: fat file structure invalid!", kClassName);
      return false;
    }
    fileParts_.emplace_back(reading.bytesAt(record, kFatArchSize), Swapped::Yes);
  }
  return true;
}

bool QELMachOProcessor::readMachHeader(Reading& reading, std::size_t index) {
  const FatArch& part = fileParts_[index];
  const std::uint64_t address = part.offset();
  if (!reading.holds(address, sizeof(std::uint32_t))) {
    reading.log.error("{}: fat file header {} has inconsistent offset {}.", kClassName, index, part.offset());
    return false;
  }
  const std::uint32_t magic = readWord(reading.data, address);
  if (!isMachMagic(magic)) {
    reading.log.error("{}: bad magic number ({:x}) of mach header in part {}.", kClassName, magic, index);
    return false;
  }
  const Width width = magic == kMagic64 || magic == kMagic64Swapped ? Width::Bits64 : Width::Bits32;
  const std::size_t size = width == Width::Bits64 ? kHeaderSize64 : kHeaderSize32;
  if (!reading.holds(address, size)) {
    reading.log.error("{}: mach file structure ({}) inconsistent in part {}.", kClassName,
                      width == Width::Bits64 ? 64 : 32, index);
    return false;
  }
  const bool swapped = isSwappedMagic(magic);
  byteOrderFlags_.push_back(swapped);
  const MachHeader& header = machHeaders_.emplace_back(reading.bytesAt(address, size), width, Swapped{swapped});
  if (header.cputype() != part.cputype() || header.cpusubtype() != part.cpusubtype()) {
    reading.log.error("{}: fat file part {} declares CPU type ({}-{}) for mach-o component with type ({}-{}).",
                      kClassName, index, part.cputype(), part.cpusubtype(), header.cputype(), header.cpusubtype());
    return false;
  }
  return true;
}

bool QELMachOProcessor::createSegmentsFromData(Reading& reading) {
  // One flag for the whole file: it fails the reading until a first command of a known kind has been read, and so
  // refuses a file that begins with another kind, or that has no commands at all.
  bool status = false;
  for (std::size_t index = 0; index < fileParts_.size(); ++index) {
    const bool swapped = byteOrderFlags_[index];
    Part part{index, fileParts_[index].offset(), Swapped{swapped}, {}, {}};
    if (!walkLoadCommands(reading, part, status)) return false;
    segmentsPerPart_.push_back(std::move(part.segments));
    sectionsByName_.push_back(std::move(part.sections));
    auto descriptor = descriptorForSections(sectionsByName_.back(), part.offset, reading);
    if (!descriptor) {
      throw Exception(NSInvalidArgumentException,
                      fmt::format("{}: file part {} has no descriptor to insert.", kClassName, index));
    }
    partDescriptors_.push_back(*std::move(descriptor));
  }
  return status;
}

bool QELMachOProcessor::walkLoadCommands(Reading& reading, Part& part, bool& status) {
  const MachHeader& header = machHeaders_[part.index];
  std::uint64_t command = part.offset + header.size();
  if (!reading.holds(command, header.sizeofcmds())) {
    reading.log.error("{}: invalid load commands in file part {}!", kClassName, part.index);
    return false;
  }
  for (std::uint32_t number = 0; number < header.ncmds(); ++number) {
    if (!reading.holds(command, kLoadCommandSize) || !reading.budget.takeCommand()) {
      reading.log.error("{}: invalid load commands in file part {}!", kClassName, part.index);
      return false;
    }
    const std::uint32_t cmdsize = readWord(reading.data, command + 4, part.swapped);
    if (!reading.holds(command, cmdsize)) {
      reading.log.error("{}: invalid size ({}) of load command {} in file part {}!", kClassName, cmdsize, number,
                        part.index);
      return false;
    }
    switch (readWord(reading.data, command, part.swapped)) {
      case kCodeSignatureCommand:
        status = addCodeSignatureCommand(command, reading, part);
        break;
      case kSegment64Command:
        status = addSegment64LoadCommand(command, reading, part);
        break;
      case kSegmentCommand:
        status = addSegmentLoadCommand(command, reading, part);
        break;
      default:
        break;
    }
    if (!status) return false;
    command += cmdsize;  // which may be 0: then the same command is read again
  }
  return true;
}

bool QELMachOProcessor::addSegmentLoadCommand(std::uint64_t command, Reading& reading, Part& part) {
  return addSegmentLoadCommand(Width::Bits32, command, reading, part);
}

bool QELMachOProcessor::addSegment64LoadCommand(std::uint64_t command, Reading& reading, Part& part) {
  return addSegmentLoadCommand(Width::Bits64, command, reading, part);
}

bool QELMachOProcessor::addSegmentLoadCommand(Width width, std::uint64_t command, Reading& reading, Part& part) {
  const bool is64Bit = width == Width::Bits64;
  const std::size_t segmentSize = is64Bit ? kSegmentSize64 : kSegmentSize32;
  const std::size_t sectionSize = is64Bit ? kSectionSize64 : kSectionSize32;
  const Segment segment(reading.bytesAt(command, segmentSize), width, part.swapped);
  const std::uint64_t count = segment.nsects();
  part.segments.push_back(segment);
  if (!reading.holds(command, segmentSize + count * sectionSize)) {
    reading.log.error("{}: error in {}-bit segment command: could not find expected {} sections!", kClassName,
                      is64Bit ? 64 : 32, count);
    return false;
  }
  if (!reading.budget.takeRecords(1 + count)) {
    reading.log.error("{}: invalid load commands in file part {}!", kClassName, part.index);
    return false;
  }
  for (std::uint64_t index = 0; index < count; ++index) {
    const std::uint64_t address = command + segmentSize + index * sectionSize;
    const Section section(reading.bytesAt(address, sectionSize), width, part.swapped);
    part.sections.insert_or_assign(keyForSection(section), section);
  }
  return true;
}

bool QELMachOProcessor::addCodeSignatureCommand(std::uint64_t command, Reading& reading, const Part& part) {
  if (reading.holds(command, kSignatureCommandSize)) {
    const std::uint64_t start = part.offset + readWord(reading.data, command + 8, part.swapped);
    const std::uint32_t size = readWord(reading.data, command + 12, part.swapped);
    if (reading.holds(start, size) && reading.budget.takeRecords(1) && reading.budget.takeSignature(size)) {
      const DataView blob = reading.bytesAt(start, size);
      signaturesPerPart_.emplace_back(blob.begin(), blob.end());
      return true;
    }
  }
  reading.log.error("{}: error in codesign linkedit command: could not access code signature!", kClassName);
  return false;
}

std::optional<std::string> QELMachOProcessor::descriptorForSections(const SectionsByName& sections,
                                                                    std::uint64_t filePartOffset, Reading& reading) {
  auto digest = reading.cryptography.makeSha1();
  if (!digest) return std::nullopt;
  for (const auto& [name, section] : sections) {  // in the literal order of the names
    // Thread-local zero-fill sections are hashed as they stand, although their offset points at nothing of theirs:
    // descriptors that exist were made so.
    if (section.type() == kSectionTypeZeroFill || section.type() == kSectionTypeGigabyteZeroFill) continue;
    const std::uint64_t start = filePartOffset + section.offset();
    if (!reading.holds(start, section.contentSize()) || !reading.budget.takeContents(section.contentSize())) {
      reading.log.error("{}: found section referring to invalid data in mach-o file!", kClassName);
      return std::nullopt;
    }
    (*digest)->update(reading.bytesAt(start, section.contentSize()));
  }
  return fmt::format("{:02x}", fmt::join((*digest)->finish(), ""));
}

auto QELMachOProcessor::fatFileHeaderAtIndex(std::size_t index) const noexcept -> const FatArch* {
  return elementAt(fileParts_, index);
}

auto QELMachOProcessor::machHeaderForPartAtIndex(std::size_t index) const noexcept -> const MachHeader* {
  return elementAt(machHeaders_, index);
}

std::size_t QELMachOProcessor::sizeOfMachHeaderForPartAtIndex(std::size_t index) const noexcept {
  return index < machHeaders_.size() ? machHeaders_[index].size() : 0;
}

auto QELMachOProcessor::segmentsForPartAtIndex(std::size_t index) const noexcept -> const Segments* {
  return elementAt(segmentsPerPart_, index);
}

auto QELMachOProcessor::sectionsByNameForPartAtIndex(std::size_t index) const noexcept -> const SectionsByName* {
  return elementAt(sectionsByName_, index);
}

const Data* QELMachOProcessor::signatureForPartAtIndex(std::size_t index) const noexcept {
  return elementAt(signaturesPerPart_, index);
}

}  // namespace vantrell
