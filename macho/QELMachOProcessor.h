// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "host/Cryptography.h"
#include "host/FileSystem.h"
#include "host/SystemLog.h"
#include "macho/MachODescriptions.h"
#include "macho/MachORecords.h"

namespace vantrell {

/// What an executable file in the Mach-O format consists of, thin or fat: for each part (architecture) its header, its
/// segments, its sections and a descriptor. The descriptor is a SHA-1 digest over the contents of the part's sections,
/// as 40 lower-case hexadecimal digits: signing again leaves it as it is, a changed byte of code or data does not.
///
/// Element i of every list stands for part i, but for `signaturesPerPart`. A reader is immutable and holds copies only;
/// the file's bytes are not needed once it is made.
class QELMachOProcessor {
 public:
  using FatArch = macho::FatArch;
  using MachHeader = macho::MachHeader;
  using Segments = std::vector<macho::Segment>;
  using SectionsByName = macho::SectionsByName;

  /// Longer files are not read; a fat file can't address more than 4 GiB to begin a part, and as much for its contents.
  static constexpr std::uint64_t kMaximumFileSize = std::uint64_t{8} << 30;

  /// A fat magic number and room for all the architecture records that the header announces.
  static bool isFatBinary(DataView data) noexcept;
  /// One of the four magic numbers of a Mach-O file, and room for a header.
  static bool isMachOFile(DataView data) noexcept;
  /// See macho::stringFromCString.
  static std::optional<std::string> stringFromCString(const char* bytes, std::size_t maxLength) {
    return macho::stringFromCString(bytes, maxLength);
  }

  // See macho/MachODescriptions.h.
  static std::string descriptionForMachOFileType(std::uint32_t type) {
    return macho::descriptionForMachOFileType(type);
  }
  static std::string descriptionForMachOFlags(std::uint32_t flags) { return macho::descriptionForMachOFlags(flags); }
  static std::string descriptionForSegmentFlags(std::uint32_t flags) {
    return macho::descriptionForSegmentFlags(flags);
  }
  static std::string descriptionForSectionFlags(std::uint32_t flags) {
    return macho::descriptionForSectionFlags(flags);
  }
  static std::string descriptionForSegment(DataView record) { return macho::descriptionForSegment(record); }
  static std::string descriptionForSection(DataView record) { return macho::descriptionForSection(record); }

  /// The reader for a file, or nothing. A file that can't be loaded or is of another format yields nothing silently;
  /// one that is inconsistent is logged at error level in the default log and yields nothing. A section that points
  /// beyond the file is logged, too, but then raises NSInvalidArgumentException: callers catch `Exception`.
  static std::unique_ptr<QELMachOProcessor> initForFileAtPath(const std::string& path, host::FileSystem& fileSystem,
                                                              host::Cryptography& cryptography,
                                                              host::SystemLog& systemLog);

  /// The same for a file's whole contents, which are used during the call only.
  static std::unique_ptr<QELMachOProcessor> initForContents(DataView contents, host::Cryptography& cryptography,
                                                            host::SystemLog& systemLog);

  std::size_t countOfFatFileParts() const noexcept { return fileParts_.size(); }

  // The element of a list, or nullptr (0) when there is none at `index`. Valid as long as the reader.
  const FatArch* fatFileHeaderAtIndex(std::size_t index) const noexcept;
  const MachHeader* machHeaderForPartAtIndex(std::size_t index) const noexcept;
  std::size_t sizeOfMachHeaderForPartAtIndex(std::size_t index) const noexcept;
  const Segments* segmentsForPartAtIndex(std::size_t index) const noexcept;
  const SectionsByName* sectionsByNameForPartAtIndex(std::size_t index) const noexcept;
  /// `index` counts signatures, see `signaturesPerPart`.
  const Data* signatureForPartAtIndex(std::size_t index) const noexcept;

  const std::vector<std::string>& descriptorsForRelevantSectionsPerFilePart() const noexcept {
    return partDescriptors_;
  }

  /// A thin file has one part, made up: offset 0, the file's length (its low 32 bits).
  const std::vector<FatArch>& fileParts() const noexcept { return fileParts_; }
  const std::vector<MachHeader>& machHeaders() const noexcept { return machHeaders_; }
  /// True for a part that is stored in the opposite byte order.
  const std::vector<bool>& byteOrderFlags() const noexcept { return byteOrderFlags_; }
  /// In the order of the load commands.
  const std::vector<Segments>& segmentsPerPart() const noexcept { return segmentsPerPart_; }
  /// Of sections with equal names the last one.
  const std::vector<SectionsByName>& sectionsByName() const noexcept { return sectionsByName_; }
  const std::vector<std::string>& partDescriptors() const noexcept { return partDescriptors_; }
  /// The code-signature blobs in the order met. A part without one adds nothing, so that those of later parts move up.
  const std::vector<Data>& signaturesPerPart() const noexcept { return signaturesPerPart_; }

 private:
  struct Reading;
  struct Part;

  QELMachOProcessor() = default;

  bool readFileParts(Reading& reading);
  bool readMachHeader(Reading& reading, std::size_t index);
  bool createSegmentsFromData(Reading& reading);
  bool walkLoadCommands(Reading& reading, Part& part, bool& status);
  bool addSegmentLoadCommand(std::uint64_t command, Reading& reading, Part& part);
  bool addSegment64LoadCommand(std::uint64_t command, Reading& reading, Part& part);
  bool addSegmentLoadCommand(macho::Width width, std::uint64_t command, Reading& reading, Part& part);
  bool addCodeSignatureCommand(std::uint64_t command, Reading& reading, const Part& part);
  std::optional<std::string> descriptorForSections(const SectionsByName& sections, std::uint64_t filePartOffset,
                                                   Reading& reading);

  std::vector<FatArch> fileParts_;
  std::vector<MachHeader> machHeaders_;
  std::vector<bool> byteOrderFlags_;
  std::vector<Segments> segmentsPerPart_;
  std::vector<SectionsByName> sectionsByName_;
  std::vector<std::string> partDescriptors_;
  std::vector<Data> signaturesPerPart_;
};

}  // namespace vantrell
