// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "host/CodeSignatures.h"
#include "host/FileSystem.h"
#include "host/linux/codesign/CertificateChain.h"

namespace vantrell::host {

/// Code signatures of Mach-O files and of bundles, verified from their own structures with libcrypto. The file system
/// must outlive this and all that comes from it.
class LinuxCodeSignatures final : public CodeSignatures {
 public:
  explicit LinuxCodeSignatures(FileSystem& fileSystem, codesign::Trust trust = {});

  Result<std::unique_ptr<StaticCode>> staticCodeAtPath(const std::string& path) override;

 private:
  FileSystem& fileSystem_;
  codesign::Trust trust_;
};

}  // namespace vantrell::host
