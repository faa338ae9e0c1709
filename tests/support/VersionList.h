// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// Makes a system version list of that version in the folder and returns its path.
inline std::string makeVersionList(const TemporaryFolder& folder, const std::string& version,
                                   const std::string& build = "18G103") {
  return folder.makeFile("SystemVersion " + version + ".plist",
                         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                         "<plist version=\"1.0\">\n<dict>\n\t<key>ProductBuildVersion</key>\n\t<string>" +
                             build +
                             "</string>\n\t<key>ProductName</key>\n\t<string>Mac OS X</string>\n"
                             "\t<key>ProductVersion</key>\n\t<string>" +
                             version + "</string>\n</dict>\n</plist>\n");
}

}  // namespace vantrell::tests
