// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/SuperBlob.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

#include "host/linux/codesign/ByteRange.h"
#include "host/linux/codesign/Findings.h"

namespace vantrell::host::codesign {
namespace {

constexpr std::uint32_t kEmbeddedSignatureMagic = 0xfade0cc0;
constexpr std::size_t kSuperBlobHeaderSize = 12;
constexpr std::size_t kIndexEntrySize = 8;
// There are fewer slots than that, and none comes twice.
constexpr std::uint32_t kMaximumBlobs = 32;

/// The magic number that the part in a slot has; nothing for slots that aren't known.
std::optional<std::uint32_t> magicFor(std::uint32_t slot) noexcept {
  if (slot == slot::kCodeDirectory) return 0xfade0c02;
  if (slot >= slot::kFirstAlternateDirectory && slot <= slot::kLastAlternateDirectory) return 0xfade0c02;
  if (slot >= slot::kFirstLaunchConstraint && slot <= slot::kLastLaunchConstraint) return 0xfade8181;
  if (slot == slot::kRequirements) return 0xfade0c01;
  if (slot == slot::kEntitlements) return 0xfade7171;
  if (slot == slot::kDerEntitlements) return 0xfade7172;
  if (slot == slot::kSignature) return 0xfade0b01;
  return std::nullopt;
}

std::unexpected<Error> malformed(std::string text) {
  return codeSigningFailure(code_signing_error::kBadObject, std::move(text));
}

Result<SignatureBlob> readBlob(DataView super, std::uint32_t slot, std::uint32_t offset) {
  const auto magic = magicFor(slot);
  if (!magic) {
    return codeSigningFailure(code_signing_error::kUnsupported,
                              fmt::format("The signature has a part of an unknown kind ({:#x}).", slot));
  }
  const auto header = rangeOf(super, offset, SignatureBlob::kHeaderSize);
  if (!header) return malformed("A part of the signature lies outside it.");
  const std::uint32_t length = bigWord(*header, 4);
  const auto bytes = rangeOf(super, offset, length);
  if (length < SignatureBlob::kHeaderSize || !bytes) return malformed("A part of the signature lies outside it.");
  if (bigWord(*header, 0) != *magic) {
    return malformed(fmt::format("The part of the signature in slot {:#x} is of another kind.", slot));
  }
  return SignatureBlob{slot, *bytes};
}

/// No overlaps, and nothing but zeroes outside.
bool coversEverything(DataView region, std::size_t start, std::vector<SignatureBlob> blobs) {
  std::ranges::sort(blobs, {}, [](const SignatureBlob& blob) { return blob.bytes.data(); });
  const std::uint8_t* end = region.data() + start;
  for (const SignatureBlob& blob : blobs) {
    if (blob.bytes.data() < end || !isAllZero({end, blob.bytes.data()})) return false;
    end = blob.bytes.data() + blob.bytes.size();
  }
  return isAllZero({end, region.data() + region.size()});
}

}  // namespace

Result<SuperBlob> SuperBlob::parse(DataView region) {
  if (region.size() < kSuperBlobHeaderSize) return malformed("The signature is too short.");
  if (bigWord(region, 0) != kEmbeddedSignatureMagic) return malformed("The signature doesn't begin as one.");
  const auto super = rangeOf(region, 0, bigWord(region, 4));
  const std::uint32_t count = bigWord(region, 8);
  const std::size_t start = kSuperBlobHeaderSize + std::size_t{kIndexEntrySize} * count;
  if (!super || super->size() < start) return malformed("The signature is cut off.");
  if (count > kMaximumBlobs) return malformed("The signature has too many parts.");

  SuperBlob result;
  for (std::uint32_t index = 0; index < count; ++index) {
    const std::size_t entry = kSuperBlobHeaderSize + kIndexEntrySize * index;
    const auto blob = readBlob(*super, bigWord(*super, entry), bigWord(*super, entry + 4));
    if (!blob) return failure(blob.error());
    if (result.find(blob->slot) != nullptr) return malformed("A part of the signature comes twice.");
    result.blobs_.push_back(*blob);
  }
  if (!coversEverything(region, start, result.blobs_)) {
    return malformed("The signature's parts overlap, or there is something between or behind them.");
  }
  return result;
}

const SignatureBlob* SuperBlob::find(std::uint32_t slot) const noexcept {
  const auto found = std::ranges::find(blobs_, slot, &SignatureBlob::slot);
  return found == blobs_.end() ? nullptr : &*found;
}

}  // namespace vantrell::host::codesign
