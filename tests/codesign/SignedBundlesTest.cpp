// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>

#include <sys/stat.h>

#include "tests/codesign/SignatureFixture.h"

namespace vantrell::tests {

using host::SecCSResourceAdded;
using host::SecCSResourceAltered;
using host::SecCSResourceMissing;
using testing::ElementsAre;
using testing::IsEmpty;

class SignedBundles : public SignatureFixture {
 protected:
  TestBundle application(const std::string& name = "Example.app") {
    TestBundle bundle(folder_.path(name));
    bundle.file("PkgInfo", "APPL????")
        .file("Resources/picture.png", "picture")
        .file("Resources/en.lproj/texts.strings", "texts")
        .file("version.plist", "version")
        .link("Resources/current", "picture.png");
    return bundle;
  }

  /// The answer about the bundle after something was done to it.
  std::int64_t check(const TestBundle& bundle) { return codeOfCheck(bundle.path()); }

  void expectResources(const TestBundle& bundle, const std::vector<std::string>& added,
                       const std::vector<std::string>& altered, const std::vector<std::string>& missing) {
    EXPECT_EQ(check(bundle), code_signing_error::kBadResource) << testing::PrintToString(findings_);
    EXPECT_EQ(pathsUnder(SecCSResourceAdded, bundle.contents()), added);
    EXPECT_EQ(pathsUnder(SecCSResourceAltered, bundle.contents()), altered);
    EXPECT_EQ(pathsUnder(SecCSResourceMissing, bundle.contents()), missing);
    const std::size_t lists = (added.empty() ? 0U : 1U) + (altered.empty() ? 0U : 1U) + (missing.empty() ? 0U : 1U);
    if (error_) {
      EXPECT_EQ(error_->userInfo().size(), lists);
    }
  }
};

TEST_F(SignedBundles, AWholeBundleIsValid) {
  auto bundle = application();
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);
  EXPECT_EQ(codeOfCheck(bundle.path() + "/"), 0);
}

TEST_F(SignedBundles, TheMainExecutableStandsForItsBundle) {
  auto bundle = application();
  bundle.sign(bySigner());
  EXPECT_EQ(codeOfCheck(bundle.executable()), 0) << testing::PrintToString(findings_);
  bundle.file("Resources/picture.png", "other");
  EXPECT_EQ(codeOfCheck(bundle.executable()), code_signing_error::kBadResource);
}

TEST_F(SignedBundles, AlteredAddedAndMissingResourcesAreTold) {
  auto bundle = application();
  bundle.sign(bySigner());
  bundle.file("Resources/picture.png", "pictura");
  expectResources(bundle, {}, {"Resources/picture.png"}, {});
  bundle.file("SharedSupport/InstallESD.dmg", "image");
  expectResources(bundle, {"SharedSupport/InstallESD.dmg"}, {"Resources/picture.png"}, {});
  std::filesystem::remove(bundle.contents() + "/Resources/picture.png");
  expectResources(bundle, {"SharedSupport/InstallESD.dmg"}, {}, {"Resources/picture.png"});
}

TEST_F(SignedBundles, OneAddedImageIsOneEntryOfTheUserInfo) {
  auto bundle = application();
  bundle.sign(bySigner());
  bundle.file("SharedSupport/InstallESD.dmg", "image");
  expectResources(bundle, {"SharedSupport/InstallESD.dmg"}, {}, {});
  EXPECT_THAT(pathsUnder(SecCSResourceAdded, folder_.path()),
              ElementsAre("Example.app/Contents/SharedSupport/InstallESD.dmg"));
  bundle.file("SharedSupport/Second.dmg", "image");
  check(bundle);
  EXPECT_EQ(pathsUnder(SecCSResourceAdded, bundle.contents()).size(), 2U);
}

TEST_F(SignedBundles, RulesLeaveOutWhatTheySay) {
  auto bundle = application();
  bundle.sign(bySigner());
  bundle.file(".DS_Store", "x").file("Resources/.DS_Store", "x").file("Resources/en.lproj/locversion.plist", "x");
  bundle.file("_MASReceipt/receipt", "x").file("CodeResources", "ticket").file("PkgInfo", "other");
  std::filesystem::remove_all(bundle.contents() + "/Resources/en.lproj");
  // The rule for translations makes them optional only where the seal's entries say so, too.
  expectResources(bundle, {}, {}, {"Resources/en.lproj/texts.strings"});
}

TEST_F(SignedBundles, OptionalResourcesMayBeMissingButNotAltered) {
  auto bundle = application();
  const Data content = dataOf("optional");
  bundle.file("Resources/maybe", "optional");
  bundle.entry("Resources/maybe",
               Dictionary{{"hash2", host::codesign::digestOf("SHA256", content)}, {"optional", true}});
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);
  bundle.file("Resources/maybe", "altered");
  expectResources(bundle, {}, {"Resources/maybe"}, {});
  std::filesystem::remove(bundle.contents() + "/Resources/maybe");
  EXPECT_EQ(check(bundle), 0);
}

TEST_F(SignedBundles, SymbolicLinksAreSealedByTheirTargets) {
  auto bundle = application();
  bundle.sign(bySigner());
  const std::string link = bundle.contents() + "/Resources/current";
  std::filesystem::remove(link);
  std::filesystem::create_symlink("/etc/passwd", link);
  expectResources(bundle, {}, {"Resources/current"}, {});
  std::filesystem::remove(link);
  bundle.file("Resources/current", "picture");
  expectResources(bundle, {}, {"Resources/current"}, {});
  std::filesystem::remove(link);
  std::filesystem::create_symlink("picture.png", link);
  bundle.link("Resources/more", "/etc");
  expectResources(bundle, {"Resources/more"}, {}, {});
}

TEST_F(SignedBundles, AFolderOfLinksIsNotEntered) {
  auto bundle = application();
  bundle.sign(bySigner());
  const std::string resources = bundle.contents() + "/Resources";
  std::filesystem::rename(resources, folder_.path("elsewhere"));
  std::filesystem::create_symlink(folder_.path("elsewhere"), resources);
  EXPECT_EQ(check(bundle), code_signing_error::kBadResource);
  EXPECT_THAT(pathsUnder(SecCSResourceAdded, bundle.contents()), ElementsAre("Resources"));
  EXPECT_EQ(pathsUnder(SecCSResourceMissing, bundle.contents()).size(), 3U);
}

TEST_F(SignedBundles, ObjectsThatNoSealKnowsAreAdditions) {
  auto bundle = application();
  bundle.sign(bySigner());
  ASSERT_EQ(mkfifo((bundle.contents() + "/Resources/pipe").c_str(), 0600), 0);
  expectResources(bundle, {"Resources/pipe"}, {}, {});
  std::filesystem::remove(bundle.contents() + "/Resources/pipe");
  std::filesystem::remove(bundle.contents() + "/Resources/picture.png");
  ASSERT_EQ(mkfifo((bundle.contents() + "/Resources/picture.png").c_str(), 0600), 0);
  expectResources(bundle, {}, {"Resources/picture.png"}, {});
}

TEST_F(SignedBundles, AChangedInformationListIsRefused) {
  auto bundle = application();
  bundle.sign(bySigner());
  bundle.file("Info.plist",
              R"(<plist version="1.0"><dict><key>CFBundleExecutable</key><string>Program</string></dict></plist>)");
  EXPECT_EQ(check(bundle), code_signing_error::kSignatureFailed);
}

TEST_F(SignedBundles, AChangedSealIsRefused) {
  auto bundle = application();
  bundle.sign(bySigner());
  Data seal = fileContent(bundle.codeResources());
  seal.push_back('\n');
  writeFile(bundle.codeResources(), seal);
  EXPECT_EQ(check(bundle), code_signing_error::kSignatureFailed);
  std::filesystem::remove_all(bundle.contents() + "/_CodeSignature");
  EXPECT_EQ(check(bundle), code_signing_error::kSignatureFailed);
}

TEST_F(SignedBundles, AnExecutableOfAnotherBundleIsRefused) {
  auto bundle = application();
  bundle.sign(bySigner());
  auto other = application("Other.app");
  other.file("Resources/picture.png", "another");
  other.sign(bySigner());
  std::filesystem::copy_file(other.executable(), bundle.executable(),
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_EQ(check(bundle), code_signing_error::kSignatureFailed);
  writeFile(bundle.executable(), signedFile(sampleProgram(), bySigner()));  // signed, but on its own
  EXPECT_EQ(check(bundle), code_signing_error::kSignatureFailed);
}

TEST_F(SignedBundles, WhatLiesBesideTheContentsIsAnAddition) {
  auto bundle = application();
  bundle.sign(bySigner());
  writeFile(bundle.path() + "/evil", "x");
  EXPECT_EQ(check(bundle), code_signing_error::kBadResource);
  EXPECT_THAT(pathsUnder(SecCSResourceAdded, bundle.path()), ElementsAre("evil"));
}

TEST_F(SignedBundles, FirstVersionSealsAreAboutResources) {
  auto bundle = application();
  bundle.sign(bySigner(), SealVersions::FirstOnly);
  // The link isn't part of such a seal.
  EXPECT_EQ(check(bundle), code_signing_error::kBadResource);
  EXPECT_THAT(pathsUnder(SecCSResourceMissing, bundle.contents()), IsEmpty());
  EXPECT_THAT(pathsUnder(SecCSResourceAdded, bundle.contents()), ElementsAre("version.plist"));
  std::filesystem::remove(bundle.contents() + "/version.plist");
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);
  bundle.file("Resources/picture.png", "pictura").file("Resources/new", "new").file("Library/unsealed", "x");
  expectResources(bundle, {"Resources/new"}, {"Resources/picture.png"}, {});
}

TEST_F(SignedBundles, TheSecondVersionCountsAlone) {
  auto bundle = application();
  bundle.sign(bySigner(), SealVersions::SecondOnly);
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);
}

TEST_F(SignedBundles, SealsThatAreNotUnderstoodAreRefused) {
  auto bundle = application();
  bundle.entry("Resources/picture.png", Dictionary{{"hash3", Data(32)}});
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), code_signing_error::kUnsupported);
  auto second = application("Second.app");
  second.rule("^a{3}", true);
  second.sign(bySigner());
  EXPECT_EQ(check(second), code_signing_error::kUnsupported);
  auto third = application("Third.app");
  third.rule("^x", Dictionary{{"top", true}});
  third.sign(bySigner());
  EXPECT_EQ(check(third), code_signing_error::kUnsupported);
}

TEST_F(SignedBundles, NestedCodeIsVerifiedWhereAskedFor) {
  auto bundle = application();
  TestBundle framework(bundle.contents() + "/Frameworks/Part.framework", {{"CFBundleIdentifier", "com.example.part"}});
  framework.file("Resources/data", "data");
  framework.sign(bySigner());
  writeFile(bundle.contents() + "/Helpers/tool", signedFile(sampleProgram(5000, 'A'), bySigner()));
  bundle.nested("Frameworks/Part.framework", cdHashOf(fileContent(framework.executable())));
  bundle.nested("Helpers/tool", cdHashOf(fileContent(bundle.contents() + "/Helpers/tool")));
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);

  framework.file("Resources/data", "changed");
  EXPECT_EQ(check(bundle), code_signing_error::kBadNestedCode);
  EXPECT_EQ(codeOfCheck(bundle.path(), host::kAnchorAppleGeneric, 0, {true, false, false}), 0);
  framework.file("Resources/data", "data");
  ASSERT_EQ(check(bundle), 0);

  // Signed by the right signer, but other code.
  writeFile(bundle.contents() + "/Helpers/tool", signedFile(sampleProgram(5000, 'B'), bySigner()));
  EXPECT_EQ(check(bundle), code_signing_error::kBadNestedCode);
  std::filesystem::remove(bundle.contents() + "/Helpers/tool");
  expectResources(bundle, {}, {}, {"Helpers/tool"});
}

TEST_F(SignedBundles, NestedCodeThatNoSealKnowsIsAnAddition) {
  auto bundle = application();
  bundle.sign(bySigner());
  TestBundle plugin(bundle.contents() + "/PlugIns/Evil.bundle");
  plugin.sign(bySigner());
  bundle.file("MacOS/evil", "evil");
  EXPECT_EQ(check(bundle), code_signing_error::kBadResource);
  EXPECT_THAT(pathsUnder(SecCSResourceAdded, bundle.contents()),
              testing::UnorderedElementsAre("PlugIns/Evil.bundle", "MacOS/evil"));
}

TEST_F(SignedBundles, AdHocNestedCodeIsBoundByItsHash) {
  auto bundle = application();
  const Data tool = signedFile(sampleProgram(5000), SigningOptions::adHoc());
  writeFile(bundle.contents() + "/MacOS/tool", tool);
  bundle.nested("MacOS/tool", cdHashOf(tool));
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);
}

TEST_F(SignedBundles, EveryArchitectureOfAdHocNestedCodeMustBeNamed) {
  const Data intel = signedFile(sampleProgram(), SigningOptions::adHoc());
  auto builder = sampleProgram();
  const Data arm = signedFile(builder.cpu(0x0100000C, 0), SigningOptions::adHoc());
  const Data tool = fatFile({{intel, MachOBuilder::kCpuType, MachOBuilder::kCpuSubtype, {}}, {arm, 0x0100000C, 0, {}}});
  const auto requirement = [](const Data& hash) {
    std::string text = "cdhash H\"";
    for (const std::uint8_t byte : hash) text += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    return text + "\"";
  };
  auto bundle = application();
  writeFile(bundle.contents() + "/MacOS/tool", tool);
  bundle.nested("MacOS/tool", cdHashOf(intel));
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), code_signing_error::kBadNestedCode);
  bundle.nested("MacOS/tool", cdHashOf(intel), requirement(cdHashOf(intel)) + " or " + requirement(cdHashOf(arm)));
  bundle.sign(bySigner());
  EXPECT_EQ(check(bundle), 0) << testing::PrintToString(findings_);
}

TEST_F(SignedBundles, ExecutablesAreNamedPlainlyAndLieInside) {
  for (const char* name : {"../../outside", "", ".", "..", "a/b"}) {
    auto bundle = application("Named.app");
    bundle.sign(bySigner());
    const Data list = xmlPropertyListFromValue(Dictionary{{"CFBundleExecutable", name}}).value();
    bundle.file("Info.plist", textOf(list));
    EXPECT_EQ(codeAt(bundle.path()), nullptr) << name;
    std::filesystem::remove_all(bundle.path());
  }
  auto bundle = application();
  bundle.sign(bySigner());
  std::filesystem::rename(bundle.executable(), folder_.path("outside"));
  std::filesystem::create_symlink(folder_.path("outside"), bundle.executable());
  EXPECT_EQ(codeAt(bundle.path()), nullptr);
}

TEST_F(SignedBundles, DeepFoldersAndOddNamesEndTheCheckOrAreTold) {
  auto bundle = application();
  bundle.sign(bySigner());
  bundle.file("Resources/\xff\xfe", "x");
  EXPECT_EQ(check(bundle), code_signing_error::kBadResource);
  std::string deep = "Resources";
  for (int level = 0; level < 100; ++level) deep += "/d";
  bundle.file(deep + "/file", "x");
  EXPECT_EQ(check(bundle), code_signing_error::kUnsupported);
}

}  // namespace vantrell::tests
