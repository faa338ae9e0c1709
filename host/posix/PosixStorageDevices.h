// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/StorageDevices.h"

namespace vantrell::host {

/// Objects below /dev, or anywhere. Disks and regular files are written in large pieces, disks past the kernel's cache
/// where they take that; to anything else (a terminal, a pipe, a tape) the size of a write means something
/// and every block is one write.
class PosixStorageDevices final : public StorageDevices {
 public:
  Result<std::unique_ptr<StorageDevice>> openForWriting(const std::string& path) override;
};

}  // namespace vantrell::host
