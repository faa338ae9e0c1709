// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/CodeSignatures.h"

namespace vantrell::host {

/// Code signatures as the Security framework has them: its codes, its sentences, its trust in certificates. The links
/// in a path are resolved once, when code is asked for. To check for revocation is to use the network, and to wait for
/// it.
class MacCodeSignatures final : public CodeSignatures {
 public:
  Result<std::unique_ptr<StaticCode>> staticCodeAtPath(const std::string& path) override;
};

}  // namespace vantrell::host
