// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "host/linux/LinuxFileSystem.h"
#include "system/FileUrl.h"
#include "system/InstallVersionScanner.h"
#include "system/OSInstallAppValidator.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/FakeCodeSignatures.h"
#include "tests/system/InstallerMaker.h"

namespace vantrell {
namespace {

constexpr char kAppleTeam[] = "APPLECOMPUTER";
constexpr char kInstallerTeam[] = "K36BKF7T3D";

Error signingError(std::int64_t code, Dictionary userInfo = {}) {
  return {host::kCodeSigningErrorDomain, code, std::move(userInfo)};
}

Error addedResources(const Array& paths) {
  return signingError(host::code_signing_error::kBadResource, {{host::SecCSResourceAdded, paths}});
}

class OSInstallApp : public testing::Test {
 protected:
  /// A valid signature by this team.
  void sign(const std::optional<std::string>& team, ErrorOrNil validity = std::nullopt) {
    signatures_.code[installer_.path()] = {.information = host::CodeSigningInformation{.teamIdentifier = team},
                                           .validity = std::move(validity)};
  }
  OSInstallAppValidator validate() { return validateURL(fileURLWithPath(installer_.path())).value(); }
  std::optional<OSInstallAppValidator> validateURL(const std::string& url) {
    return OSInstallAppValidator::initWithURL(url, {fileSystem_, applications_, signatures_});
  }
  void makeOlder(const std::string& name, const std::string& displayName = "Install OS X") {
    installer_.makeInformation({{"CFBundleExecutable", "InstallAssistant"},
                                {"CFBundleDisplayName", displayName},
                                {"CFBundleIdentifier", "com.apple.InstallAssistant." + name}});
  }
  void expectNotWellFormed() {
    sign(kInstallerTeam);
    const auto validator = validate();
    EXPECT_FALSE(validator.isWellFormed());
    EXPECT_FALSE(validator.isAuthentic());
    EXPECT_FALSE(validator.isExceeding8GB());
    EXPECT_TRUE(signatures_.questions.empty()) << "gigabytes are not read for what is no installer";
  }

  tests::InstallerMaker installer_;
  host::LinuxFileSystem fileSystem_;
  tests::FakeApplications applications_;
  tests::FakeCodeSignatures signatures_;
};

TEST_F(OSInstallApp, URLThatIsNoFileURLGivesNoValidator) {
  for (const auto* url :
       {"", "http://example.org/a.app", "/Applications/a.app", "filesystem:/a", "file", "x-file:///a"}) {
    EXPECT_FALSE(validateURL(url)) << url;
  }
}

TEST_F(OSInstallApp, EveryFileURLGivesAValidator) {
  for (const auto* url : {"file:", "file:///missing.app", "FILE:///missing.app", "file://elsewhere/a.app",
                          "file:relative.app", "file:///%zz", "file:///a%00b"}) {
    const auto validator = validateURL(url);
    ASSERT_TRUE(validator) << url;
    EXPECT_EQ(validator->applicationURL(), url);
    EXPECT_FALSE(validator->isWellFormed()) << url;
    EXPECT_FALSE(validator->isAuthentic()) << url;
    EXPECT_EQ(validator->minorOSVersion(), -1) << url;
    EXPECT_FALSE(validator->isProvidingInstallationPayload()) << url;
  }
}

TEST_F(OSInstallApp, WholeAndSignedIsWellFormedAndAuthentic) {
  sign(kInstallerTeam);
  const auto validator = validate();
  EXPECT_TRUE(validator.isWellFormed());
  EXPECT_TRUE(validator.isAuthentic());
  EXPECT_TRUE(validator.isExceeding8GB());
  EXPECT_EQ(validator.minorOSVersion(), 15);
  EXPECT_EQ(validator.osDescription(), "macOS Catalina");
  EXPECT_EQ(validator.mediaUtilityPath(), installer_.mediaUtilityPath());
  EXPECT_EQ(validator.applicationURL(), fileURLWithPath(installer_.path()));
}

TEST_F(OSInstallApp, URLsSlashAtTheEndMakesNoDifference) {
  sign(kInstallerTeam);
  EXPECT_TRUE(validateURL(fileURLWithPath(installer_.path()) + "/")->isAuthentic());
}

TEST_F(OSInstallApp, DescriptionTellsAllFindings) {
  sign(kInstallerTeam);
  EXPECT_EQ(validate().description(), "<OSInstallAppValidator>: installer for 'macOS Catalina', media utility at " +
                                          installer_.mediaUtilityPath() +
                                          ", well-formed: YES authentic: YES generation: 15\n");
  EXPECT_EQ(validateURL("file:///missing.app")->description(),
            "<OSInstallAppValidator>: installer for '(null)', media utility at (null), well-formed: NO authentic: NO "
            "generation: -1\n");
}

TEST_F(OSInstallApp, WithoutASealIsNotWellFormed) {
  installer_.remove("Contents/_CodeSignature");
  expectNotWellFormed();
}

TEST_F(OSInstallApp, SealDirectlyInTheContentsWillDo) {
  installer_.remove("Contents/_CodeSignature");
  installer_.makeFile("Contents/CodeResources", "seal");
  sign(kInstallerTeam);
  EXPECT_TRUE(validate().isAuthentic());
}

TEST_F(OSInstallApp, WithoutAnExecutableIsNoApplication) {
  installer_.makeInformation({{"CFBundleDisplayName", "Install macOS"}});
  expectNotWellFormed();
}

TEST_F(OSInstallApp, OfAnotherPackageStyleIsNotWellFormed) {
  std::filesystem::rename(installer_.path("Contents/Info.plist"), installer_.path("Contents/Info-macos.plist"));
  expectNotWellFormed();
}

TEST_F(OSInstallApp, WithoutAMediaToolIsNotWellFormed) {
  installer_.remove(tests::kMediaUtility);
  expectNotWellFormed();
  EXPECT_EQ(validate().mediaUtilityPath(), installer_.mediaUtilityPath());
  std::filesystem::create_directory(installer_.mediaUtilityPath());
  expectNotWellFormed();
}

TEST_F(OSInstallApp, WithoutADisplayNameToInstallIsNotWellFormed) {
  for (const auto* name : {"macOS Catalina", "Install ", "Install", "install macOS", ""}) {
    makeOlder("Catalina", name);
    expectNotWellFormed();
  }
}

TEST_F(OSInstallApp, NewerKindWithoutAVersionIsNotWellFormed) {
  for (const Dictionary& list :
       {Dictionary(), Dictionary{{"System Image Info", "10.15.7"}}, Dictionary{{"System Image Info", Dictionary()}},
        Dictionary{{"System Image Info", Dictionary{{"version", 10.15}}}}}) {
    installer_.makeList(tests::kInstallInfo, list);
    expectNotWellFormed();
  }
  installer_.makeFile(tests::kInstallInfo, "not a list {");
  expectNotWellFormed();
}

TEST_F(OSInstallApp, NewerKindIgnoresTheNamesOfTheOlderOne) {
  makeOlder("Mavericks", "Install Mavericks");
  installer_.makeInstallInfo("10.14.6");
  sign(kInstallerTeam);
  const auto validator = validate();
  EXPECT_EQ(validator.osDescription(), "macOS 10.14.6");
  EXPECT_EQ(validator.minorOSVersion(), 14);
}

TEST_F(OSInstallApp, InstallInfoThatIsAFolderDoesNotCount) {
  std::filesystem::create_directories(installer_.path(tests::kInstallInfo));
  sign(kInstallerTeam);
  EXPECT_EQ(validate().osDescription(), "macOS Catalina");
}

struct GenerationName {
  const char* name;
  int generation;
};

class OSInstallAppGenerationNames : public OSInstallApp, public testing::WithParamInterface<GenerationName> {};

TEST_P(OSInstallAppGenerationNames, FollowTheIdentifiersPrefix) {
  makeOlder(GetParam().name);
  EXPECT_EQ(validate().minorOSVersion(), GetParam().generation);
  EXPECT_EQ(validate().osDescription(), "OS X");
}

INSTANTIATE_TEST_SUITE_P(
    All, OSInstallAppGenerationNames,
    testing::Values(GenerationName{"Cheetah", 0}, GenerationName{"Puma", 1}, GenerationName{"Jaguar", 2},
                    GenerationName{"Panther", 3}, GenerationName{"Tiger", 4}, GenerationName{"Leopard", 5},
                    GenerationName{"SnowLeopard", 6}, GenerationName{"Lion", 7}, GenerationName{"MountainLion", 8},
                    GenerationName{"Mavericks", 9}, GenerationName{"Yosemite", 10}, GenerationName{"ElCapitan", 11},
                    GenerationName{"Sierra", 12}, GenerationName{"HighSierra", 13}, GenerationName{"Mojave", 14},
                    GenerationName{"Catalina", 15}, GenerationName{"BigSur", -1}, GenerationName{"catalina", -1},
                    GenerationName{"Catalina2", -1}, GenerationName{"", -1}));

TEST_F(OSInstallApp, IdentifierOfAnotherMakerHasNoGeneration) {
  installer_.makeInformation({{"CFBundleExecutable", "x"},
                              {"CFBundleDisplayName", "Install macOS Catalina"},
                              {"CFBundleIdentifier", "org.example.InstallAssistant.Catalina"}});
  EXPECT_EQ(validate().minorOSVersion(), -1);
  EXPECT_TRUE(validate().isWellFormed());
}

TEST(InstallVersion, SecondNumberIsTheGeneration) {
  EXPECT_EQ(generationFromVersion("10.15.7"), 15);
  EXPECT_EQ(generationFromVersion("10.13"), 13);
  EXPECT_EQ(generationFromVersion("11.2.3"), 2);
  EXPECT_EQ(generationFromVersion(" 10 . 15"), 15);
  EXPECT_EQ(generationFromVersion("10.15beta"), 15);
  EXPECT_EQ(generationFromVersion("10.-3"), -3);
  EXPECT_EQ(generationFromVersion("-10.+9"), 9);
}

TEST(InstallVersion, KeepsEightBitsOfTheSecondNumber) {
  EXPECT_EQ(generationFromVersion("10.255"), -1);
  EXPECT_EQ(generationFromVersion("10.271"), 15);
  EXPECT_EQ(generationFromVersion("10.128"), -128);
  EXPECT_EQ(generationFromVersion("10.99999999999999999999999"), -1);
  EXPECT_EQ(generationFromVersion("10.-99999999999999999999999"), 0);
  EXPECT_EQ(generationFromVersion("10.-9223372036854775808"), 0);
}

TEST(InstallVersion, WithoutTwoNumbersHasNoGeneration) {
  for (const auto* version : {"", "10", "10.", "10.x", "x.15", ".15", "10,15", "10-15", "+", "-.9", "10.+"}) {
    EXPECT_EQ(generationFromVersion(version), std::nullopt) << version;
  }
}

TEST_F(OSInstallApp, VersionWithoutGenerationIsStillADescription) {
  installer_.makeInstallInfo("eleven");
  sign(kInstallerTeam);
  const auto validator = validate();
  EXPECT_TRUE(validator.isWellFormed());
  EXPECT_EQ(validator.osDescription(), "macOS eleven");
  EXPECT_EQ(validator.minorOSVersion(), -1);
  EXPECT_TRUE(validator.isAuthentic());
}

struct TeamRule {
  const char* version;
  std::optional<std::string> team;
  bool isAuthentic;
};

class OSInstallAppTeams : public OSInstallApp, public testing::WithParamInterface<TeamRule> {};

TEST_P(OSInstallAppTeams, DecideByGeneration) {
  installer_.makeInstallInfo(GetParam().version);
  sign(GetParam().team);
  EXPECT_EQ(validate().isAuthentic(), GetParam().isAuthentic);
  EXPECT_TRUE(validate().isWellFormed());
}

INSTANTIATE_TEST_SUITE_P(
    Rules, OSInstallAppTeams,
    testing::Values(TeamRule{"10.9.5", kAppleTeam, true}, TeamRule{"10.9.5", kInstallerTeam, false},
                    TeamRule{"10.9.5", std::nullopt, false}, TeamRule{"10.8", kInstallerTeam, true},
                    TeamRule{"10.8", kAppleTeam, false}, TeamRule{"10.12.6", kInstallerTeam, true},
                    TeamRule{"10.12.6", "OTHERTEAM1", false}, TeamRule{"10.12.6", std::nullopt, false},
                    TeamRule{"10.13", "OTHERTEAM1", true}, TeamRule{"10.14", std::nullopt, true},
                    TeamRule{"10.15.7", "", true}, TeamRule{"10.16", std::nullopt, false},
                    TeamRule{"10.16", kInstallerTeam, true}, TeamRule{"11.2.3", kInstallerTeam, true},
                    TeamRule{"11.2.3", std::nullopt, false}, TeamRule{"unknown", kInstallerTeam, true},
                    TeamRule{"unknown", kAppleTeam, false}));

TEST_F(OSInstallApp, MediaBeyond8GBBeginWithGeneration15) {
  for (const auto& [version, isExceeding] :
       {std::pair("10.14", false), std::pair("10.15", true), std::pair("10.16", true), std::pair("11.2.3", false),
        std::pair("unknown", false)}) {
    installer_.makeInstallInfo(version);
    EXPECT_EQ(validate().isExceeding8GB(), isExceeding) << version;
  }
}

TEST_F(OSInstallApp, PayloadCanBeDownloadedFromGeneration14On) {
  for (const auto& [version, canDownload] :
       {std::pair("10.13", false), std::pair("10.14", true), std::pair("11.2.3", false), std::pair("unknown", false)}) {
    installer_.makeInstallInfo(version);
    EXPECT_EQ(validate().canDownloadInstallationPayload(), canDownload) << version;
  }
}

TEST_F(OSInstallApp, PayloadIsProvidedInAFolder) {
  EXPECT_FALSE(validate().isProvidingInstallationPayload());
  installer_.makeFile("Contents/SharedSupport", "a file");
  EXPECT_FALSE(validate().isProvidingInstallationPayload());
  installer_.remove("Contents/SharedSupport");
  installer_.makeFile("Contents/SharedSupport/image", "");
  EXPECT_TRUE(validate().isProvidingInstallationPayload());
}

TEST_F(OSInstallApp, SignatureIsCheckedInFullAgainstApplesRoot) {
  sign(kInstallerTeam);
  validate();
  ASSERT_EQ(signatures_.questions.size(), 1u);
  const auto& question = signatures_.questions.front();
  EXPECT_EQ(question.path, installer_.path());
  EXPECT_EQ(question.requirement, "anchor apple generic");
  EXPECT_TRUE(question.options.checkAllArchitectures);
  EXPECT_TRUE(question.options.checkNestedCode);
  EXPECT_TRUE(question.options.enforceRevocationChecks);
}

TEST_F(OSInstallApp, InvalidOrMissingSignatureIsNotAuthentic) {
  EXPECT_FALSE(validate().isAuthentic()) << "nothing that could be code";
  sign(kInstallerTeam, signingError(host::code_signing_error::kSignatureFailed));
  EXPECT_FALSE(validate().isAuthentic());
  EXPECT_TRUE(validate().isWellFormed());
  signatures_.code[installer_.path()] = {};
  EXPECT_FALSE(validate().isAuthentic()) << "code without signature";
}

class MavericksInstaller : public OSInstallApp {
 protected:
  MavericksInstaller() { makeOlder("Mavericks", "Install OS X Mavericks"); }
  bool isAuthenticDespite(const Error& error) {
    sign(kAppleTeam, error);
    return validate().isAuthentic();
  }
  std::string addedImage() { return installer_.path("Contents/SharedSupport/InstallESD.dmg"); }
};

TEST_F(MavericksInstaller, MayHaveGottenItsImageAfterItWasSigned) {
  EXPECT_TRUE(isAuthenticDespite(addedResources({addedImage()})));
}

TEST_F(MavericksInstaller, MayHaveGottenNothingElse) {
  EXPECT_FALSE(isAuthenticDespite(addedResources({addedImage(), installer_.path("Contents/other")})));
  EXPECT_FALSE(isAuthenticDespite(addedResources({addedImage(), addedImage()})));
  EXPECT_FALSE(isAuthenticDespite(addedResources({installer_.path("Contents/other")})));
  EXPECT_FALSE(isAuthenticDespite(addedResources({addedImage() + "x"})));
  EXPECT_FALSE(isAuthenticDespite(addedResources({})));
  EXPECT_FALSE(isAuthenticDespite(addedResources({7})));
}

TEST_F(MavericksInstaller, MayHaveNoOtherFault) {
  const Array image{addedImage()};
  EXPECT_FALSE(isAuthenticDespite(signingError(host::code_signing_error::kBadResource)));
  EXPECT_FALSE(
      isAuthenticDespite(signingError(host::code_signing_error::kBadResource, {{host::SecCSResourceAltered, image}})));
  EXPECT_FALSE(
      isAuthenticDespite(signingError(host::code_signing_error::kBadResource,
                                      {{host::SecCSResourceAdded, image}, {host::SecCSResourceMissing, image}})));
  EXPECT_FALSE(isAuthenticDespite(
      signingError(host::code_signing_error::kBadResource, {{host::SecCSResourceAdded, addedImage()}})));
}

TEST_F(MavericksInstaller, HasToBeOfItsTeamAllTheSame) {
  sign(kInstallerTeam, addedResources({addedImage()}));
  EXPECT_FALSE(validate().isAuthentic());
}

TEST_F(MavericksInstaller, IsTheOnlyOneThatMayHaveGottenAnImage) {
  makeOlder("Yosemite");
  sign(kInstallerTeam, addedResources({addedImage()}));
  EXPECT_FALSE(validate().isAuthentic());
}

TEST_F(OSInstallApp, SignaturesPropertiesAreHandedBackOnSuccessOnly) {
  const auto url = fileURLWithPath(installer_.path());
  std::optional<host::CodeSigningInformation> properties;
  sign("TEAM");
  EXPECT_TRUE(OSInstallAppValidator::isCodeSignatureValidForObjectAtURL(url, signatures_, &properties));
  ASSERT_TRUE(properties);
  EXPECT_EQ(properties->teamIdentifier, "TEAM");
  EXPECT_TRUE(OSInstallAppValidator::isCodeSignatureValidForObjectAtURL(url, signatures_, nullptr));
  properties.reset();
  sign("TEAM", signingError(host::code_signing_error::kSignatureFailed));
  EXPECT_FALSE(OSInstallAppValidator::isCodeSignatureValidForObjectAtURL(url, signatures_, &properties));
  EXPECT_FALSE(properties);
}

TEST(InstallerTeam, HasToBeThereAndEqual) {
  const auto is = OSInstallAppValidator::isTeamIdentifier;
  EXPECT_TRUE(is("TEAM", host::CodeSigningInformation{.teamIdentifier = "TEAM"}));
  EXPECT_FALSE(is("TEAM", host::CodeSigningInformation{.teamIdentifier = "TEAM2"}));
  EXPECT_FALSE(is("TEAM", host::CodeSigningInformation{}));
  EXPECT_FALSE(is("TEAM", std::nullopt));
  EXPECT_FALSE(is("", host::CodeSigningInformation{.teamIdentifier = ""}));
}

TEST_F(OSInstallApp, ToolThatWasExchangedIsNoticed) {
  sign(kInstallerTeam);
  const auto validator = validate();
  EXPECT_TRUE(validator.isMediaUtilityUnchanged());
  std::filesystem::rename(installer_.mediaUtilityPath(), installer_.path("old"));
  EXPECT_FALSE(validator.isMediaUtilityUnchanged());
  std::filesystem::copy_file(installer_.path("old"), installer_.mediaUtilityPath());
  EXPECT_FALSE(validator.isMediaUtilityUnchanged());
}

TEST(FileUrl, EscapesWhatAURLCannotHold) {
  EXPECT_EQ(fileURLWithPath("/Applications/Install macOS.app"), "file:///Applications/Install%20macOS.app");
  EXPECT_EQ(fileURLWithPath("/a%20?#\xc3\xa9\xff"), "file:///a%2520%3F%23%C3%A9%FF");
}

TEST(FileUrl, GivesThePathBack) {
  for (const std::string path : {"/", "/a b/c", "/a%20?#;&", "/\xc3\xa9\xff\x01", "/a/../b"}) {
    EXPECT_EQ(pathOfFileURL(fileURLWithPath(path)), path);
  }
  EXPECT_EQ(pathOfFileURL("file:///a/b//"), "/a/b");
  EXPECT_EQ(pathOfFileURL("file://localhost/a"), "/a");
  EXPECT_EQ(pathOfFileURL("File:/a?query#fragment"), "/a");
}

TEST(FileUrl, OfNothingOnThisComputerHasNoPath) {
  for (const auto* url :
       {"", "file:", "file://", "file://host", "file://host/a", "file:a", "http:///a", "file:///%4", "file:///%g0"}) {
    EXPECT_EQ(pathOfFileURL(url), std::nullopt) << url;
  }
  EXPECT_EQ(pathOfFileURL(fileURLWithPath("relative.app")), std::nullopt);
  EXPECT_EQ(pathOfFileURL(fileURLWithPath("")), std::nullopt);
}

}  // namespace
}  // namespace vantrell
