// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>

#include "foundation/Error.h"
#include "foundation/FileManager.h"

namespace vantrell {

/// Sets classic type and creator codes and the hidden state of an object, links followed. An empty path is POSIX error
/// 22; other errors are the file manager's.
ErrorOrNil setMacAttributesAtPath(FileManager& fileManager, const std::string& path, std::uint32_t typeCode,
                                  std::uint32_t creatorCode, bool hidden);

}  // namespace vantrell
