// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"

namespace vantrell::tests {

namespace {

const std::string kPrefix = VANTRELL_VENDOR_DOMAIN_PREFIX;
const std::string kInformationList = VANTRELL_BINARY_DIR "/resources/Info.plist";
const std::string kLaunchdList = VANTRELL_BINARY_DIR "/resources/launchd.plist";

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

}  // namespace vantrell::tests
