// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxMainBundle.h"
#include "host/linux/NettleCryptography.h"
#include "macho/QELMachOProcessor.h"
#include "tests/macho/ToolRunner.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

using testing::ElementsAre;

namespace {

const std::string kPrefix = VANTRELL_VENDOR_DOMAIN_PREFIX;
const std::string kInformationList = VANTRELL_BINARY_DIR "/resources/Info.plist";
const std::string kLaunchdList = VANTRELL_BINARY_DIR "/resources/launchd.plist";
const std::string kAssemblerFile = VANTRELL_SOURCE_DIR "/resources/embedded_lists.S";
const std::vector<std::string> kDefinitions = {"-DVANTRELL_INFO_PLIST=\"" + kInformationList + "\"",
                                               "-DVANTRELL_LAUNCHD_PLIST=\"" + kLaunchdList + "\""};

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

Dictionary dictionaryAt(const std::string& path) {
  const std::string text = contentsOf(path);
  const auto list = propertyListFromData(bytesOf(text));
  EXPECT_TRUE(list && list->format == PropertyListFormat::Xml) << path;
  const Dictionary* root = list ? list->root.asDictionary() : nullptr;
  return root != nullptr ? *root : Dictionary();
}

std::vector<std::string> with(std::vector<std::string> options) {
  options.insert(options.end(), kDefinitions.begin(), kDefinitions.end());
  return options;
}

}  // namespace

TEST(EmbeddedLists, TheInformationListHasTheHelpersKeys) {
  const Dictionary list = dictionaryAt(kInformationList);
  const auto text = [&](std::string_view key) {
    const Value* value = list.find(key);
    return value != nullptr && value->asString() != nullptr ? *value->asString() : "no text";
  };
  EXPECT_EQ(list.size(), 8U);
  EXPECT_EQ(text("CFBundleIdentifier"), kPrefix + ".system.privilegedtool-lm4");
  EXPECT_EQ(text("CFBundleInfoDictionaryVersion"), "6.0");
  EXPECT_EQ(text("CFBundleName"), "Vantrell-PrivilegedTool");
  EXPECT_EQ(text("CFBundleShortVersionString"), "2.5");
  EXPECT_EQ(text("CFBundleVersion"), "200203");
  EXPECT_NE(text("NSHumanReadableCopyright"), "no text");
  EXPECT_EQ(text("NSPrincipalClass"), "QELPrivilegedToolOperationSetLM4");
  ASSERT_TRUE(list.contains("SMAuthorizedClients"));
  EXPECT_EQ(*list.find("SMAuthorizedClients"), Value(Array{"identifier \"" + kPrefix + ".system.maintenance\""}));
}

TEST(EmbeddedLists, TheLaunchdListNamesTheService) {
  EXPECT_EQ(dictionaryAt(kLaunchdList),
            (Dictionary{{"Label", "Vantrell-PrivilegedTool"},
                        {"MachServices", Dictionary{{kPrefix + ".system.privilegedtool-lm4", true}}}}));
}

TEST(EmbeddedLists, LieInTheExecutableByteForByte) {
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

TEST(EmbeddedLists, LieInTheTextSegmentOfAMachOFile) {
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
