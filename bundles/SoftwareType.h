// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "bundles/InformationFile.h"
#include "foundation/Dictionary.h"
#include "foundation/FileManager.h"

namespace vantrell {

/// What kind of software a package is; the numbers are what is shown.
enum class SoftwareType : std::uint64_t {
  Unknown = 0,
  Application = 1,
  Widget = 2,
  ScreenSaver = 3,
  PreferencePane = 4,
  Component = 5,
  InternetPlugIn = 6,
  Asset = 7,
};

/// "application", "Internet plug-in" …, for people.
std::string_view nameOfSoftwareType(SoftwareType type) noexcept;

/// The first rule that fits decides: by the path's extension, the style, the name of the folder that holds the package,
/// and what `information` (empty where it can't be read) has.
SoftwareType softwareTypeOfPackage(const std::string& path, PackageStyle style, const Dictionary& information,
                                   FileManager& fileManager);

/// Whether a composition says of itself that it serves as a screen saver.
bool isQuartzCompositionUsableAsScreenSaver(const Dictionary& contents);

}  // namespace vantrell
