// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/ProcessTable.h"

namespace vantrell::host {

/// The process table that sysctl(3) tells. The kernel's own task, which has number 0, is not in it.
class MacProcessTable final : public ProcessTable {
 public:
  std::size_t nameLength() const noexcept override;
  Result<std::vector<ProcessRecord>> processes() override;
  Result<std::optional<ProcessRecord>> processWithIdentifier(std::int32_t identifier) override;
};

}  // namespace vantrell::host
