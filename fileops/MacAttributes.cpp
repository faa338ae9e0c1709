// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/MacAttributes.h"

#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell {

ErrorOrNil setMacAttributesAtPath(FileManager& fileManager, const std::string& path, std::uint32_t typeCode,
                                  std::uint32_t creatorCode, bool hidden) {
  if (path.empty()) return Error::posix(posix::kInvalidArgument);
  const Dictionary codes{{NSFileHFSTypeCode, typeCode}, {NSFileHFSCreatorCode, creatorCode}};
  if (auto error = fileManager.setAttributes(codes, path)) return error;
  return fileManager.setHiddenState(hidden, path);
}

}  // namespace vantrell
