// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>

#include "macho/MachOFormat.h"
#include "macho/MachORecords.h"
#include "tests/codesign/TestSigner.h"

namespace vantrell::tests {

/// A thin 64-bit executable with another signature in place of the one that it may have, as a signing tool does it: the
/// load command is added where there is none, the last segment ends behind the signature, and the rest stays.
class ExecutableResigning {
 public:
  explicit ExecutableResigning(Data file) : file_(std::move(file)) { findCommands(); }

  Data signedWith(const SigningOptions& options) {
    // The load commands are signed themselves, with the room that they tell of.
    constexpr std::size_t kSpare = 512;
    if (signature_ == 0) addSignatureCommand();
    const std::size_t start = readLong(linkEdit_ + kSegmentFileOffset) + contentOfLinkEdit();
    file_.resize(start);
    const std::size_t room = signing::signatureOf(options, file_).size() + kSpare;
    putWord(file_, signature_ + 8, static_cast<std::uint32_t>(start));
    putWord(file_, signature_ + 12, static_cast<std::uint32_t>(room));
    putLong(linkEdit_ + kSegmentFileSize, start + room - readLong(linkEdit_ + kSegmentFileOffset));
    Data signature = signing::signatureOf(options, file_);
    if (signature.size() > room) throw std::runtime_error("the signature has no room");
    signature.resize(room);
    return file_ + signature;
  }

 private:
  static constexpr std::size_t kSegmentFileOffset = 40;
  static constexpr std::size_t kSegmentFileSize = 48;

  void findCommands() {
    std::size_t place = macho::kHeaderSize64;
    firstContent_ = file_.size();
    for (std::uint32_t index = 0; index < macho::readWord(file_, 16); ++index) {
      const std::uint32_t command = macho::readWord(file_, place);
      if (command == macho::kCodeSignatureCommand) signature_ = place;
      if (command == macho::kSegment64Command) noteSegment(place);
      place += macho::readWord(file_, place + 4);
    }
    endOfCommands_ = place;
    if (linkEdit_ == 0) throw std::runtime_error("no segment for the linker's own tables");
  }

  void noteSegment(std::size_t place) {
    if (textOf(DataView(file_).subspan(place + 8)).starts_with("__LINKEDIT")) linkEdit_ = place;
    const std::uint32_t sections = macho::readWord(file_, place + 64);
    for (std::uint32_t index = 0; index < sections; ++index) {
      const std::size_t offset =
          macho::readWord(file_, place + macho::kSegmentSize64 + index * macho::kSectionSize64 + 48);
      if (offset != 0) firstContent_ = std::min(firstContent_, offset);
    }
  }

  std::size_t contentOfLinkEdit() const {
    const std::size_t offset = readLong(linkEdit_ + kSegmentFileOffset);
    const std::size_t old = macho::readWord(file_, signature_ + 8);
    // A signature begins at a multiple of 16 bytes.
    return old != 0 ? old - offset : (readLong(linkEdit_ + kSegmentFileSize) + offset + 15) / 16 * 16 - offset;
  }

  void addSignatureCommand() {
    if (endOfCommands_ + macho::kSignatureCommandSize > firstContent_)
      throw std::runtime_error("no room for a command");
    signature_ = endOfCommands_;
    putWord(file_, signature_, macho::kCodeSignatureCommand);
    putWord(file_, signature_ + 4, macho::kSignatureCommandSize);
    putWord(file_, signature_ + 8, 0);
    putWord(file_, 16, macho::readWord(file_, 16) + 1);
    putWord(file_, 20, macho::readWord(file_, 20) + macho::kSignatureCommandSize);
  }

  std::size_t readLong(std::size_t offset) const {
    return macho::readWord(file_, offset) | std::uint64_t{macho::readWord(file_, offset + 4)} << 32;
  }
  void putLong(std::size_t offset, std::uint64_t value) {
    putWord(file_, offset, static_cast<std::uint32_t>(value));
    putWord(file_, offset + 4, static_cast<std::uint32_t>(value >> 32));
  }

  Data file_;
  std::size_t signature_ = 0;  // of the load command
  std::size_t linkEdit_ = 0;   // likewise
  std::size_t endOfCommands_ = 0;
  std::size_t firstContent_ = 0;
};

}  // namespace vantrell::tests
