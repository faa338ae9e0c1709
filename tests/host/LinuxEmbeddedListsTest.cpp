// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxMainBundle.h"
#include "host/linux/NettleCryptography.h"
#include "macho/QELMachOProcessor.h"
#include "tests/macho/ToolRunner.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

namespace {

const std::string kInformationList = VANTRELL_BINARY_DIR "/resources/Info.plist";
const std::string kLaunchdList = VANTRELL_BINARY_DIR "/resources/launchd.plist";
const std::string kAssemblerFile = VANTRELL_SOURCE_DIR "/resources/embedded_lists.S";
const std::vector<std::string> kDefinitions = {"-DVANTRELL_INFO_PLIST=\"" + kInformationList + "\"",
                                               "-DVANTRELL_LAUNCHD_PLIST=\"" + kLaunchdList + "\""};

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> with(std::vector<std::string> options) {
  options.insert(options.end(), kDefinitions.begin(), kDefinitions.end());
  return options;
}

}  // namespace

TEST(LinuxEmbeddedLists, LieInTheExecutableByteForByte) {
  VANTRELL_NEEDS_TOOL("cc");
  VANTRELL_NEEDS_TOOL("strip");
  const TemporaryFolder folder;
  const std::string program = folder.path("program");
  runTool("cc", with({folder.makeFile("main.c", "int main(void) { return 0; }"), kAssemblerFile, "-o", program,
                      "-Wl,--fatal-warnings"}));
  runTool("strip", {program});
  host::LinuxFileSystem fileSystem;
  host::LinuxMainBundle bundle(fileSystem, program);
  EXPECT_EQ(textOf(bundle.informationPropertyList().value()), contentsOf(kInformationList));
  EXPECT_EQ(textOf(bundle.launchdPropertyList().value()), contentsOf(kLaunchdList));
}

TEST(LinuxEmbeddedLists, LieInTheTextSegmentOfAMachOFile) {
  VANTRELL_NEEDS_TOOL("clang-19");
  VANTRELL_NEEDS_TOOL("ld64.lld-19");
  const TemporaryFolder folder;
  const std::string lists = folder.path("lists.o");
  const std::string main = folder.path("main.o");
  const std::string program = folder.path("program");
  runTool("clang-19", with({"-target", "arm64-apple-macos11", "-c", kAssemblerFile, "-o", lists}));
  runTool("clang-19", {"-target", "arm64-apple-macos11", "-c",
                       folder.makeFile("main.c", "int main(void) { return 0; }"), "-o", main});
  runTool("ld64.lld-19", {"-arch", "arm64", "-platform_version", "macos", "11.0", "11.0", "-dead_strip", "-e", "_main",
                          "-undefined", "dynamic_lookup", lists, main, "-o", program});
  host::LinuxFileSystem fileSystem;
  host::NettleCryptography cryptography;
  RecordingLog log;
  const auto reader = QELMachOProcessor::initForFileAtPath(program, fileSystem, cryptography, log);
  ASSERT_TRUE(reader);
  const std::string file = contentsOf(program);
  const auto section = [&](const std::string& key) {
    const auto& sections = *reader->sectionsByNameForPartAtIndex(0);
    return sections.contains(key) ? file.substr(sections.at(key).offset(), sections.at(key).contentSize()) : "none";
  };
  EXPECT_EQ(section("__TEXT,__info_plist"), contentsOf(kInformationList));
  EXPECT_EQ(section("__TEXT,__launchd_plist"), contentsOf(kLaunchdList));
}

}  // namespace vantrell::tests
