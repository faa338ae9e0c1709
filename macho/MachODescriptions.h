// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>

#include "foundation/Data.h"

/// English words for the numbers in Mach-O structures, for diagnostics. Flags are phrases joined with ", ", or
/// "<none>".
namespace vantrell::macho {

std::string descriptionForMachOFileType(std::uint32_t fileType);
std::string descriptionForMachOFlags(std::uint32_t flags);
std::string descriptionForSegmentFlags(std::uint32_t flags);
/// Begins with the section's type.
std::string descriptionForSectionFlags(std::uint32_t flags);

/// `record` is a load command in host order, 56 or 72 bytes long when it is a segment; fields that lie beyond its end
/// count as 0. The text of a segment ends with a newline. An empty record is "<nil>".
std::string descriptionForSegment(DataView record);

/// `record` is a section in host order; its length, 68 or 80 bytes, tells the form. An empty record is "<nil>".
std::string descriptionForSection(DataView record);

}  // namespace vantrell::macho
