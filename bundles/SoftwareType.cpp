// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/SoftwareType.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "foundation/PathUtilities.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

constexpr std::string_view kScreenSaverProtocol = "com.apple.QuartzComposer.protocol.screensaver";

constexpr std::array<std::string_view, 8> kNames = {
    "unknown", "application", "widget", "screen saver", "preference pane", "component", "Internet plug-in", "asset"};

bool namesExecutable(const Dictionary& information) {
  const auto name = textUnder(information, "CFBundleExecutable");
  return name && !name->empty();
}

bool holdsAssets(const std::string& path, FileManager& fileManager) {
  return fileManager.fileExistsAtPath(stringByAppendingPathComponent(path, "AssetData")) &&
         fileManager.fileExistsAtPath(stringByAppendingPathComponent(path, "META-INF"));
}

}  // namespace

std::string_view nameOfSoftwareType(SoftwareType type) noexcept {
  return kNames[std::min(static_cast<std::size_t>(type), kNames.size() - 1)];
}

SoftwareType softwareTypeOfPackage(const std::string& path, PackageStyle style, const Dictionary& information,
                                   FileManager& fileManager) {
  const auto extension = pathExtension(path);
  const bool inContents = hasContentsFolder(style);
  if (extension == "app" && inContents && namesExecutable(information)) return SoftwareType::Application;
  if (extension == "wdgt" && style == PackageStyle::Flat) return SoftwareType::Widget;
  if ((extension == "saver" || extension == "slideSaver") && style == PackageStyle::Contents) {
    return SoftwareType::ScreenSaver;
  }
  if (extension == "prefPane" && style == PackageStyle::Contents && namesExecutable(information)) {
    return SoftwareType::PreferencePane;
  }
  if (extension == "component" && inContents && namesExecutable(information)) return SoftwareType::Component;
  if (inContents && lastPathComponent(stringByDeletingLastPathComponent(path)) == "Internet Plug-Ins") {
    return SoftwareType::InternetPlugIn;
  }
  if (style == PackageStyle::Composition && isQuartzCompositionUsableAsScreenSaver(information)) {
    return SoftwareType::ScreenSaver;
  }
  if (extension == "asset" && style == PackageStyle::Flat && holdsAssets(path, fileManager)) return SoftwareType::Asset;
  return SoftwareType::Unknown;
}

bool isQuartzCompositionUsableAsScreenSaver(const Dictionary& contents) {
  const auto* value = contents.find("protocols");
  const auto* protocols = value ? value->asArray() : nullptr;
  return protocols && std::ranges::any_of(*protocols, [](const Value& protocol) {
           const auto* name = protocol.asString();
           return name && *name == kScreenSaverProtocol;
         });
}

}  // namespace vantrell
