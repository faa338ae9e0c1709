// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/bundles/BundleFixture.h"

namespace vantrell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using tests::BundleFixture;

const Dictionary kApplication{{"CFBundleExecutable", "main"}};
const Dictionary kWidget{{"MainHTML", "a.html"}};

class EmptyInspector : public BundleFixture {};

TEST_F(EmptyInspector, HasNeutralAnswersToAll) {
  const QELBundle nothing(fileSystem_, applications_);
  EXPECT_EQ(nothing.bundlePath(), std::nullopt);
  EXPECT_EQ(nothing.packageStyle(), PackageStyle::Contents);
  EXPECT_EQ(nothing.softwareType(), SoftwareType::Unknown);
  EXPECT_EQ(nothing.versionString(), std::nullopt);
  EXPECT_EQ(nothing.bundleIdentifier(), std::nullopt);
  EXPECT_EQ(nothing.dateLastUsed(), std::nullopt);
  EXPECT_EQ(nothing.infoDictionaryPath(), std::nullopt);
  EXPECT_EQ(nothing.infoDictionary(), std::nullopt);
  EXPECT_EQ(nothing.executablePath(), std::nullopt);
  EXPECT_EQ(nothing.developmentLocalization(), std::nullopt);
  EXPECT_EQ(nothing.contentsPath(), "");
  EXPECT_EQ(nothing.resourcesPath(), "");
  EXPECT_EQ(nothing.nonLocalizedName(), "");
  EXPECT_FALSE(nothing.systemBundle());
  EXPECT_THAT(nothing.namesOfActiveLocalizations(), IsEmpty());
  EXPECT_THAT(nothing.servicesEntries(), IsEmpty());
  EXPECT_FALSE(nothing.isCodesigned());
  EXPECT_FALSE(nothing.isMRJApplication());
  EXPECT_FALSE(nothing.isRevolutionApplication());
  EXPECT_EQ(nothing.description(),
            "QELBundle: '(null)' style: 0 type: 0 version: '(null)' identifier: '(null)' last used: (null)\n");
}

class BundleFields : public BundleFixture {};

TEST_F(BundleFields, AreAllInTheDescription) {
  const auto path = makePackage("Word.app", {{"CFBundleExecutable", "Word"},
                                             {"CFBundleIdentifier", "org.example.word"},
                                             {"CFBundleShortVersionString", "1.2"},
                                             {"CFBundleVersion", "345"}});
  applications_.setLastUsedDate(path, {1'769'903'999, 250'000'000});
  EXPECT_EQ(inspected(path).description(),
            "QELBundle: '" + path +
                "' style: 0 type: 1 version: '1.2 (345)' identifier: 'org.example.word' last used: 2026-01-31 23:59:59 "
                "+0000\n");
}

TEST_F(BundleFields, DescriptionSurvivesDatesBeyondAnyCalendar) {
  const auto path = makePackage("A.app", kApplication);
  for (const auto seconds : {INT64_MAX, INT64_MIN}) {
    applications_.setLastUsedDate(path, {seconds, 0});
    EXPECT_THAT(inspected(path).description(), testing::HasSubstr(std::to_string(seconds)));
  }
}

TEST_F(BundleFields, HoldTheDateThatThePlatformKnows) {
  const auto path = makePackage("A.app", kApplication);
  EXPECT_EQ(inspected(path).dateLastUsed(), std::nullopt);
  applications_.setLastUsedDate(path, {1'000, 5});
  EXPECT_EQ(inspected(path).dateLastUsed(), (Date{1'000, 5}));
}

TEST_F(BundleFields, IdentifierThatIsNoTextCountsAsMissing) {
  EXPECT_EQ(inspected(makePackage("A.app", {{"CFBundleIdentifier", Array{"org.example"}}})).bundleIdentifier(),
            std::nullopt);
}

TEST_F(BundleFields, InformationComesInEachOfTheThreeForms) {
  const Dictionary information{{"CFBundleExecutable", "main"}, {"CFBundleIdentifier", "org.example.forms"}};
  const auto binary = binaryPropertyListFromValue(information).value();
  const auto xml = xmlPropertyListFromValue(information).value();
  for (const auto form : {textOf(binary), textOf(xml),
                          std::string_view("{ CFBundleExecutable = main; CFBundleIdentifier = org.example.forms; }")}) {
    makeFile("A.app/Contents/Info.plist", form);
    const auto bundle = inspected(folder_.path("A.app"));
    EXPECT_EQ(bundle.softwareType(), SoftwareType::Application);
    EXPECT_EQ(bundle.bundleIdentifier(), "org.example.forms");
    EXPECT_EQ(bundle.infoDictionary(), information);
  }
}

class BundleOrder : public BundleFixture {};

TEST_F(BundleOrder, GoesByNameWithoutRegardToCase) {
  const auto bundle = [this](const std::string& name) { return inspected(makePackage(name, kApplication)); };
  const auto apple = bundle("z/apple.app");
  const auto sameApple = bundle("a/APPLE.app");
  const auto pear = bundle("a/Pear.app");
  EXPECT_EQ(apple.compare(&sameApple), std::weak_ordering::equivalent);
  EXPECT_EQ(apple.compare(&pear), std::weak_ordering::less);
  EXPECT_EQ(pear.compare(&apple), std::weak_ordering::greater);
}

TEST_F(BundleOrder, EveryInspectorIsGreaterThanNone) {
  const QELBundle nothing(fileSystem_, applications_);
  EXPECT_EQ(inspected(makePackage("A.app", kApplication)).compare(nullptr), std::weak_ordering::greater);
  EXPECT_EQ(nothing.compare(nullptr), std::weak_ordering::greater);
}

struct FolderRow {
  const char* informationFile;
  const char* contents;
  const char* resources;
};

class BundleFolders : public BundleFixture, public testing::WithParamInterface<FolderRow> {};

TEST_P(BundleFolders, FollowTheStyle) {
  const auto path = makePackage("A.wdgt", kWidget, GetParam().informationFile);
  const auto bundle = inspected(path);
  EXPECT_EQ(bundle.contentsPath(), path + GetParam().contents);
  EXPECT_EQ(bundle.resourcesPath(), path + GetParam().resources);
}

INSTANTIATE_TEST_SUITE_P(Rows, BundleFolders,
                         testing::Values(FolderRow{"Contents/Info.plist", "/Contents", "/Contents/Resources"},
                                         FolderRow{"Resources/Info.plist", "", "/Resources"},
                                         FolderRow{"Info.plist", "", ""},
                                         FolderRow{"Contents/Info-macos.plist", "/Contents", "/Contents/Resources"},
                                         FolderRow{"Resources/Info-macos.plist", "", "/Resources"}));

class BundleContents : public BundleFixture {};

TEST_F(BundleContents, CompositionHasResourcesBesideNothing) {
  const auto path = makeList("Fire.qtz", {{"a", 1}});
  EXPECT_EQ(inspected(path).contentsPath(), path);
  EXPECT_EQ(inspected(path).resourcesPath(), path + "/Resources");
  EXPECT_THAT(inspected(path).namesOfActiveLocalizations(), IsEmpty());
  EXPECT_FALSE(inspected(path).systemBundle());
}

TEST_F(BundleContents, InformationThatHasGoneIsNothing) {
  const auto path = makePackage("A.app", {{"CFBundleExecutable", "main"}, {"CFBundleDevelopmentRegion", "de"}});
  const auto bundle = inspected(path);
  EXPECT_EQ(bundle.developmentLocalization(), "de");
  std::filesystem::remove(path + "/Contents/Info.plist");
  EXPECT_EQ(bundle.infoDictionaryPath(), std::nullopt);
  EXPECT_EQ(bundle.infoDictionary(), std::nullopt);
  EXPECT_EQ(bundle.developmentLocalization(), std::nullopt);
  EXPECT_EQ(bundle.executablePath(), std::nullopt);
  folder_.makeFolder("A.app/Contents/Info.plist");
  EXPECT_EQ(bundle.infoDictionaryPath(), std::nullopt);
}

TEST_F(BundleContents, LocalizationsAreTheLanguageFoldersWithoutBase) {
  const auto path = makePackage("A.app", kApplication);
  for (const auto* name : {"English.lproj", "de.lproj", "zh-Hans.lproj", "Base.lproj", "nib", "fr.lproj.old"}) {
    folder_.makeFolder(std::string("A.app/Contents/Resources/") + name);
  }
  makeFile("A.app/Contents/Resources/it.lproj");
  EXPECT_THAT(inspected(path).namesOfActiveLocalizations(), UnorderedElementsAre("English", "de", "zh-Hans", "it"));
}

TEST_F(BundleContents, LocalizationsComeInTheOrderOfTheFolder) {
  const auto path = makePackage("A.app", kApplication);
  for (int i = 0; i < 50; ++i) folder_.makeFolder("A.app/Contents/Resources/l" + std::to_string(i) + ".lproj");
  std::vector<std::string> listed;
  for (const auto& entry : std::filesystem::directory_iterator(path + "/Contents/Resources")) {
    listed.push_back(entry.path().stem().string());
  }
  EXPECT_EQ(inspected(path).namesOfActiveLocalizations(), listed);
}

TEST_F(BundleContents, FolderThatCannotBeListedHasNoLocalizations) {
  const auto path = makePackage("A.app", kApplication);
  EXPECT_THAT(inspected(path).namesOfActiveLocalizations(), IsEmpty());
  makeFile("A.app/Contents/Resources");
  EXPECT_THAT(inspected(path).namesOfActiveLocalizations(), IsEmpty());
}

TEST_F(BundleContents, NameIsThePackagesWithoutExtension) {
  EXPECT_EQ(inspected(makePackage("Word 2.1.app", kApplication)).nonLocalizedName(), "Word 2.1");
  EXPECT_EQ(inspected(makePackage("plain", kApplication)).nonLocalizedName(), "plain");
}

TEST_F(BundleContents, ServicesAreThoseOfApplicationsOnly) {
  const Array services{Dictionary{{"NSMessage", "openFile"}}};
  auto information = kApplication;
  information.set("NSServices", services);
  EXPECT_EQ(inspected(makePackage("A.app", information)).servicesEntries(), services);
  EXPECT_THAT(inspected(makePackage("A.component", information)).servicesEntries(), IsEmpty());
  EXPECT_THAT(inspected(makePackage("B.app", kApplication)).servicesEntries(), IsEmpty());
  information.set("NSServices", "openFile");
  EXPECT_THAT(inspected(makePackage("C.app", information)).servicesEntries(), IsEmpty());
}

TEST_F(BundleContents, SealedResourcesMakeItCodesigned) {
  const auto signedThere = [this](const std::string& name, const std::string& informationFile,
                                  const std::string& sealFile) {
    const auto path = makePackage(name, kWidget, informationFile);
    EXPECT_FALSE(inspected(path).isCodesigned()) << name;
    makeFile(name + "/" + sealFile);
    return inspected(path).isCodesigned();
  };
  EXPECT_TRUE(signedThere("A.app", "Contents/Info.plist", "Contents/_CodeSignature/CodeResources"));
  EXPECT_TRUE(signedThere("B.app", "Contents/Info.plist", "Contents/CodeResources"));
  EXPECT_TRUE(signedThere("C.wdgt", "Info.plist", "_CodeSignature/CodeResources"));
  EXPECT_TRUE(signedThere("D.wdgt", "Info.plist", "CodeResources"));
  EXPECT_FALSE(signedThere("E.app", "Contents/Info.plist", "_CodeSignature/CodeResources"));
  EXPECT_FALSE(signedThere("F.app", "Contents/Info.plist", "Contents/_CodeSignature/CodeResources/file"));
}

class MainExecutable : public BundleFixture {};

TEST_F(MainExecutable, LiesInTheContentsFolder) {
  for (const auto* name : {"A.app", "A.prefPane", "A.component"}) {
    const auto path = makePackage(name, kApplication);
    EXPECT_EQ(inspected(path).executablePath(), std::nullopt) << name;
    makeFile(std::string(name) + "/Contents/MacOS/main");
    EXPECT_EQ(inspected(path).executablePath(), path + "/Contents/MacOS/main") << name;
  }
}

TEST_F(MainExecutable, IsNoneOfUnknownSoftwareAndOfAssets) {
  makeFile("A.thing/Contents/MacOS/main");
  EXPECT_EQ(inspected(makePackage("A.thing", kApplication)).executablePath(), std::nullopt);

  makeFile("A.asset/MacOS/main");
  folder_.makeFolder("A.asset/AssetData");
  folder_.makeFolder("A.asset/META-INF");
  const auto asset =
      inspected(makePackage("A.asset", {{"MobileAssetProperties", 1}, {"CFBundleExecutable", "main"}}, "Info.plist"));
  EXPECT_EQ(asset.softwareType(), SoftwareType::Asset);
  EXPECT_EQ(asset.executablePath(), std::nullopt);
}

TEST_F(MainExecutable, HasToBeNamedAndAFile) {
  folder_.makeFolder("A.saver/Contents/MacOS/folder");
  const auto executable = [this](const Value& name) {
    return inspected(makePackage("A.saver", {{"CFBundleExecutable", name}})).executablePath();
  };
  EXPECT_EQ(executable(""), std::nullopt);
  EXPECT_EQ(executable(7), std::nullopt);
  EXPECT_EQ(executable("folder"), std::nullopt);
  EXPECT_EQ(executable("missing"), std::nullopt);
}

TEST_F(MainExecutable, OfAWidgetIsThatOfItsPlugIn) {
  const auto path = makePackage("A.wdgt", {{"MainHTML", "a"}, {"Plugin", "Clock.widgetplugin"}}, "Info.plist");
  EXPECT_EQ(inspected(path).executablePath(), std::nullopt);
  makePackage("A.wdgt/Clock.widgetplugin", {{"CFBundleExecutable", "Clock"}});
  EXPECT_EQ(inspected(path).executablePath(), std::nullopt);
  makeFile("A.wdgt/Clock.widgetplugin/Contents/MacOS/Clock");
  EXPECT_EQ(inspected(path).executablePath(), path + "/Clock.widgetplugin/Contents/MacOS/Clock");
}

TEST_F(MainExecutable, OfAWidgetWithoutPlugInIsNone) {
  makeFile("A.wdgt/MacOS/main");
  const auto path = makePackage("A.wdgt", {{"MainHTML", "a"}, {"CFBundleExecutable", "main"}}, "Info.plist");
  EXPECT_EQ(inspected(path).executablePath(), std::nullopt);
}

class ApplicationKinds : public BundleFixture {};

TEST_F(ApplicationKinds, MRJApplicationHasTheRuntimesProperties) {
  const auto path = makePackage("A.app", kApplication);
  EXPECT_FALSE(inspected(path).isMRJApplication());
  makeFile("A.app/Contents/Resources/MRJApp.properties");
  EXPECT_TRUE(inspected(path).isMRJApplication());
  makeFile("B.component/Contents/Resources/MRJApp.properties");
  EXPECT_FALSE(inspected(makePackage("B.component", kApplication)).isMRJApplication());
}

TEST_F(ApplicationKinds, RevolutionApplicationHasASupportPlugInOfItsMaker) {
  const auto path = makePackage("A.app", kApplication);
  EXPECT_FALSE(inspected(path).isRevolutionApplication());
  makePackage("A.app/Contents/PlugIns/other_support.bundle", {{"CFBundleIdentifier", "org.example"}});
  makePackage("A.app/Contents/PlugIns/rev.bundle", {{"CFBundleIdentifier", "com.runrev.rev"}});
  folder_.makeFolder("A.app/Contents/PlugIns/empty_support.bundle");
  EXPECT_FALSE(inspected(path).isRevolutionApplication());
  makePackage("A.app/Contents/PlugIns/rev_support.bundle", {{"CFBundleIdentifier", "com.runrev.support"}});
  EXPECT_TRUE(inspected(path).isRevolutionApplication());
}

TEST_F(ApplicationKinds, OnlyApplicationsAreMadeWithRevolution) {
  const auto path = makePackage("A.component", kApplication);
  makePackage("A.component/Contents/PlugIns/rev_support.bundle", {{"CFBundleIdentifier", "com.runrev.support"}});
  EXPECT_FALSE(inspected(path).isRevolutionApplication());
}

class SystemBundleResources : public BundleFixture {
 protected:
  std::optional<std::string> resource(const std::string& package, std::string_view name, std::string_view type) {
    const auto bundle = SystemBundle::bundleWithPath(folder_.path(package), fileSystem_);
    return bundle ? bundle->pathForResource(name, type) : std::nullopt;
  }
};

TEST_F(SystemBundleResources, LieWhereTheFoldersSayNotTheStyle) {
  EXPECT_EQ(resource("C", "a", "txt"), std::nullopt);
  const auto inContents = makeFile("A/Contents/Resources/a.txt");
  makeFile("A/Resources/a.txt");
  EXPECT_EQ(resource("A", "a", "txt"), inContents);
  const auto inResources = makeFile("B/Resources/a.txt");
  EXPECT_EQ(resource("B", "a", "txt"), inResources);
  const auto onTop = makeFile("C/a.txt");
  EXPECT_EQ(resource("C", "a", "txt"), onTop);
  EXPECT_EQ(resource("C", "a.txt", ""), onTop);
}

TEST_F(SystemBundleResources, ForAllLanguagesGoBeforeThoseOfTheDevelopmentLanguage) {
  makePackage("A.app", {{"CFBundleDevelopmentRegion", "de"}});
  makeFile("A.app/Contents/Resources/fr.lproj/a.txt");
  EXPECT_EQ(resource("A.app", "a", "txt"), std::nullopt);
  const auto german = makeFile("A.app/Contents/Resources/de.lproj/a.txt");
  EXPECT_EQ(resource("A.app", "a", "txt"), german);
  const auto general = makeFile("A.app/Contents/Resources/a.txt");
  EXPECT_EQ(resource("A.app", "a", "txt"), general);
}

TEST_F(SystemBundleResources, NamesLeadNowhereElse) {
  makeFile("A/a.txt");
  makeFile("b.txt");
  EXPECT_EQ(resource("A", "../b", "txt"), std::nullopt);
  EXPECT_EQ(resource("A", "", "txt"), std::nullopt);
  makePackage("B", {{"MainHTML", 1}, {"CFBundleDevelopmentRegion", "../A/x"}}, "Info.plist");
  makeFile("A/x.lproj/c.txt");
  EXPECT_EQ(resource("B", "c", "txt"), std::nullopt);
}

TEST_F(SystemBundleResources, AreNoneOfWhatIsNoFolder) {
  EXPECT_FALSE(SystemBundle::bundleWithPath("", fileSystem_));
  EXPECT_FALSE(SystemBundle::bundleWithPath(folder_.path("missing"), fileSystem_));
  EXPECT_FALSE(SystemBundle::bundleWithPath(makeFile("file"), fileSystem_));
}

TEST_F(SystemBundleResources, BelongToTheBundleOfTheInspector) {
  const auto path = makePackage("A.app", kApplication);
  const auto bundle = inspected(path).systemBundle();
  ASSERT_TRUE(bundle);
  EXPECT_EQ(bundle->bundlePath(), path);
  EXPECT_EQ(bundle->resourcePath(), path + "/Contents/Resources");
}

}  // namespace
}  // namespace vantrell
