// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/LinkCreation.h"

namespace vantrell {

ErrorOrNil createLinkAtPath(FileManager& fileManager, const std::string& path, const std::string& toTarget,
                            bool asHardLink) {
  return asHardLink ? fileManager.linkItemAtPath(toTarget, path) : fileManager.createSymbolicLinkAtPath(path, toTarget);
}

}  // namespace vantrell
