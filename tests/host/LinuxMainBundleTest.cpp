// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxMainBundle.h"
#include "tests/macho/ToolRunner.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

namespace {

/// Counts what is loaded.
class CountingFileSystem final : public ForwardingFileSystem {
 public:
  CountingFileSystem() noexcept : ForwardingFileSystem(linux_) {}

  Result<std::unique_ptr<host::FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) override {
    ++loads;
    return ForwardingFileSystem::loadFile(path, maximumSize);
  }

  int loads = 0;

 private:
  host::LinuxFileSystem linux_;
};

}  // namespace

class LinuxMainBundle : public testing::Test {
 protected:
  /// A program with sections of these texts; "" for no such section.
  std::string program(const std::string& information, const std::string& launchd) {
    std::string source = "int main(void) { return 0; }\n";
    if (!information.empty()) source += section("__info_plist", information);
    if (!launchd.empty()) source += section("__launchd_plist", launchd);
    const std::string path = folder_.path("program");
    runTool("cc", {folder_.makeFile("program.c", source), "-o", path});
    return path;
  }

  static std::string section(const std::string& name, const std::string& text) {
    return "asm(\".pushsection " + name + ",\\\"a\\\",%progbits\\n .ascii \\\"" + text + "\\\"\\n .popsection\");\n";
  }

  TemporaryFolder folder_;
  CountingFileSystem fileSystem_;
};

TEST_F(LinuxMainBundle, NamesTheRunningExecutable) {
  host::LinuxMainBundle bundle(fileSystem_);
  const std::string path = bundle.executablePath().value();
  EXPECT_EQ(path, std::filesystem::canonical("/proc/self/exe").string());
  EXPECT_TRUE(path.ends_with("/test_host")) << path;
}

TEST_F(LinuxMainBundle, ResolvesLinksToTheExecutable) {
  const std::string file = folder_.makeFile("real");
  host::LinuxMainBundle bundle(fileSystem_, folder_.makeLink("link", file));
  EXPECT_EQ(bundle.executablePath().value(), std::filesystem::canonical(file).string());
}

TEST_F(LinuxMainBundle, ReportsAnExecutableThatHasGone) {
  host::LinuxMainBundle bundle(fileSystem_, folder_.makeLink("link", folder_.path("program (deleted)")));
  EXPECT_TRUE(bundle.executablePath().error().isPosix(posix::kNoEntry));
  EXPECT_TRUE(bundle.informationPropertyList().error().isPosix(posix::kNoEntry));
}

TEST_F(LinuxMainBundle, ReadsBothListsFromOneLoading) {
  VANTRELL_NEEDS_TOOL("cc");
  host::LinuxMainBundle bundle(fileSystem_, program("the information list", "the launchd list"));
  EXPECT_EQ(fileSystem_.loads, 0);
  EXPECT_EQ(textOf(bundle.informationPropertyList().value()), "the information list");
  EXPECT_EQ(textOf(bundle.launchdPropertyList().value()), "the launchd list");
  EXPECT_EQ(textOf(bundle.informationPropertyList().value()), "the information list");
  EXPECT_EQ(fileSystem_.loads, 1);
}

TEST_F(LinuxMainBundle, ReadsTheListsOfAStrippedExecutable) {
  VANTRELL_NEEDS_TOOL("cc");
  VANTRELL_NEEDS_TOOL("strip");
  const std::string path = program("information", "launchd");
  runTool("strip", {path});
  host::LinuxMainBundle bundle(fileSystem_, path);
  EXPECT_EQ(textOf(bundle.informationPropertyList().value()), "information");
  EXPECT_EQ(textOf(bundle.launchdPropertyList().value()), "launchd");
}

TEST_F(LinuxMainBundle, ReportsAListThatIsMissing) {
  VANTRELL_NEEDS_TOOL("cc");
  host::LinuxMainBundle bundle(fileSystem_, program("", "launchd"));
  EXPECT_TRUE(bundle.informationPropertyList().error().isPosix(posix::kNoEntry));
  EXPECT_EQ(textOf(bundle.launchdPropertyList().value()), "launchd");
}

TEST_F(LinuxMainBundle, ReportsAnExecutableThatCannotBeRead) {
  host::LinuxMainBundle text(fileSystem_, folder_.makeFile("text"));
  EXPECT_TRUE(text.informationPropertyList().error().isPosix(posix::kWrongFormat));
  EXPECT_TRUE(text.launchdPropertyList().error().isPosix(posix::kWrongFormat));
  host::LinuxMainBundle broken(fileSystem_, folder_.makeFile("broken",
                                                             "\x7F"
                                                             "ELF and nothing else"));
  EXPECT_TRUE(broken.informationPropertyList().error().isPosix(posix::kBadMessage));
}

// The test program itself has no lists: it is an executable like any other.
TEST_F(LinuxMainBundle, ReadsTheRunningExecutable) {
  host::LinuxMainBundle bundle(fileSystem_);
  EXPECT_TRUE(bundle.informationPropertyList().error().isPosix(posix::kNoEntry));
}

}  // namespace vantrell::tests
