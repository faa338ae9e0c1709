// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Cryptography.h"
#include "host/ExecutableDescriptor.h"
#include "host/FileSystem.h"

namespace vantrell::host {

/// ELF files have one part. POSIX error 94 for an ELF file that is inconsistent or has no sections to digest, 27 for
/// one that is too long, else what the loading of the file reports.
class ElfExecutableDescriptor final : public ExecutableDescriptor {
 public:
  /// Both must outlive this.
  ElfExecutableDescriptor(FileSystem& fileSystem, Cryptography& cryptography)
      : fileSystem_(fileSystem), cryptography_(cryptography) {}

  Result<std::vector<std::string>> descriptorsForFileAtPath(std::string_view path) override;

 private:
  FileSystem& fileSystem_;
  Cryptography& cryptography_;
};

}  // namespace vantrell::host
