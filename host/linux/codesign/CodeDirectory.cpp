// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/CodeDirectory.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "foundation/Unicode.h"
#include "host/linux/codesign/ByteRange.h"
#include "host/linux/codesign/Findings.h"

namespace vantrell::host::codesign {
namespace {

// Versions that are known, and the length of the header of each. Later fields follow earlier ones.
struct Version {
  std::uint32_t number;
  std::size_t headerSize;
};
constexpr Version kVersions[] = {
    {0x20001, 44},   // the first one in use
    {0x20100, 48},   // scatter
    {0x20200, 52},   // team identifier
    {0x20300, 64},   // 64-bit code limit
    {0x20400, 88},   // executable segment
    {0x20500, 96},   // runtime version, hashes before encryption
    {0x20600, 108},  // linkage
};
constexpr std::size_t kSmallestHeader = 44;
constexpr std::uint8_t kLargestPageExponent = 24;  // pages in use have 4, 16 or 64 KiB

Error malformed(const char* text) {
  return codeSigningError(code_signing_error::kBadObject, text);
}
Error unsupported(std::string text) {
  return codeSigningError(code_signing_error::kUnsupported, std::move(text));
}

}  // namespace

Result<CodeDirectory> CodeDirectory::parse(DataView blob) {
  CodeDirectory directory;
  directory.bytes_ = blob;
  if (blob.size() < kSmallestHeader) return failure(malformed("The code directory is too short."));
  directory.version_ = bigWord(blob, 8);
  const auto* version = std::ranges::find(kVersions, directory.version_, &Version::number);
  if (version == std::end(kVersions)) {
    return failure(unsupported(fmt::format("The code directory's version {:#x} isn't known.", directory.version_)));
  }
  directory.headerSize_ = version->headerSize;
  if (blob.size() < version->headerSize) return failure(malformed("The code directory is too short."));
  if (auto error = directory.readLayout()) return failure(*std::move(error));
  if (auto error = directory.readExtensions()) return failure(*std::move(error));
  if (auto error = directory.readTexts()) return failure(*std::move(error));
  directory.digest_ = digestOf(directory.hashType_, blob);
  if (directory.digest_.empty()) return failure(unsupported("The code directory's hash can't be computed."));
  return directory;
}

ErrorOrNil CodeDirectory::readLayout() {
  flags_ = bigWord(bytes_, 12);
  hashOffset_ = bigWord(bytes_, 16);
  specialSlots_ = bigWord(bytes_, 24);
  codeSlots_ = bigWord(bytes_, 28);
  codeLimit_ = bigWord(bytes_, 32);
  hashSize_ = bytes_[36];
  const auto type = hashTypeFromNumber(bytes_[37]);
  if (!type) return unsupported(fmt::format("The code directory's hash type {} isn't known.", bytes_[37]));
  hashType_ = *type;
  if (hashSize_ != storedHashSize(hashType_)) return malformed("The code directory's hashes have a wrong length.");
  const std::uint8_t exponent = bytes_[39];
  if (exponent > kLargestPageExponent) return unsupported("The code directory's pages are too large.");
  pageSize_ = exponent == 0 ? 0 : std::uint64_t{1} << exponent;

  // 32-bit counts times a length of at most 48: no product overflows 64 bits.
  const std::uint64_t before = std::uint64_t{specialSlots_} * hashSize_;
  const std::uint64_t after = std::uint64_t{codeSlots_} * hashSize_;
  if (before > hashOffset_ || hashOffset_ - before < headerSize_ || !rangeOf(bytes_, hashOffset_, after)) {
    return malformed("The code directory's hashes lie outside it.");
  }
  return std::nullopt;
}

ErrorOrNil CodeDirectory::readExtensions() {
  if (version_ >= 0x20100 && bigWord(bytes_, 44) != 0) return unsupported("The code directory uses scatter lists.");
  if (version_ >= 0x20300) {
    const std::uint64_t wide = bigLongWord(bytes_, 56);
    if (wide != 0) codeLimit_ = wide;
  }
  if (version_ >= 0x20500 && bigWord(bytes_, 92) != 0) return unsupported("The code is encrypted.");
  if (version_ >= 0x20600 && !isAllZero(bytes_.subspan(96, 12))) {
    return unsupported("The code directory uses linkage hashes.");
  }
  const std::uint64_t pages =
      pageSize_ == 0 ? (codeLimit_ == 0 ? 0 : 1) : codeLimit_ / pageSize_ + (codeLimit_ % pageSize_ == 0 ? 0 : 1);
  if (pages != codeSlots_) return malformed("The code directory doesn't have one hash for each page.");
  return std::nullopt;
}

ErrorOrNil CodeDirectory::readTexts() {
  auto identifier = textAt(bigWord(bytes_, 20));
  if (!identifier) return malformed("The code directory's identifier is malformed.");
  identifier_ = *std::move(identifier);
  if (version_ < 0x20200) return std::nullopt;
  const std::uint32_t team = bigWord(bytes_, 48);
  if (team == 0) return std::nullopt;
  teamIdentifier_ = textAt(team);
  if (!teamIdentifier_) return malformed("The code directory's team identifier is malformed.");
  return std::nullopt;
}

std::optional<std::string> CodeDirectory::textAt(std::uint32_t offset) const {
  if (offset < headerSize_ || offset >= bytes_.size()) return std::nullopt;
  const std::string_view rest = textOf(bytes_.subspan(offset));
  const std::size_t end = rest.find('\0');
  if (end == std::string_view::npos || end == 0 || !isWellFormedUtf8(rest.substr(0, end))) return std::nullopt;
  return std::string(rest.substr(0, end));
}

DataView CodeDirectory::codeHash(std::uint32_t index) const noexcept {
  return bytes_.subspan(hashOffset_ + std::size_t{index} * hashSize_, hashSize_);
}

DataView CodeDirectory::specialHash(std::uint32_t slot) const noexcept {
  if (slot == 0 || slot > specialSlots_) return {};
  const DataView hash = bytes_.subspan(hashOffset_ - std::size_t{slot} * hashSize_, hashSize_);
  return isAllZero(hash) ? DataView() : hash;
}

}  // namespace vantrell::host::codesign
