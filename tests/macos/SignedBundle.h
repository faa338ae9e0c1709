// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/macos/ToolOutput.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// An application in a temporary folder, with a script for its executable, which the system's own tool signs without
/// further tools; the signature is an ad-hoc one. Like everything in it, it may be changed afterwards.
class SignedBundle {
 public:
  static constexpr char kIdentifier[] = "com.vantrell.test.bundle";

  SignedBundle() {
    makeApplication("Test.app", kIdentifier);
    makeApplication("Test.app/Contents/PlugIns/Inner.app", "com.vantrell.test.inner");
    sign("Test.app/Contents/PlugIns/Inner.app");
    sign("Test.app");
  }

  std::string path() const { return folder_.path("Test.app"); }
  /// Of something in it.
  std::string path(const std::string& name) const { return path() + "/Contents/" + name; }

  void write(const std::string& name, const std::string& content) const {
    folder_.makeFile("Test.app/Contents/" + name, content);
  }
  void remove(const std::string& name) const { std::filesystem::remove(path(name)); }

 private:
  void makeApplication(const std::string& application, const std::string& identifier) const {
    const auto contents = application + "/Contents/";
    for (const char* folder : {"MacOS", "Resources"}) folder_.makeFolder(contents + folder);
    folder_.makeFile(contents + "Info.plist", informationList(identifier));
    folder_.makeFile(contents + "MacOS/run", "#!/bin/sh\n");
    std::filesystem::permissions(folder_.path(contents + "MacOS/run"), std::filesystem::perms(0755));
    folder_.makeFile(contents + "Resources/one.txt", "one");
    folder_.makeFile(contents + "Resources/two.txt", "two");
  }

  static std::string informationList(const std::string& identifier) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
  <dict>
    <key>CFBundleIdentifier</key><string>)" +
           identifier + R"(</string>
    <key>CFBundleExecutable</key><string>run</string>
    <key>CFBundlePackageType</key><string>APPL</string>
  </dict>
</plist>)";
  }

  void sign(const std::string& name) const {
    outputOf("/usr/bin/codesign --force --sign - '" + folder_.path(name) + "' 2>&1");
  }

  TemporaryFolder folder_;
};

}  // namespace vantrell::tests
