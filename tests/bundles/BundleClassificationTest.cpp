// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/bundles/BundleFixture.h"

namespace vantrell {
namespace {

using tests::BundleFixture;

const Dictionary kWithExecutable{{"CFBundleExecutable", "main"}};

struct StyleRow {
  std::uint64_t style;
  std::string informationFile;
};

class PackageStyles : public BundleFixture, public testing::WithParamInterface<StyleRow> {};

TEST_P(PackageStyles, IsToldByWhereTheInformationFileLies) {
  const Dictionary information{{"MainHTML", "main.html"}, {"CFBundleIdentifier", "org.example.found"}};
  const auto path = makePackage("Some.thing", information, GetParam().informationFile);
  const auto bundle = inspected(path);
  EXPECT_EQ(static_cast<std::uint64_t>(bundle.packageStyle()), GetParam().style);
  EXPECT_EQ(bundle.bundleIdentifier(), "org.example.found");
  EXPECT_EQ(bundle.bundlePath(), path);
  EXPECT_EQ(bundle.infoDictionaryPath(), path + "/" + GetParam().informationFile);
  EXPECT_EQ(bundle.infoDictionary(), information);
}

TEST_P(PackageStyles, HasThisInformationFile) {
  for (const auto* path : {"/a/b.app", "/a/b.app/", "/a/b.qtz"}) {
    EXPECT_EQ(QELBundle::infoPathForBundlePath(path, GetParam().style),
              stringByAppendingPathComponent(path, GetParam().informationFile));
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, PackageStyles,
                         testing::Values(StyleRow{0, "Contents/Info.plist"}, StyleRow{1, "Resources/Info.plist"},
                                         StyleRow{2, "Info.plist"}, StyleRow{3, "Contents/Info-macos.plist"},
                                         StyleRow{4, "Resources/Info-macos.plist"}));

class PackageStyleOrder : public BundleFixture {};

TEST_F(PackageStyleOrder, CompositionIsItsOwnInformationFile) {
  EXPECT_EQ(QELBundle::infoPathForBundlePath("/a/b.qtz", 5), "/a/b.qtz");
  EXPECT_EQ(QELBundle::infoPathForBundlePath("/a/b.app", 5), std::nullopt);
  EXPECT_EQ(QELBundle::infoPathForBundlePath("/a/b.QTZ", 5), std::nullopt);
  const auto path = makeList("Fire.qtz", {{"CFBundleShortVersionString", "1"}});
  const auto bundle = inspected(path);
  EXPECT_EQ(bundle.packageStyle(), PackageStyle::Composition);
  EXPECT_EQ(bundle.infoDictionaryPath(), path);
}

TEST_F(PackageStyleOrder, NoPathOrNoSuchStyleHasNoInformationFile) {
  EXPECT_EQ(QELBundle::infoPathForBundlePath("", 0), std::nullopt);
  EXPECT_EQ(QELBundle::infoPathForBundlePath("/a", 6), std::nullopt);
  EXPECT_EQ(QELBundle::infoPathForBundlePath("/a", UINT64_MAX), std::nullopt);
}

TEST_F(PackageStyleOrder, EarlierStylesGoFirst) {
  for (const auto* file : {"Resources/Info-macos.plist", "Contents/Info-macos.plist", "Info.plist",
                           "Resources/Info.plist", "Contents/Info.plist"}) {
    const auto path = makePackage("A.wdgt", {{"MainHTML", "a"}, {"CFBundleIdentifier", file}}, file);
    EXPECT_EQ(inspected(path).bundleIdentifier(), file);
  }
}

TEST_F(PackageStyleOrder, InformationFileThatIsAFolderIsPassedOver) {
  folder_.makeFolder("A.app/Contents/Info.plist");
  folder_.makeFolder("A.app/Resources/Info.plist");
  const auto path = makePackage("A.app", {{"MainHTML", "a"}}, "Info.plist");
  EXPECT_EQ(inspected(path).packageStyle(), PackageStyle::Flat);
}

TEST_F(PackageStyleOrder, FlatPackageHasToBeWidgetOrAssetByItsInformation) {
  EXPECT_FALSE(inspect(makePackage("A.app", kWithExecutable, "Info.plist")));
  EXPECT_FALSE(inspect(makePackage("B.wdgt", {}, "Info.plist")));
  EXPECT_TRUE(inspect(makePackage("C.wdgt", {{"MainHTML", 0}}, "Info.plist")));
  EXPECT_TRUE(inspect(makePackage("D.asset", {{"MobileAssetProperties", Dictionary()}}, "Info.plist")));
}

TEST_F(PackageStyleOrder, RefusedFlatPackageIsNotTriedFurther) {
  makePackage("A.app", kWithExecutable, "Contents/Info-macos.plist");
  EXPECT_FALSE(inspect(makePackage("A.app", {}, "Info.plist")));
}

TEST_F(PackageStyleOrder, NothingToInspectYieldsNoInspector) {
  EXPECT_FALSE(inspect(""));
  EXPECT_FALSE(inspect(folder_.path("missing.app")));
  EXPECT_FALSE(inspect(folder_.makeFolder("Empty.app")));
  EXPECT_FALSE(inspect(folder_.makeFile("file.app")));
  EXPECT_FALSE(inspect(folder_.makeFolder("Folder.qtz")));
  EXPECT_FALSE(inspect(std::string("a\0.qtz", 6)));
}

struct TypeRow {
  std::string name;
  std::string informationFile;
  Dictionary information;
  SoftwareType type;
};

std::ostream& operator<<(std::ostream& out, const TypeRow& row) {
  return out << row.name << '/' << row.informationFile << (row.information.empty() ? ", no information" : "");
}

class SoftwareTypes : public BundleFixture, public testing::WithParamInterface<TypeRow> {};

TEST_P(SoftwareTypes, IsToldByExtensionStyleAndInformation) {
  const auto& row = GetParam();
  EXPECT_EQ(inspected(makePackage(row.name, row.information, row.informationFile)).softwareType(), row.type);
}

constexpr char kContents[] = "Contents/Info.plist";
constexpr char kResources[] = "Resources/Info.plist";
constexpr char kFlat[] = "Info.plist";
constexpr char kContentsMacos[] = "Contents/Info-macos.plist";
constexpr char kResourcesMacos[] = "Resources/Info-macos.plist";
const Dictionary kWidget{{"MainHTML", "a.html"}};

INSTANTIATE_TEST_SUITE_P(
    Rows, SoftwareTypes,
    testing::Values(TypeRow{"A.app", kContents, kWithExecutable, SoftwareType::Application},
                    TypeRow{"A.app", kContentsMacos, kWithExecutable, SoftwareType::Application},
                    TypeRow{"A.app", kContents, {}, SoftwareType::Unknown},
                    TypeRow{"A.app", kContents, {{"CFBundleExecutable", ""}}, SoftwareType::Unknown},
                    TypeRow{"A.app", kContents, {{"CFBundleExecutable", 7}}, SoftwareType::Unknown},
                    TypeRow{"A.app", kResources, kWithExecutable, SoftwareType::Unknown},
                    TypeRow{"A.app", kResourcesMacos, kWithExecutable, SoftwareType::Unknown},
                    TypeRow{"A.APP", kContents, kWithExecutable, SoftwareType::Unknown},
                    TypeRow{"A", kContents, kWithExecutable, SoftwareType::Unknown},
                    TypeRow{"A.wdgt", kFlat, kWidget, SoftwareType::Widget},
                    TypeRow{"A.wdgt", kContents, kWidget, SoftwareType::Unknown},
                    TypeRow{"A.saver", kContents, {}, SoftwareType::ScreenSaver},
                    TypeRow{"A.slideSaver", kContents, {}, SoftwareType::ScreenSaver},
                    TypeRow{"A.saver", kContentsMacos, {}, SoftwareType::Unknown},
                    TypeRow{"A.slideSaver", kResources, {}, SoftwareType::Unknown},
                    TypeRow{"A.prefPane", kContents, kWithExecutable, SoftwareType::PreferencePane},
                    TypeRow{"A.prefPane", kContents, {}, SoftwareType::Unknown},
                    TypeRow{"A.prefPane", kContentsMacos, kWithExecutable, SoftwareType::Unknown},
                    TypeRow{"A.component", kContents, kWithExecutable, SoftwareType::Component},
                    TypeRow{"A.component", kContentsMacos, kWithExecutable, SoftwareType::Component},
                    TypeRow{"A.component", kContents, {}, SoftwareType::Unknown},
                    TypeRow{"Internet Plug-Ins/A.plugin", kContents, {}, SoftwareType::InternetPlugIn},
                    TypeRow{"Internet Plug-Ins/A", kContentsMacos, {}, SoftwareType::InternetPlugIn},
                    TypeRow{"Internet Plug-Ins/A.plugin", kResources, {}, SoftwareType::Unknown},
                    TypeRow{"Internet Plug-Ins/A.app", kContents, kWithExecutable, SoftwareType::Application},
                    TypeRow{"Internet Plug-Ins/A.app", kContents, {}, SoftwareType::InternetPlugIn},
                    TypeRow{"Internet Plug-Ins/Deeper/A.plugin", kContents, {}, SoftwareType::Unknown},
                    TypeRow{"A.plugin", kContents, kWithExecutable, SoftwareType::Unknown},
                    TypeRow{"A.asset", kFlat, {{"MobileAssetProperties", Dictionary()}}, SoftwareType::Unknown}));

class SpecialTypes : public BundleFixture {};

TEST_F(SpecialTypes, AssetHoldsAssetDataAndMetaInformation) {
  const auto path = makePackage("A.asset", {{"MobileAssetProperties", Dictionary()}}, kFlat);
  folder_.makeFolder("A.asset/AssetData");
  EXPECT_EQ(inspected(path).softwareType(), SoftwareType::Unknown);
  makeFile("A.asset/META-INF");
  EXPECT_EQ(inspected(path).softwareType(), SoftwareType::Asset);
}

TEST_F(SpecialTypes, AssetHasItsInformationAtTheTop) {
  const auto path = makePackage("A.asset", {}, kContents);
  folder_.makeFolder("A.asset/AssetData");
  folder_.makeFolder("A.asset/META-INF");
  EXPECT_EQ(inspected(path).softwareType(), SoftwareType::Unknown);
}

TEST_F(SpecialTypes, CompositionIsAScreenSaverByItsProtocols) {
  const Dictionary usable{{"protocols", Array{"other", "com.apple.QuartzComposer.protocol.screensaver"}},
                          {"CFBundleShortVersionString", "1.2"},
                          {"CFBundleIdentifier", "org.example.fire"}};
  const auto saver = inspected(makeList("Fire.qtz", usable));
  EXPECT_EQ(saver.softwareType(), SoftwareType::ScreenSaver);
  EXPECT_EQ(saver.versionString(), "");
  EXPECT_EQ(saver.bundleIdentifier(), "");

  auto unusable = usable;
  unusable.set("protocols", Array{"com.apple.QuartzComposer.protocol.screensaver.other", 7});
  const auto other = inspected(makeList("Ice.qtz", unusable));
  EXPECT_EQ(other.softwareType(), SoftwareType::Unknown);
  EXPECT_EQ(other.versionString(), "1.2");
  EXPECT_EQ(other.bundleIdentifier(), "org.example.fire");
}

TEST_F(SpecialTypes, CompositionsProtocolsHaveToBeAList) {
  const auto isUsable = [](const Value& protocols) {
    return QELBundle::isQuartzCompositionUsableAsScreenSaverWithContents({{"protocols", protocols}});
  };
  constexpr char kProtocol[] = "com.apple.QuartzComposer.protocol.screensaver";
  EXPECT_TRUE(isUsable(Array{kProtocol}));
  EXPECT_FALSE(isUsable(kProtocol));
  EXPECT_FALSE(isUsable(Dictionary{{kProtocol, true}}));
  EXPECT_FALSE(isUsable(Array()));
  EXPECT_FALSE(QELBundle::isQuartzCompositionUsableAsScreenSaverWithContents({}));
}

TEST_F(SpecialTypes, CompositionPackageWithContentsIsNoComposition) {
  const Dictionary usable{{"protocols", Array{"com.apple.QuartzComposer.protocol.screensaver"}}};
  EXPECT_EQ(inspected(makePackage("Fire.qtz", usable)).softwareType(), SoftwareType::Unknown);
}

TEST_F(SpecialTypes, PathsWithSlashesAtTheEndAreTheSame) {
  makePackage("Internet Plug-Ins/A.plugin", {});
  EXPECT_EQ(inspected(folder_.path("Internet Plug-Ins/A.plugin//")).softwareType(), SoftwareType::InternetPlugIn);
  EXPECT_EQ(inspected(makePackage("A.app", kWithExecutable) + "/").softwareType(), SoftwareType::Application);
}

TEST_F(SpecialTypes, UnreadableInformationLeavesWhatThePathTells) {
  makeFile("A.app/Contents/Info.plist", "no property list {");
  EXPECT_EQ(inspected(folder_.path("A.app")).softwareType(), SoftwareType::Unknown);
  makeFile("A.saver/Contents/Info.plist", "no property list {");
  const auto saver = inspected(folder_.path("A.saver"));
  EXPECT_EQ(saver.softwareType(), SoftwareType::ScreenSaver);
  EXPECT_EQ(saver.versionString(), std::nullopt);
  EXPECT_EQ(saver.infoDictionary(), std::nullopt);
}

}  // namespace
}  // namespace vantrell
