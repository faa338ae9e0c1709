// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Data.h"
#include "macho/MachOFormat.h"
#include "macho/MachORecords.h"

namespace vantrell::tests {

enum class Endian : bool { Little, Big };

inline void putWord(Data& data, std::size_t offset, std::uint32_t value, Endian endian = Endian::Little) {
  for (std::size_t index = 0; index < 4; ++index) {
    const std::size_t shift = 8 * (endian == Endian::Big ? 3 - index : index);
    data.at(offset + index) = static_cast<std::uint8_t>(value >> shift);
  }
}

inline Data operator+(Data left, DataView right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Data dataOf(std::string_view text) {
  return Data(text.begin(), text.end());
}

/// Appends numbers of one byte order.
class ByteWriter {
 public:
  explicit ByteWriter(Endian endian) : endian_(endian) {}

  ByteWriter& word(std::uint32_t value) {
    data_.resize(data_.size() + 4);
    putWord(data_, data_.size() - 4, value, endian_);
    return *this;
  }
  ByteWriter& longWord(std::uint64_t value) {
    const auto low = static_cast<std::uint32_t>(value);
    const auto high = static_cast<std::uint32_t>(value >> 32);
    return endian_ == Endian::Big ? word(high).word(low) : word(low).word(high);
  }
  /// A number that the wide form holds in 64 bits.
  ByteWriter& address(macho::Width width, std::uint64_t value) {
    return width == macho::Width::Bits64 ? longWord(value) : word(static_cast<std::uint32_t>(value));
  }
  ByteWriter& name(std::string_view text) {
    Data field = dataOf(text.substr(0, macho::kNameSize));
    field.resize(macho::kNameSize);
    return bytes(field);
  }
  ByteWriter& bytes(DataView bytes) {
    data_.insert(data_.end(), bytes.begin(), bytes.end());
    return *this;
  }
  const Data& data() const { return data_; }

 private:
  Endian endian_;
  Data data_;
};

struct SectionToBuild {
  std::string segment;
  std::string name;
  std::string content;
  std::uint32_t flags = 0;
  std::optional<std::uint32_t> offset;  // instead of the content's place
  std::optional<std::uint64_t> size;    // instead of the content's length
};

/// Builds the bytes of one thin Mach-O file: header, load commands as added, contents of the sections, signatures.
class MachOBuilder {
 public:
  explicit MachOBuilder(macho::Width width = macho::Width::Bits64, Endian endian = Endian::Little)
      : width_(width), endian_(endian) {}

  MachOBuilder& cpu(std::int32_t type, std::int32_t subtype) {
    cputype_ = type;
    cpusubtype_ = subtype;
    return *this;
  }
  /// Placed in front of the contents, which then begin later.
  MachOBuilder& padding(std::size_t size) {
    padding_ = size;
    return *this;
  }
  /// Instead of the true count.
  MachOBuilder& commandCount(std::uint32_t ncmds) {
    ncmds_ = ncmds;
    return *this;
  }
  /// Instead of the true length of all commands.
  MachOBuilder& commandsSize(std::uint32_t sizeofcmds) {
    sizeofcmds_ = sizeofcmds;
    return *this;
  }
  /// A segment in the builder's own width unless told otherwise.
  MachOBuilder& segment(std::string name, std::vector<SectionToBuild> sections,
                        std::optional<macho::Width> width = std::nullopt) {
    commands_.push_back(Command{width.value_or(width_), std::move(name), std::move(sections), {}, {}});
    return *this;
  }
  MachOBuilder& signature(std::string blob) {
    commands_.push_back(Command{width_, {}, {}, std::move(blob), {}});
    return *this;
  }
  /// Any other command: its number and what follows the command's own two words.
  MachOBuilder& command(std::uint32_t cmd, Data rest = {}) {
    const auto size = static_cast<std::uint32_t>(macho::kLoadCommandSize + rest.size());
    commands_.push_back(Command{width_, {}, {}, {}, ByteWriter(endian_).word(cmd).word(size).bytes(rest).data()});
    return *this;
  }

  Data build() const {
    const std::size_t headerSize = width_ == macho::Width::Bits64 ? macho::kHeaderSize64 : macho::kHeaderSize32;
    std::size_t sizeofcmds = 0;
    for (const Command& command : commands_) sizeofcmds += sizeOf(command);
    Data contents(padding_);
    ByteWriter commands(endian_);
    for (const Command& command : commands_) write(command, commands, headerSize + sizeofcmds, contents);

    ByteWriter file(endian_);
    file.word(width_ == macho::Width::Bits64 ? macho::kMagic64 : macho::kMagic32);
    file.word(static_cast<std::uint32_t>(cputype_)).word(static_cast<std::uint32_t>(cpusubtype_));
    file.word(kExecutable).word(ncmds_.value_or(static_cast<std::uint32_t>(commands_.size())));
    file.word(sizeofcmds_.value_or(static_cast<std::uint32_t>(sizeofcmds))).word(kHeaderFlags);
    if (width_ == macho::Width::Bits64) file.word(kReserved);
    return file.bytes(commands.data()).bytes(contents).data();
  }

  static constexpr std::int32_t kCpuType = 0x01000007;  // x86-64
  static constexpr std::int32_t kCpuSubtype = 3;
  static constexpr std::uint32_t kExecutable = 2;
  static constexpr std::uint32_t kHeaderFlags = 0x85;
  static constexpr std::uint32_t kReserved = 0x01020304;
  // What segments and sections are built with.
  static constexpr std::uint64_t kAddress = 0x1000;
  static constexpr std::uint64_t kHighAddress = 0x100001000;

 private:
  struct Command {
    macho::Width width;
    std::string segment;
    std::vector<SectionToBuild> sections;
    std::optional<std::string> signature;
    Data other;
  };

  static std::size_t sizeOf(const Command& command) {
    if (!command.other.empty()) return command.other.size();
    if (command.signature) return macho::kSignatureCommandSize;
    return command.width == macho::Width::Bits64
               ? macho::kSegmentSize64 + command.sections.size() * macho::kSectionSize64
               : macho::kSegmentSize32 + command.sections.size() * macho::kSectionSize32;
  }

  static std::uint64_t addressFor(macho::Width width) {
    return width == macho::Width::Bits64 ? kHighAddress : kAddress;
  }

  void write(const Command& command, ByteWriter& commands, std::size_t contentStart, Data& contents) const {
    const auto size = static_cast<std::uint32_t>(sizeOf(command));
    if (!command.other.empty()) {
      commands.bytes(command.other);
    } else if (command.signature) {
      commands.word(macho::kCodeSignatureCommand).word(size);
      commands.word(static_cast<std::uint32_t>(contentStart + contents.size()));
      commands.word(static_cast<std::uint32_t>(command.signature->size()));
      contents = std::move(contents) + bytesOf(*command.signature);
    } else {
      const bool is64Bit = command.width == macho::Width::Bits64;
      commands.word(is64Bit ? macho::kSegment64Command : macho::kSegmentCommand).word(size).name(command.segment);
      commands.address(command.width, addressFor(command.width)).address(command.width, 0x2000);
      commands.address(command.width, 0x300).address(command.width, 0x400);
      commands.word(7).word(5).word(static_cast<std::uint32_t>(command.sections.size())).word(4);
      for (const SectionToBuild& section : command.sections) {
        writeSection(section, command.width, commands, contentStart, contents);
      }
    }
  }

  void writeSection(const SectionToBuild& section, macho::Width width, ByteWriter& commands, std::size_t contentStart,
                    Data& contents) const {
    commands.name(section.name).name(section.segment);
    commands.address(width, addressFor(width)).address(width, section.size.value_or(section.content.size()));
    commands.word(section.offset.value_or(static_cast<std::uint32_t>(contentStart + contents.size())));
    commands.word(4).word(0x11).word(0x12).word(section.flags).word(0x21).word(0x22);
    if (width == macho::Width::Bits64) commands.word(0x23);
    contents = std::move(contents) + bytesOf(section.content);
  }

  macho::Width width_;
  Endian endian_;
  std::int32_t cputype_ = kCpuType;
  std::int32_t cpusubtype_ = kCpuSubtype;
  std::size_t padding_ = 0;
  std::optional<std::uint32_t> ncmds_;
  std::optional<std::uint32_t> sizeofcmds_;
  std::vector<Command> commands_;
};

struct PartToBuild {
  Data bytes;
  std::int32_t cputype = MachOBuilder::kCpuType;
  std::int32_t cpusubtype = MachOBuilder::kCpuSubtype;
  std::optional<std::uint32_t> offset;  // instead of the part's place
};

/// A fat file of these parts, each at a multiple of 16.
inline Data fatFile(const std::vector<PartToBuild>& parts) {
  constexpr std::size_t kAlignment = 16;
  const auto aligned = [](std::size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; };
  ByteWriter header(Endian::Big);
  header.word(0xCAFEBABE).word(static_cast<std::uint32_t>(parts.size()));
  std::size_t place = aligned(macho::kFatHeaderSize + parts.size() * macho::kFatArchSize);
  for (const PartToBuild& part : parts) {
    header.word(static_cast<std::uint32_t>(part.cputype)).word(static_cast<std::uint32_t>(part.cpusubtype));
    header.word(part.offset.value_or(static_cast<std::uint32_t>(place)));
    header.word(static_cast<std::uint32_t>(part.bytes.size())).word(4);
    place = aligned(place + part.bytes.size());
  }
  Data file = header.data();
  for (const PartToBuild& part : parts) {
    file.resize(aligned(file.size()));
    file = std::move(file) + part.bytes;
  }
  return file;
}

}  // namespace vantrell::tests
