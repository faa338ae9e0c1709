// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/MachOReadingBudget.h"

#include "macho/MachOFormat.h"

namespace vantrell::macho {

MachOReadingBudget::MachOReadingBudget(std::uint64_t fileLength) noexcept
    : commands_(fileLength / kLoadCommandSize + kRepeatedCommands),
      signatureBytes_(fileLength + kRepeatedSignatureBytes),
      contentBytes_(fileLength * kContentReadings + kRepeatedContentBytes) {}

bool MachOReadingBudget::take(std::uint64_t& left, std::uint64_t share) noexcept {
  if (share > left) return false;
  left -= share;
  return true;
}

}  // namespace vantrell::macho
