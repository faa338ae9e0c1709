// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <mutex>

#include "host/Identities.h"

namespace vantrell::host {

/// The user database as the C library has it: files and directory services. What the platform's identity service knows
/// is left to each host.
class PosixIdentities : public Identities {
 public:
  std::vector<std::uint32_t> userIDsOfUserDatabase() override;
  bool mayBeUserID(std::uint32_t userID) override;

 private:
  std::mutex enumeration_;  // the C library keeps one place in the database for the whole process
};

}  // namespace vantrell::host
