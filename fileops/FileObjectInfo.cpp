// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FileObjectInfo.h"

#include "foundation/FileManager.h"
#include "foundation/PathUtilities.h"
#include "foundation/Value.h"

namespace vantrell {

Dictionary fileObjectInfo(const std::string& path, const host::FileStatus& status) {
  return {{"Path", displayablePath(path)},
          {"Type", fileTypeText(status.type)},
          {"Size", status.size},
          {"ModificationDate", status.modified},
          {"Mode", status.permissions}};
}

}  // namespace vantrell
