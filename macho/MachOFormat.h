// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>

/// Numbers of the Mach-O format, from Apple's public headers mach-o/loader.h and mach-o/fat.h.
namespace vantrell::macho {

// First words of a file, as a little-endian host reads them. The swapped ones open files of the other byte order.
inline constexpr std::uint32_t kMagic32 = 0xFEEDFACE;          // MH_MAGIC
inline constexpr std::uint32_t kMagic64 = 0xFEEDFACF;          // MH_MAGIC_64
inline constexpr std::uint32_t kMagic32Swapped = 0xCEFAEDFE;   // MH_CIGAM
inline constexpr std::uint32_t kMagic64Swapped = 0xCFFAEDFE;   // MH_CIGAM_64
inline constexpr std::uint32_t kFatMagicSwapped = 0xBEBAFECA;  // FAT_CIGAM; fat headers are always big-endian

inline constexpr std::uint32_t kSegmentCommand = 0x1;         // LC_SEGMENT
inline constexpr std::uint32_t kSegment64Command = 0x19;      // LC_SEGMENT_64
inline constexpr std::uint32_t kCodeSignatureCommand = 0x1D;  // LC_CODE_SIGNATURE

inline constexpr std::uint32_t kSectionTypeMask = 0xFF;                 // SECTION_TYPE
inline constexpr std::uint32_t kSectionTypeZeroFill = 0x1;              // S_ZEROFILL
inline constexpr std::uint32_t kSectionTypeGigabyteZeroFill = 0xC;      // S_GB_ZEROFILL
inline constexpr std::uint32_t kSectionTypeThreadLocalZeroFill = 0x12;  // S_THREAD_LOCAL_ZEROFILL

// Lengths in bytes.
inline constexpr std::size_t kFatHeaderSize = 8;
inline constexpr std::size_t kFatArchSize = 20;
inline constexpr std::size_t kHeaderSize32 = 28;
inline constexpr std::size_t kHeaderSize64 = 32;
inline constexpr std::size_t kLoadCommandSize = 8;
inline constexpr std::size_t kSignatureCommandSize = 16;
inline constexpr std::size_t kSegmentSize32 = 56;
inline constexpr std::size_t kSegmentSize64 = 72;
inline constexpr std::size_t kSectionSize32 = 68;
inline constexpr std::size_t kSectionSize64 = 80;
inline constexpr std::size_t kNameSize = 16;

}  // namespace vantrell::macho
