// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/posix/PosixIdentities.h"

namespace vantrell::host {

/// Identity services and Open Directory's user database.
class MacIdentities final : public PosixIdentities {
 public:
  std::vector<std::uint32_t> userIDsOfIdentityService() override;
};

}  // namespace vantrell::host
