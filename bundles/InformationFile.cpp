// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/InformationFile.h"

#include <array>
#include <utility>

#include "foundation/PathUtilities.h"
#include "foundation/PropertyList.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

// The longest ones in use have some hundred kilobytes and some thousand values. Compositions bring their pictures
// along.
constexpr std::size_t kLongestInformationFile = std::size_t{4} << 20;
constexpr std::size_t kLongestComposition = std::size_t{16} << 20;
constexpr std::size_t kDeepestInformation = 128;
constexpr std::size_t kMostValues = 200'000;

constexpr std::string_view kCompositionExtension = "qtz";

constexpr std::array kInformationFiles = {
    "Contents/Info.plist",       "Resources/Info.plist",       "Info.plist",
    "Contents/Info-macos.plist", "Resources/Info-macos.plist",
};
static_assert(kInformationFiles.size() + 1 == kPackageStyles);

}  // namespace

std::optional<std::string> infoPathForBundlePath(std::string_view path, std::uint64_t packageStyle) {
  if (path.empty() || packageStyle >= kPackageStyles) return std::nullopt;
  if (packageStyle < kInformationFiles.size()) {
    return stringByAppendingPathComponent(path, kInformationFiles[packageStyle]);
  }
  return pathExtension(path) == kCompositionExtension ? std::optional(std::string(path)) : std::nullopt;
}

std::optional<Dictionary> dictionaryFromPropertyListFile(const std::string& path, host::FileSystem& fileSystem) {
  const bool isComposition = pathExtension(path) == kCompositionExtension;
  const PropertyListLimits limits{.maximumSize = isComposition ? kLongestComposition : kLongestInformationFile,
                                  .maximumDepth = kDeepestInformation,
                                  .maximumObjects = kMostValues};
  const auto contents = fileSystem.loadFile(path, limits.maximumSize);
  if (!contents) return std::nullopt;
  auto list = propertyListFromData((*contents)->bytes(), limits);
  if (!list) return std::nullopt;
  auto* dictionary = list->root.asDictionary();
  return dictionary ? std::optional(std::move(*dictionary)) : std::nullopt;
}

std::optional<std::string> textUnder(const Dictionary& dictionary, std::string_view key) {
  const auto* value = dictionary.find(key);
  const auto* text = value ? value->asString() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

}  // namespace vantrell
