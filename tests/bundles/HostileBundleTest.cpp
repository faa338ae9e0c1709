// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <ctime>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/bundles/BundleFixture.h"

namespace vantrell {
namespace {

using testing::IsEmpty;

const Dictionary kApplication{{"CFBundleExecutable", "main"}};

// Of the processor's time, so that a busy machine makes no difference; sanitizers included.
constexpr std::clock_t kLongest = 20 * CLOCKS_PER_SEC;

class HostileBundle : public tests::BundleFixture {
 protected:
  void SetUp() override { start_ = std::clock(); }
  void TearDown() override { EXPECT_LT(std::clock() - start_, kLongest); }

  /// Asks for everything that there is to ask for.
  void askForEverything(const QELBundle& bundle) {
    bundle.description();
    bundle.systemBundle();
    bundle.infoDictionary();
    bundle.developmentLocalization();
    bundle.namesOfActiveLocalizations();
    bundle.executablePath();
    bundle.servicesEntries();
    bundle.isCodesigned();
    bundle.isMRJApplication();
    bundle.isRevolutionApplication();
  }
  /// Of a package whose information file exists but can't be read.
  void expectUnreadable(const std::string& path) {
    const auto bundle = inspected(path);
    EXPECT_EQ(bundle.softwareType(), SoftwareType::Unknown);
    EXPECT_EQ(bundle.versionString(), std::nullopt);
    EXPECT_EQ(bundle.infoDictionary(), std::nullopt);
    askForEverything(bundle);
  }

 private:
  std::clock_t start_ = 0;
};

TEST_F(HostileBundle, PipeAsInformationFileBlocksNobody) {
  folder_.makeFolder("A.app/Contents");
  ASSERT_EQ(mkfifo(folder_.path("A.app/Contents/Info.plist").c_str(), 0600), 0);
  expectUnreadable(folder_.path("A.app"));
}

TEST_F(HostileBundle, SocketAsInformationFileIsUnreadable) {
  folder_.makeFolder("A.app/Contents");
  const auto path = folder_.path("A.app/Contents/Info.plist");
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  expectUnreadable(folder_.path("A.app"));
  close(listener);
}

TEST_F(HostileBundle, LinkToAnEndlessDeviceAsInformationFileIsUnreadable) {
  folder_.makeFolder("A.app/Contents");
  folder_.makeLink("A.app/Contents/Info.plist", "/dev/zero");
  expectUnreadable(folder_.path("A.app"));
}

TEST_F(HostileBundle, FourGibibytesOfInformationAreNotRead) {
  makeFile("A.app/Contents/Info.plist", "{ CFBundleExecutable = main; }");
  std::filesystem::resize_file(folder_.path("A.app/Contents/Info.plist"), std::uintmax_t{4} << 30);
  rusage before{};
  getrusage(RUSAGE_SELF, &before);
  expectUnreadable(folder_.path("A.app"));
  rusage after{};
  getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 64 << 10);  // KiB
}

TEST_F(HostileBundle, ListOfMillionsOfValuesIsUnreadable) {
  std::string list = "{ CFBundleExecutable = main; a = (";
  for (int i = 0; i < 500'000; ++i) list += "a,";
  makeFile("A.app/Contents/Info.plist", list + "); }");
  expectUnreadable(folder_.path("A.app"));
}

TEST_F(HostileBundle, DeepListIsUnreadableInEveryForm) {
  constexpr int kDepth = 100'000;
  std::string xml = "<plist><dict><key>a</key>";
  for (int i = 0; i < kDepth; ++i) xml += "<array>";
  makeFile("A.app/Contents/Info.plist", xml);
  expectUnreadable(folder_.path("A.app"));
  makeFile("B.app/Contents/Info.plist", "{ a = " + std::string(kDepth, '('));
  expectUnreadable(folder_.path("B.app"));
}

TEST_F(HostileBundle, ListThatHoldsItselfIsUnreadable) {
  // One dictionary whose only value is the dictionary itself.
  std::string list = "bplist00";
  list += std::string("\xd1\x01\x00", 3) + std::string("Qa");
  list += std::string("\x08\x0b", 2);
  list += std::string(6, '\0') + std::string("\x01\x01", 2) + std::string(7, '\0') + '\2' + std::string(8, '\0') +
          std::string(7, '\0') + '\x0d';
  makeFile("A.app/Contents/Info.plist", list);
  expectUnreadable(folder_.path("A.app"));
}

TEST_F(HostileBundle, RootThatIsNoDictionaryIsUnreadable) {
  makeFile("A.app/Contents/Info.plist", "( CFBundleExecutable, main )");
  expectUnreadable(folder_.path("A.app"));
  makeFile("B.app/Contents/Info.plist", "");
  expectUnreadable(folder_.path("B.app"));
}

TEST_F(HostileBundle, LinksInCirclesLeadNowhere) {
  folder_.makeLink("Self.app", "Self.app");
  EXPECT_FALSE(inspect(folder_.path("Self.app")));
  folder_.makeFolder("A.app/Contents");
  folder_.makeLink("A.app/Contents/Info.plist", "Info.plist");
  EXPECT_FALSE(inspect(folder_.path("A.app")));
  folder_.makeFolder("B.app");
  folder_.makeLink("B.app/Contents", ".");
  EXPECT_FALSE(inspect(folder_.path("B.app")));
}

TEST_F(HostileBundle, FoldersThatAreLinksToAbovePutAnEndToNoQuestion) {
  const auto path = makePackage("A.app", kApplication);
  folder_.makeLink("A.app/Contents/Resources", "../..");
  folder_.makeLink("A.app/Contents/PlugIns", ".");
  folder_.makeLink("A.app/Contents/self_support.bundle", "../../A.app");
  folder_.makeLink("A.app/Contents/MacOS", "MacOS");
  const auto bundle = inspected(path);
  askForEverything(bundle);
  EXPECT_FALSE(bundle.isRevolutionApplication());
  EXPECT_EQ(bundle.executablePath(), std::nullopt);
}

TEST_F(HostileBundle, WidgetsThatAreTheirOwnPlugInsHaveNoExecutable) {
  const auto path = makePackage("A.wdgt", {{"MainHTML", "a"}, {"Plugin", "."}}, "Info.plist");
  EXPECT_EQ(inspected(path).executablePath(), std::nullopt);
  makePackage("B.wdgt", {{"MainHTML", "a"}, {"Plugin", "Loop.wdgt"}}, "Info.plist");
  folder_.makeLink("B.wdgt/Loop.wdgt", ".");
  EXPECT_EQ(inspected(folder_.path("B.wdgt")).executablePath(), std::nullopt);
}

TEST_F(HostileBundle, PlugInOutsideOfAWidgetIsNone) {
  makePackage("Other.bundle", {{"CFBundleExecutable", "x"}});
  makeFile("Other.bundle/Contents/MacOS/x");
  const auto executable = [this](const std::string& plugIn) {
    return inspected(makePackage("A.wdgt", {{"MainHTML", "a"}, {"Plugin", plugIn}}, "Info.plist")).executablePath();
  };
  EXPECT_EQ(executable("../Other.bundle"), std::nullopt);
  EXPECT_EQ(executable("x/../../Other.bundle"), std::nullopt);
  EXPECT_EQ(executable(folder_.path("Other.bundle")), std::nullopt);
  EXPECT_EQ(executable(".."), std::nullopt);
}

TEST_F(HostileBundle, NamesThatAreNoTextAreTaken) {
  const std::string name = "caf\xe9\x01.app";
  const auto path = makePackage(name, {{"CFBundleExecutable", "main"}, {"CFBundleIdentifier", "org.example"}});
  folder_.makeFolder(name + "/Contents/Resources/d\xff.lproj");
  const auto bundle = inspected(path);
  EXPECT_EQ(bundle.bundlePath(), path);
  EXPECT_EQ(bundle.softwareType(), SoftwareType::Application);
  EXPECT_EQ(bundle.nonLocalizedName(), "caf\xe9\x01");
  EXPECT_THAT(bundle.namesOfActiveLocalizations(), testing::ElementsAre("d\xff"));
  EXPECT_THAT(bundle.description(), testing::HasSubstr("caf\xef\xbf\xbd\x01.app' style: 0 type: 1"));
}

TEST_F(HostileBundle, PathLongerThanAnyIsNoPackage) {
  EXPECT_FALSE(inspect(std::string(100'000, 'a') + ".app"));
  std::string deep;
  for (int i = 0; i < 10'000; ++i) deep += "a/";
  EXPECT_FALSE(inspect(deep + "A.app"));
}

TEST_F(HostileBundle, HundredsOfSupportPlugInsAreNotAllRead) {
  const auto path = makePackage("A.app", kApplication);
  const auto huge = makeFile("huge.plist", "( " + std::string(3 << 20, ' ') + " x");
  for (int i = 0; i < 400; ++i) {
    const auto plugIn = "A.app/Contents/PlugIns/" + std::to_string(i) + "_support.bundle/Contents";
    folder_.makeFolder(plugIn);
    std::filesystem::create_hard_link(huge, folder_.path(plugIn) + "/Info.plist");
  }
  EXPECT_FALSE(inspected(path).isRevolutionApplication());
}

TEST_F(HostileBundle, ExecutableNameWithAZeroByteOrEndlessLengthIsNone) {
  const auto path = makePackage("A.app", {{"CFBundleExecutable", std::string(1 << 20, 'x')}});
  const auto bundle = inspected(path);
  EXPECT_EQ(bundle.softwareType(), SoftwareType::Application);
  EXPECT_EQ(bundle.executablePath(), std::nullopt);
  makeFile("B.app/Contents/Info.plist",
           textOf(binaryPropertyListFromValue(Dictionary{{"CFBundleExecutable", std::string("main\0x", 6)}}).value()));
  makeFile("B.app/Contents/MacOS/main");
  EXPECT_EQ(inspected(folder_.path("B.app")).executablePath(), std::nullopt);
}

}  // namespace
}  // namespace vantrell
