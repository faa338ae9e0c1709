// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/PropertyList.h"
#include "foundation/Value.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

inline constexpr std::string_view kMediaUtility = "Contents/Resources/createinstallmedia";
inline constexpr std::string_view kInstallInfo = "Contents/SharedSupport/InstallInfo.plist";

/// An application built like an installer, of the newer kind if it is given a version, else of the older one. What
/// makes it one can be taken away piece by piece.
class InstallerMaker {
 public:
  explicit InstallerMaker(const std::string& name = "Install macOS.app") : path_(folder_.makeFolder(name)) {
    makeInformation({{"CFBundleExecutable", "InstallAssistant"},
                     {"CFBundleDisplayName", "Install macOS Catalina"},
                     {"CFBundleIdentifier", "com.apple.InstallAssistant.Catalina"}});
    makeFile("Contents/_CodeSignature/CodeResources", "seal");
    makeMediaUtility("#!/bin/sh\nexit 0\n");
  }

  const std::string& path() const { return path_; }
  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }
  std::string mediaUtilityPath() const { return path(kMediaUtility); }

  void makeInformation(const Dictionary& information) { makeList("Contents/Info.plist", information); }
  void makeInstallInfo(const Value& version) {
    makeList(kInstallInfo, {{"System Image Info", Dictionary{{"version", version}}}});
  }
  void makeMediaUtility(std::string_view script) {
    makeFile(kMediaUtility, script);
    std::filesystem::permissions(mediaUtilityPath(), std::filesystem::perms(0755));
  }
  void makeList(std::string_view name, const Dictionary& list) {
    makeFile(name, textOf(xmlPropertyListFromValue(list).value()));
  }
  void makeFile(std::string_view name, std::string_view content) {
    const auto relative = std::filesystem::path(path(name)).lexically_relative(folder_.path());
    folder_.makeFolder(relative.parent_path().string());
    folder_.makeFile(relative.string(), content);
  }
  void remove(std::string_view name) { std::filesystem::remove_all(path(name)); }

 private:
  TemporaryFolder folder_;
  std::string path_;
};

}  // namespace vantrell::tests
