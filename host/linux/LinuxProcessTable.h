// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/ProcessTable.h"

namespace vantrell::host {

/// The process table as /proc shows it. Name and user come from one reading of a process's status, so that both are of
/// one moment.
class LinuxProcessTable final : public ProcessTable {
 public:
  std::size_t nameLength() const noexcept override;
  Result<std::vector<ProcessRecord>> processes() override;
  Result<std::optional<ProcessRecord>> processWithIdentifier(std::int32_t identifier) override;
};

}  // namespace vantrell::host
