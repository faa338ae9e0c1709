// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"

namespace vantrell::host::codesign {

/// One architecture of an executable. Views into the file.
struct MachOSlice {
  std::string architecture;  // for people
  DataView bytes;
  std::optional<std::uint64_t> signatureOffset;  // from the slice's start; nothing where it isn't signed
  DataView signature;
  std::optional<DataView> informationList;  // section __TEXT,__info_plist
};

/// The architectures of a Mach-O file, thin or universal. Stricter than QELMachOProcessor, which reads files as their
/// makers left them: here whatever no signature covers has to be empty. Universal headers, which none covers, must be
/// consistent with what they point to, slices mustn't overlap, the bytes between and behind them must be zero, and a
/// signature must be the last thing in its slice. kBadObject for anything else.
Result<std::vector<MachOSlice>> machOSlices(DataView file);

}  // namespace vantrell::host::codesign
