// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell::host::codesign {

/// Where the parts of a piece of code lie: a single file, or a bundle. No symbolic link is followed below the given
/// path but a framework's Versions/Current, which must name a folder beside it.
struct CodeLocation {
  std::string path;        // as given, without slashes at the end
  std::string executable;  // full path

  // Of a bundle only.
  bool isBundle = false;
  std::string sealedFolder;                       // full path of the folder that _CodeSignature lies in
  std::optional<Data> informationList;            // raw
  std::optional<Data> codeResources;              // raw
  std::set<std::string, std::less<>> exclusions;  // relative to the sealed folder, see SealedResources
  std::vector<std::string> unsealed;  // full paths of what lies beside the sealed folder, where nothing should
};

/// A file that is the main executable of an application's bundle stands for that bundle. POSIX error 2 where nothing
/// is, kBadObject for what can't be code, kUnsupported for bundles without an executable of their own.
Result<CodeLocation> locateCode(FileSystem& fileSystem, const std::string& path);

}  // namespace vantrell::host::codesign
