// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "bundles/QELBundle.h"
#include "foundation/PathUtilities.h"
#include "foundation/PropertyList.h"
#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// Packages in a folder of the test's own.
class BundleFixture : public testing::Test {
 protected:
  /// Makes the file `name`, and the folders on the way to it, and returns its path.
  std::string makeFile(const std::string& name, std::string_view content = "") {
    const auto parent = stringByDeletingLastPathComponent(name);
    if (!parent.empty()) folder_.makeFolder(parent);
    return folder_.makeFile(name, content);
  }
  /// The same with a property list as its content.
  std::string makeList(const std::string& name, const Dictionary& list) {
    return makeFile(name, textOf(xmlPropertyListFromValue(list).value()));
  }
  /// A package with this information file, and returns its path.
  std::string makePackage(const std::string& name, const Dictionary& information,
                          const std::string& informationFile = "Contents/Info.plist") {
    makeList(name + "/" + informationFile, information);
    return folder_.path(name);
  }

  std::optional<QELBundle> inspect(const std::string& path) {
    return QELBundle::initWithPath(path, fileSystem_, applications_);
  }
  /// Of a package that has to be one; an inspector of nothing otherwise.
  QELBundle inspected(const std::string& path) {
    auto bundle = inspect(path);
    if (bundle) return *bundle;
    ADD_FAILURE() << "no inspector for " << path;
    return {fileSystem_, applications_};
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  FakeApplications applications_;
};

}  // namespace vantrell::tests
