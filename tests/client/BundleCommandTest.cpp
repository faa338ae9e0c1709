// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/Vantrellctl.h"
#include "foundation/PropertyList.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeTerminal.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using testing::Not;

class BundleCommand : public testing::Test {
 protected:
  ExitStatus describe(const std::string& path, bool json = false) {
    out_.str("");
    const CommandContext context{client_.host, terminal_, operations_, out_, err_, json, true};
    return carryOut({.command = CommandLine::Command::Bundle, .file = path}, context);
  }
  std::string makeApplication(const std::string& name, const Dictionary& information) {
    folder_.makeFolder(name + "/Contents/Resources/de.lproj");
    folder_.makeFolder(name + "/Contents/MacOS");
    folder_.makeFile(name + "/Contents/MacOS/main");
    folder_.makeFile(name + "/Contents/Info.plist", textOf(binaryPropertyListFromValue(information).value()));
    return folder_.path(name);
  }

  tests::TemporaryFolder folder_;
  tests::ClientHost client_;
  QELPrivilegedToolOperationSetLM4 operations_{*client_.host.systemLog};
  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  std::ostringstream err_;
};

const Dictionary kEditor{{"CFBundleExecutable", "main"},
                         {"CFBundleIdentifier", "org.example.editor"},
                         {"CFBundleShortVersionString", "1.2"},
                         {"CFBundleVersion", "345"},
                         {"NSServices", Array{Dictionary{{"NSMessage", "open"}}}}};

TEST_F(BundleCommand, PrintsWhatThereIsToSayOfAPackage) {
  const auto path = makeApplication("Editor.app", kEditor);
  client_.applications->setLastUsedDate(path, {0, 500'000'000});
  EXPECT_EQ(describe(path), ExitStatus::Success);
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(out_.str(), "Path:                     " + path +
                            "\n"
                            "Kind:                     application (1)\n"
                            "Package style:            0\n"
                            "Version:                  1.2 (345)\n"
                            "Identifier:               org.example.editor\n"
                            "Last used:                1970-01-01T00:00:00.5Z\n"
                            "Information file:         " +
                            path +
                            "/Contents/Info.plist\n"
                            "Executable:               " +
                            path +
                            "/Contents/MacOS/main\n"
                            "Resources:                " +
                            path +
                            "/Contents/Resources\n"
                            "Development language:     none\n"
                            "Languages:                de\n"
                            "Services:                 1\n"
                            "Sealed by a signature:    no\n"
                            "MRJ application:          no\n"
                            "Revolution application:   no\n");
}

TEST_F(BundleCommand, PrintsOneObjectAsJson) {
  const auto path = makeApplication("Editor.app", kEditor);
  EXPECT_EQ(describe(path, true), ExitStatus::Success);
  const nlohmann::json expected{{"path", path},
                                {"packageStyle", 0},
                                {"softwareType", 1},
                                {"softwareTypeName", "application"},
                                {"version", "1.2 (345)"},
                                {"identifier", "org.example.editor"},
                                {"lastUsed", nullptr},
                                {"name", "Editor"},
                                {"informationFile", path + "/Contents/Info.plist"},
                                {"contents", path + "/Contents"},
                                {"resources", path + "/Contents/Resources"},
                                {"executable", path + "/Contents/MacOS/main"},
                                {"developmentLocalization", nullptr},
                                {"localizations", {"de"}},
                                {"services", {{{"NSMessage", "open"}}}},
                                {"isCodesigned", false},
                                {"isMRJApplication", false},
                                {"isRevolutionApplication", false}};
  EXPECT_EQ(nlohmann::json::parse(out_.str()), expected);
}

TEST_F(BundleCommand, LetsNothingOfAPackageReachTheTerminalAsItIs) {
  auto information = kEditor;
  information.set("CFBundleIdentifier", "\x1b[2Jorg\nVersion: 9");
  const auto path = makeApplication("\x1b]0;x\a\xff.app", information);
  folder_.makeFolder("\x1b]0;x\a\xff.app/Contents/Resources/\x1b[31m.lproj");
  EXPECT_EQ(describe(path), ExitStatus::Success);
  EXPECT_THAT(out_.str(), Not(HasSubstr("\x1b")));
  EXPECT_THAT(out_.str(), Not(HasSubstr("\xff")));
  EXPECT_THAT(out_.str(), HasSubstr("org\\nVersion: 9\n"));
  EXPECT_EQ(describe(path, true), ExitStatus::Success);
  EXPECT_TRUE(nlohmann::json::accept(out_.str()));
}

TEST_F(BundleCommand, FailsOnWhatIsNoPackage) {
  for (const auto& path : {folder_.path(), folder_.path("missing"), folder_.makeFile("file.app"), std::string()}) {
    for (const bool json : {false, true}) {
      err_.str("");
      EXPECT_EQ(describe(path, json), ExitStatus::Failure);
      EXPECT_EQ(out_.str(), "");
      EXPECT_EQ(err_.str(), "vantrellctl: \"" + path + "\" is no software package.\n");
    }
  }
}

}  // namespace
}  // namespace vantrell
