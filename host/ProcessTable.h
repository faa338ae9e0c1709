// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Result.h"

namespace vantrell::host {

struct ProcessRecord {
  std::int32_t identifier = 0;
  std::string name;  // the kernel's short name, cut off as the kernel cuts it: any bytes, perhaps half a character last
  std::uint32_t effectiveUserID = 0;
};

/// The kernel's process table. A process that has ended but was not yet waited for is still in it. Safe from any
/// thread.
class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  /// How many bytes of a name the kernel keeps: names are compared over so many bytes.
  virtual std::size_t nameLength() const noexcept = 0;

  /// All processes that this one may see; those that end while the table is read are passed over.
  virtual Result<std::vector<ProcessRecord>> processes() = 0;

  /// One process, or nothing when there is none with that identifier.
  virtual Result<std::optional<ProcessRecord>> processWithIdentifier(std::int32_t identifier) = 0;
};

}  // namespace vantrell::host
