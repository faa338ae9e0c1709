// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/linux/codesign/CodeDigest.h"

namespace vantrell::host::codesign {

/// What a signature seals: hashes of the code, page by page, and of everything that belongs to it (the special slots).
/// Views into the bytes that it was read from.
class CodeDirectory {
 public:
  /// `blob` with its header. kUnsupported for a version, a hash or a feature that isn't known; kBadObject for anything
  /// that doesn't fit together. Afterwards every hash can be reached.
  static Result<CodeDirectory> parse(DataView blob);

  DataView bytes() const noexcept { return bytes_; }
  std::uint32_t version() const noexcept { return version_; }
  HashType hashType() const noexcept { return hashType_; }
  bool isAdHoc() const noexcept { return (flags_ & kAdHocFlag) != 0; }
  const std::string& identifier() const noexcept { return identifier_; }
  const std::optional<std::string>& teamIdentifier() const noexcept { return teamIdentifier_; }

  /// Bytes of the file, from its start, that the code slots cover.
  std::uint64_t codeLimit() const noexcept { return codeLimit_; }
  /// Bytes a page; 0 means that one page holds everything.
  std::uint64_t pageSize() const noexcept { return pageSize_; }
  std::uint32_t codeSlots() const noexcept { return codeSlots_; }
  std::uint32_t specialSlots() const noexcept { return specialSlots_; }

  DataView codeHash(std::uint32_t index) const noexcept;
  /// Slots count from 1. Empty where the directory doesn't reach that far, or says that there is no such part.
  DataView specialHash(std::uint32_t slot) const noexcept;

  /// The directory's own hash, in full length.
  const Data& digest() const noexcept { return digest_; }
  /// The same as nested code is referred to.
  DataView cdHash() const noexcept { return DataView(digest_).first(kCdHashSize); }

 private:
  static constexpr std::uint32_t kAdHocFlag = 0x2;  // CS_ADHOC

  ErrorOrNil readLayout();
  ErrorOrNil readExtensions();
  ErrorOrNil readTexts();
  std::optional<std::string> textAt(std::uint32_t offset) const;

  DataView bytes_;
  std::uint32_t version_ = 0;
  std::uint32_t flags_ = 0;
  std::uint32_t hashOffset_ = 0;
  std::uint32_t specialSlots_ = 0;
  std::uint32_t codeSlots_ = 0;
  std::uint64_t codeLimit_ = 0;
  std::uint64_t pageSize_ = 0;
  std::size_t hashSize_ = 0;
  std::size_t headerSize_ = 0;
  HashType hashType_ = HashType::Sha256;
  std::string identifier_;
  std::optional<std::string> teamIdentifier_;
  Data digest_;
};

}  // namespace vantrell::host::codesign
