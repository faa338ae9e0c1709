// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Dictionary.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Where a package keeps its information file; the numbers are what is shown.
enum class PackageStyle : std::uint64_t {
  Contents = 0,        // Contents/Info.plist
  Resources = 1,       // Resources/Info.plist
  Flat = 2,            // Info.plist
  ContentsMacos = 3,   // Contents/Info-macos.plist
  ResourcesMacos = 4,  // Resources/Info-macos.plist
  Composition = 5,     // a file with the extension "qtz" is its own information file
};
inline constexpr std::uint64_t kPackageStyles = 6;

/// Whether the style keeps everything in the folder "Contents".
inline bool hasContentsFolder(PackageStyle style) noexcept {
  return style == PackageStyle::Contents || style == PackageStyle::ContentsMacos;
}

/// The path of the style's information file, be there one or not; nothing for an empty path, for an unknown style, and
/// for style 5 unless the path's extension is "qtz".
std::optional<std::string> infoPathForBundlePath(std::string_view path, std::uint64_t packageStyle);

/// The property list at `path`, in any of the three formats, if its root is a dictionary; nothing for all else: no
/// file, a pipe or device, a malformed list, and one that is larger, deeper or richer than any honest one. Blocks on
/// nothing but the disk.
std::optional<Dictionary> dictionaryFromPropertyListFile(const std::string& path, host::FileSystem& fileSystem);

/// The text under `key`, or nothing: values of other kinds count as missing.
std::optional<std::string> textUnder(const Dictionary& dictionary, std::string_view key);

}  // namespace vantrell
