// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <unistd.h>

#include "host/linux/LinuxFirmwareVariables.h"
#include "tests/host/FirmwareVariablesContract.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace std::string_literals;
using tests::FirmwareVariablesContract;

struct LinuxCandidate final : tests::FirmwareVariablesCandidate {
  tests::TemporaryFolder folder;
  host::LinuxFirmwareVariables real{folder.makeFolder("efivars")};
  host::FirmwareVariables& firmware() override { return real; }
  void removeOptions() override { rmdir(folder.path("efivars").c_str()); }
};

INSTANTIATE_TEST_SUITE_P(, FirmwareVariablesContract,
                         testing::Values(tests::FirmwareVariablesImplementation{
                             "Linux", [] { return std::make_unique<LinuxCandidate>(); }}),
                         FirmwareVariablesContract::nameOf);

struct LinuxFirmwareVariables : testing::Test {
  static constexpr char kOther[] = "7c436110-ab2a-4bbb-a880-fe41995c9f82";
  tests::TemporaryFolder folder;
  host::LinuxFirmwareVariables firmware{folder.path()};

  std::optional<Value> value(const std::string& name) { return firmware.options()->value(name); }
  host::DeviceReturnCode set(const std::string& name, const Value& value) {
    return firmware.options()->setValue(name, value);
  }
  std::string contentOf(const std::string& file) {
    std::ifstream stream(folder.path(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  static std::string own(const std::string& name) { return name + "-" + std::string(host::kVendorVariableGuid); }
  static std::string other(const std::string& name) { return name + "-" + kOther; }
};

TEST_F(LinuxFirmwareVariables, NewOnesAreNonVolatileAndThereForBootAndRunTime) {
  ASSERT_EQ(set("name", "text"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(own("name")), "\x07\0\0\0text\0"s);
  ASSERT_EQ(set("bytes", Data{1, 2}), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(own("bytes")), "\x07\0\0\0\x01\x02"s);
}

TEST_F(LinuxFirmwareVariables, AnIdentifierInTheNameSaysWhoseTheVariableIs) {
  ASSERT_EQ(set(other("name"), "text"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(other("name")), "\x07\0\0\0text\0"s);
  EXPECT_EQ(value("name"), std::nullopt);
  // It is written in lower case; without a name before it, it is a name itself.
  ASSERT_EQ(set("upper-7C436110-AB2A-4BBB-A880-FE41995C9F82", "text"), host::kDeviceSuccess);
  EXPECT_EQ(value(other("upper")), Value("text"));
  for (const auto& name : {std::string(kOther), "-"s + kOther, "name-7c436110-ab2a-4bbb-a880-fe41995c9f8"s,
                           "name-7c436110-ab2a-4bbb-a880-fe41995c9f8g"s, "name_"s + kOther}) {
    ASSERT_EQ(set(name, "text"), host::kDeviceSuccess) << name;
    EXPECT_EQ(contentOf(own(name)), "\x07\0\0\0text\0"s) << name;
  }
}

TEST_F(LinuxFirmwareVariables, ExistingOnesKeepTheirAttributes) {
  folder.makeFile(own("name"),
                  "\x06\0\0\x80"
                  "a longer value than the new one\0"s);
  ASSERT_EQ(set("name", "new"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(own("name")), "\x06\0\0\x80new\0"s);
}

TEST_F(LinuxFirmwareVariables, TypesFollowFromTheBytes) {
  struct Case {
    std::string bytes;
    bool isText;  // the vendor's own
    bool isTextOfOthers;
  };
  const Case kCases[] = {
      {"text\0"s, true, true},
      {"text"s, false, true},
      {"en\0"s, true, true},
      {"2\0"s, true, false},
      {"\0"s, false, false},
      {"@"s, false, false},
      {"AB"s, false, false},
      {"abc"s, false, false},
      {"w\0\0\0"s, false, false},
      {"a\tb\0"s, false, false},
      {"\xFF\xFEtext\0"s, false, false},
      {"\x01\x02\x03\x04"s, false, false},
      {""s, false, false},
      {"\xC3\xA4\xC3\xA4"s, false, true},
      {"te\x7Ft\0"s, false, false},
  };
  for (const auto& [bytes, isText, isTextOfOthers] : kCases) {
    folder.makeFile(own("name"), "\x07\0\0\0"s + bytes);
    folder.makeFile(other("name"), "\x07\0\0\0"s + bytes);
    const auto text = bytes.ends_with('\0') ? bytes.substr(0, bytes.size() - 1) : bytes;
    const Value asText(text);
    const Value asData(Data(bytes.begin(), bytes.end()));
    EXPECT_EQ(value("name"), isText ? asText : asData) << testing::PrintToString(bytes);
    EXPECT_EQ(value(other("name")), isTextOfOthers ? asText : asData) << testing::PrintToString(bytes);
  }
}

TEST_F(LinuxFirmwareVariables, ATextKeepsItsWayOfEnding) {
  folder.makeFile(other("boot-args"), "\x07\0\0\0-v debug=0x100"s);
  ASSERT_EQ(set(other("boot-args"), "-x"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(other("boot-args")), "\x07\0\0\0-x"s);
  folder.makeFile(other("terminated"), "\x07\0\0\0text\0"s);
  ASSERT_EQ(set(other("terminated"), "new"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(other("terminated")), "\x07\0\0\0new\0"s);
  // Without any byte it would be deleted.
  folder.makeFile(other("boot-args"), "\x07\0\0\0-v debug=0x100"s);
  ASSERT_EQ(set(other("boot-args"), ""), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(other("boot-args")), "\x07\0\0\0\0"s);
}

TEST_F(LinuxFirmwareVariables, BooleansAndNumbersAreWrittenAsTexts) {
  ASSERT_EQ(set("name", true), host::kDeviceSuccess);
  EXPECT_EQ(value("name"), Value("true"));
  ASSERT_EQ(set("name", -42), host::kDeviceSuccess);
  EXPECT_EQ(value("name"), Value("-42"));
}

TEST_F(LinuxFirmwareVariables, AFileWithoutAttributesIsAVariableYetToBeWritten) {
  folder.makeFile(own("name"), "\x07\0"s);
  EXPECT_EQ(value("name"), std::nullopt);
  ASSERT_EQ(set("name", "text"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(own("name")), "\x07\0\0\0text\0"s);
}

TEST_F(LinuxFirmwareVariables, FollowsNoLinksAndOpensOnlyFiles) {
  const auto target = folder.makeFile("target", "untouched");
  folder.makeLink(own("link"), "target");
  folder.makeFolder(own("folder"));
  for (const auto* name : {"link", "folder"}) {
    EXPECT_EQ(value(name), std::nullopt) << name;
    EXPECT_LT(set(name, "text"), 0) << name;
  }
  EXPECT_EQ(contentOf("target"), "untouched");
  EXPECT_LT(set(std::string(300, 'x'), "text"), 0);
}

struct LinuxFirmwareVariablesAsRoot : LinuxFirmwareVariables {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root can make a file immutable.";
  }
};

TEST_F(LinuxFirmwareVariablesAsRoot, TakesTheImmutableFlagOffAndPutsItBack) {
  const auto path = folder.makeFile(own("name"), "\x07\0\0\0old\0"s);
  try {
    tests::addInodeFlags(path, FS_IMMUTABLE_FL);
  } catch (const std::system_error& error) {
    GTEST_SKIP() << error.what();
  }
  ASSERT_EQ(set("name", "new"), host::kDeviceSuccess);
  EXPECT_EQ(contentOf(own("name")), "\x07\0\0\0new\0"s);
  EXPECT_TRUE(tests::inodeFlags(path) & FS_IMMUTABLE_FL);
  ASSERT_EQ(set("name", "newer"), host::kDeviceSuccess);
  EXPECT_EQ(value("name"), Value("newer"));
}

TEST_F(LinuxFirmwareVariablesAsRoot, TheKernelsEmptyFolderForTheMountIsNoFirmware) {
  EXPECT_EQ(host::LinuxFirmwareVariables("/sys/firmware").options(), nullptr);
}

}  // namespace
}  // namespace vantrell
