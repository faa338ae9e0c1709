// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "tests/bundles/BundleFixture.h"

namespace vantrell {
namespace {

TEST(VersionNumber, IsTheFirstRunOfDigitsAndDots) {
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("Version 2.5.1 (123)"), 2.51);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("10.14.6"), 10.146);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("7"), 7);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("v1.2b3"), 1.2);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("1..2"), 1.2);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString(".5.5"), 0.55);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("3."), 3);
  EXPECT_DOUBLE_EQ(QELBundle::versionNumberFromString("-4e9"), 4);
}

TEST(VersionNumber, IsZeroWithoutDigits) {
  for (const auto* text : {"", "abc", ".", "...", "version .", "١٢"}) {
    EXPECT_EQ(QELBundle::versionNumberFromString(text), 0.0) << text;
  }
}

TEST(VersionNumber, OfEndlessDigitsIsInfiniteOrNothing) {
  EXPECT_TRUE(std::isinf(QELBundle::versionNumberFromString(std::string(1'000'000, '9'))));
  EXPECT_EQ(QELBundle::versionNumberFromString("0." + std::string(1'000'000, '0') + "1"), 0.0);
}

struct VersionTexts {
  Dictionary information;
  std::optional<std::string> expected;
};

class VersionText : public tests::BundleFixture, public testing::WithParamInterface<VersionTexts> {};

TEST_P(VersionText, IsPutTogetherFromShortAndBundleVersion) {
  EXPECT_EQ(inspected(makePackage("A.app", GetParam().information)).versionString(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, VersionText,
    testing::Values(VersionTexts{{{"CFBundleShortVersionString", "1.2"}, {"CFBundleVersion", "345"}}, "1.2 (345)"},
                    VersionTexts{{{"CFBundleShortVersionString", "1.2"}, {"CFBundleVersion", "1.2"}}, "1.2"},
                    VersionTexts{{{"CFBundleShortVersionString", "1.2"}}, "1.2"},
                    VersionTexts{{{"CFBundleVersion", "345"}}, std::nullopt}, VersionTexts{{}, std::nullopt},
                    VersionTexts{{{"CFBundleShortVersionString", "1.2"}, {"CFBundleVersion", Array{"345"}}}, "1.2"},
                    VersionTexts{{{"CFBundleShortVersionString", 7}, {"CFBundleVersion", "345"}}, std::nullopt},
                    VersionTexts{{{"CFBundleShortVersionString", ""}, {"CFBundleVersion", "3"}}, " (3)"}));

class InstalledVersion : public tests::BundleFixture {
 protected:
  static constexpr char kIdentifier[] = "org.example.editor";

  void install(const std::string& name, Dictionary information, const std::string& identifier = kIdentifier) {
    applications_.addApplication(makePackage(name, information), identifier);
  }
  float version(const std::string& identifier = kIdentifier) {
    return QELBundle::versionNumberForApplicationWithIdentifier(identifier, fileSystem_, applications_);
  }
};

TEST_F(InstalledVersion, IsTheHighestOfAllApplicationsWithTheIdentifier) {
  install("One.app", {{"CFBundleExecutable", "x"}, {"CFBundleShortVersionString", "2.5"}});
  install("Two.app", {{"CFBundleExecutable", "x"}, {"CFBundleShortVersionString", "10.1.2"}});
  install("Three.app", {{"CFBundleExecutable", "x"}, {"CFBundleShortVersionString", "9"}});
  EXPECT_FLOAT_EQ(version(), 10.12F);
}

TEST_F(InstalledVersion, IsZeroWhereThereIsNone) {
  EXPECT_EQ(version(), 0);
  EXPECT_EQ(version(""), 0);
}

TEST_F(InstalledVersion, PassesOverWhatIsNoApplicationOrHasGone) {
  install("Tool.app", {{"CFBundleShortVersionString", "7"}});
  applications_.addApplication(folder_.path("Gone.app"), kIdentifier);
  EXPECT_EQ(version(), 0);
}

TEST_F(InstalledVersion, ComesFromTheBundleVersionWithoutAShortOne) {
  install("One.app", {{"CFBundleExecutable", "x"}, {"CFBundleVersion", "3.1"}});
  EXPECT_FLOAT_EQ(version(), 3.1F);
  install("Two.app", {{"CFBundleExecutable", "x"}, {"CFBundleShortVersionString", ""}, {"CFBundleVersion", "4"}});
  EXPECT_FLOAT_EQ(version(), 4);
  install("Three.app", {{"CFBundleExecutable", "x"}});
  EXPECT_FLOAT_EQ(version(), 4);
}

TEST_F(InstalledVersion, OfSafariComesFromItsInformationText) {
  const Dictionary information{{"CFBundleExecutable", "x"},
                               {"CFBundleGetInfoString", "5.1.10, Copyright"},
                               {"CFBundleShortVersionString", "9"},
                               {"CFBundleVersion", "6534"}};
  install("Safari.app", information, "com.apple.Safari");
  EXPECT_FLOAT_EQ(version("com.apple.Safari"), 5.11F);
  install("Other.app", information);
  EXPECT_FLOAT_EQ(version(), 9);
}

TEST_F(InstalledVersion, OfSafariWithoutThatTextComesFromItsBundleVersion) {
  install("Safari.app", {{"CFBundleExecutable", "x"}, {"CFBundleShortVersionString", "9"}, {"CFBundleVersion", "6534"}},
          "com.apple.Safari");
  EXPECT_FLOAT_EQ(version("com.apple.Safari"), 6534);
}

TEST_F(InstalledVersion, BeyondSinglePrecisionIsInfinite) {
  install("One.app", {{"CFBundleExecutable", "x"}, {"CFBundleShortVersionString", std::string(100, '9')}});
  EXPECT_TRUE(std::isinf(version()));
}

}  // namespace
}  // namespace vantrell
