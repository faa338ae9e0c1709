// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"

namespace vantrell::host::codesign {

/// Places in a signature (CSSLOT_… of the platform's public cs_blobs.h).
namespace slot {
inline constexpr std::uint32_t kCodeDirectory = 0;
inline constexpr std::uint32_t kInformationList = 1;
inline constexpr std::uint32_t kRequirements = 2;
inline constexpr std::uint32_t kResources = 3;
inline constexpr std::uint32_t kEntitlements = 5;
inline constexpr std::uint32_t kDerEntitlements = 7;
inline constexpr std::uint32_t kFirstLaunchConstraint = 8;
inline constexpr std::uint32_t kLastLaunchConstraint = 11;
inline constexpr std::uint32_t kFirstAlternateDirectory = 0x1000;
inline constexpr std::uint32_t kLastAlternateDirectory = 0x1004;
inline constexpr std::uint32_t kSignature = 0x10000;
}  // namespace slot

/// One part of a signature. `bytes` has the part's 8-byte header (magic number, length) as well, since hashes cover it.
struct SignatureBlob {
  static constexpr std::size_t kHeaderSize = 8;

  std::uint32_t slot;
  DataView bytes;

  DataView content() const noexcept { return bytes.subspan(kHeaderSize); }
};

/// The parts of an embedded signature. Views into the bytes that it was read from.
class SuperBlob {
 public:
  /// `region` is what the load command of the signature points to. Every byte must be accounted for: a slot that isn't
  /// known, or comes twice, a part of the wrong kind, parts that overlap, and bytes other than zero between or behind
  /// them are refused. kUnsupported for what may well be right but isn't known, kBadObject for the rest.
  static Result<SuperBlob> parse(DataView region);

  const std::vector<SignatureBlob>& blobs() const noexcept { return blobs_; }
  /// Null where there is none.
  const SignatureBlob* find(std::uint32_t slot) const noexcept;

 private:
  std::vector<SignatureBlob> blobs_;
};

}  // namespace vantrell::host::codesign
