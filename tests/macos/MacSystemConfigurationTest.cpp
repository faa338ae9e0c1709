// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Configurations of the tests' own; this computer's is left alone.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "foundation/PropertyList.h"
#include "host/macos/MacSystemConfiguration.h"
#include "tests/host/SystemConfigurationContract.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace std::string_literals;
using tests::SystemConfigurationContract;
using tests::SystemConfigurationContractConcurrent;

constexpr char kNeedsRoot[] = "Only root may lock a configuration.";

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Dictionary listOf(const std::string& path) {
  const auto list = propertyListFromData(bytesOf(contentOf(path)));
  const auto* contents = list ? list->root.asDictionary() : nullptr;
  return contents ? *contents : Dictionary();
}

/// Whatever is opened, the default one as well, is a file in a folder of the test's own.
struct ConfigurationInFolder final : host::SystemConfiguration {
  tests::TemporaryFolder folder;
  host::MacSystemConfiguration real;

  std::string pathOf(std::string_view identifier) const {
    return folder.path(identifier.empty() ? "preferences.plist" : identifier);
  }
  std::unique_ptr<host::SystemConfigurationSession> open(std::string_view clientName,
                                                         std::string_view identifier) override {
    return real.open(clientName, pathOf(identifier));
  }
};

struct MacCandidate final : tests::SystemConfigurationCandidate {
  ConfigurationInFolder inFolder;
  host::SystemConfiguration& configuration() override { return inFolder; }
  Dictionary contents(const std::string& identifier) override { return listOf(inFolder.pathOf(identifier)); }
  void setContents(const Dictionary& contents) override {
    inFolder.folder.makeFile("preferences.plist", textOf(xmlPropertyListFromValue(contents).value()));
  }
  std::string reasonToSkip() const override { return geteuid() == 0 ? "" : kNeedsRoot; }
};

const auto kMac =
    testing::Values(tests::SystemConfigurationImplementation{"Mac", [] { return std::make_unique<MacCandidate>(); }});
INSTANTIATE_TEST_SUITE_P(AsRoot, SystemConfigurationContract, kMac, SystemConfigurationContract::nameOf);
INSTANTIATE_TEST_SUITE_P(AsRoot, SystemConfigurationContractConcurrent, kMac, SystemConfigurationContract::nameOf);

struct MacSystemConfiguration : testing::Test {
  ConfigurationInFolder configuration;
  const std::string path = configuration.pathOf("");

  bool set(const std::string& key, const Value& value) {
    const auto session = configuration.open("client", "");
    return session->lock(true) && session->setValue(key, value) && session->applyChanges() &&
           session->commitChanges() && session->unlock();
  }
};

TEST_F(MacSystemConfiguration, WithoutRootNobodyGetsTheLock) {
  if (geteuid() == 0) GTEST_SKIP() << "Root does.";
  const auto session = configuration.open("client", "");
  ASSERT_TRUE(session);
  EXPECT_FALSE(session->lock(false));
  EXPECT_TRUE(session->setValue("key", 1));
  EXPECT_FALSE(session->commitChanges());
  EXPECT_FALSE(session->unlock());
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(MacSystemConfiguration, ReadsWithoutTheLock) {
  configuration.folder.makeFile("preferences.plist",
                                "<plist><dict><key>NetworkServices</key><dict><key>service</key><dict>"
                                "<key>Interface</key><dict><key>Type</key><string>Ethernet</string></dict>"
                                "<key>IPv6</key><dict/></dict></dict></dict></plist>");
  const auto session = configuration.open("client", "");
  ASSERT_TRUE(session);
  const auto service = session->networkService("service");
  ASSERT_TRUE(service);
  EXPECT_TRUE(service->ipv6Protocol());
  EXPECT_FALSE(session->networkService("other"));
  EXPECT_FALSE(session->networkService("service/IPv6"));
}

TEST_F(MacSystemConfiguration, TakesNoValueThatXmlCannotHold) {
  const auto session = configuration.open("client", "");
  ASSERT_TRUE(session);
  for (const Value& value : {Value(), Value("\x01"), Value(Array{Value()}), Value(Dictionary{{"key", "\x1B"}})})
    EXPECT_FALSE(session->setValue("key", value));
  EXPECT_FALSE(session->removeValue("key"));
}

TEST_F(MacSystemConfiguration, TakesValuesOfEveryKindAndDepth) {
  const auto session = configuration.open("client", "");
  ASSERT_TRUE(session);
  Value deep = 1;
  for (int i = 0; i < 100; ++i) deep = Dictionary{{"key", deep}};
  for (const Value& value : {Value("text"), Value(true), Value(-1), Value(2.5), Value(Data{1}), Value(Date()), deep})
    EXPECT_TRUE(session->setValue("key", value));
  EXPECT_TRUE(session->removeValue("key"));
}

struct MacSystemConfigurationAsRoot : MacSystemConfiguration {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << kNeedsRoot;
  }
};

TEST_F(MacSystemConfigurationAsRoot, WritesXmlAndCleansUp) {
  ASSERT_TRUE(set("key", Dictionary{{"list", Array{1, "text", true}}}));
  EXPECT_TRUE(contentOf(path).starts_with("<?xml"));
  EXPECT_EQ(listOf(path), (Dictionary{{"key", Dictionary{{"list", Array{1, "text", true}}}}}));
  EXPECT_FALSE(std::filesystem::exists(path + "-lock"));
  EXPECT_FALSE(std::filesystem::exists(path + "-new"));
}

TEST_F(MacSystemConfigurationAsRoot, WhatIsNoPropertyListCountsAsEmpty) {
  configuration.folder.makeFile("preferences.plist", "{ broken");
  ASSERT_TRUE(set("key", 1));
  EXPECT_EQ(listOf(path), (Dictionary{{"key", 1}}));
}

TEST_F(MacSystemConfigurationAsRoot, ANameIsAFileInTheSystemsFolder) {
  const auto name = "com.vantrell.test-" + std::to_string(getpid()) + ".plist";
  const auto file = "/Library/Preferences/SystemConfiguration/" + name;
  ASSERT_FALSE(std::filesystem::exists(file));
  const auto session = host::MacSystemConfiguration().open("client", name);
  ASSERT_TRUE(session);
  EXPECT_TRUE(session->lock(true) && session->setValue("key", 1) && session->commitChanges() && session->unlock());
  EXPECT_EQ(listOf(file), (Dictionary{{"key", 1}}));
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace vantrell
