// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/PropertyList.h"
#include "host/linux/PreferencesLocation.h"
#include "tests/host/PreferencesContract.h"
#include "tests/support/KilledAtSystemCall.h"
#include "tests/support/PrivatePreferences.h"

namespace vantrell {
namespace {

using Domain = host::PreferencesDomain;
using Any = Domain::Any;
using Current = Domain::Current;
using tests::PreferencesContract;
using tests::PreferencesContractConcurrent;
using tests::PrivatePreferences;

struct LinuxCandidate final : tests::PreferencesCandidate {
  PrivatePreferences real;
  host::Preferences& preferences() override { return real.preferences; }
  std::vector<Domain> domains() override { return tests::allKindsOfPreferencesDomains(); }
  std::vector<Domain> impossibleDomains() override { return tests::preferencesDomainsWithImpossibleNames(); }
  std::optional<Dictionary> stored(const Domain& domain) override {
    const auto location = host::preferencesLocationOf(domain, real.root.path(), *real.users);
    if (!location) return std::nullopt;
    std::string path = location->start.substr(real.root.path().size());
    for (std::size_t i = 0; i < location->componentCount; ++i) path.append("/").append(location->components[i]);
    return real.contentsOf(path + "/" + location->fileName);
  }
};

const auto kLinux =
    testing::Values(tests::PreferencesImplementation{"Linux", [] { return std::make_unique<LinuxCandidate>(); }});
INSTANTIATE_TEST_SUITE_P(, PreferencesContract, kLinux, PreferencesContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, PreferencesContractConcurrent, kLinux, PreferencesContract::nameOf);

struct LinuxPreferences : testing::Test {
  PrivatePreferences files;

  bool set(const Domain& domain, std::optional<Value> value = 1, const std::string& key = "key") {
    const auto changes = files.preferences.changesOf(domain);
    changes->setValue(key, std::move(value));
    return changes->synchronize();
  }
  std::string path(const std::string& file) const { return files.root.path(file); }
  struct stat statusOf(const std::string& file) const {
    struct stat status {};
    EXPECT_EQ(lstat(path(file).c_str(), &status), 0) << file;
    return status;
  }
  void write(const std::string& file, std::string_view content) const {
    std::filesystem::create_directories(std::filesystem::path(path(file)).parent_path());
    files.root.makeFile(file, content);
  }
};

TEST_F(LinuxPreferences, UsesTheFoldersAndNamesOfMacos) {
  const auto uuid = std::string(PrivatePreferences::kMachineUuid);
  const std::pair<Domain, std::string> kCases[] = {
      {{"com.app", Any(), Current()}, "Library/Preferences/com.app.plist"},
      {{"com.app", Any(), uuid}, "Library/Preferences/com.app.plist"},
      {{"com.app", Any(), Any()}, "Library/Preferences/Network/com.app.plist"},
      {{"com.app", Any(), "other"}, "Library/Preferences/ByHost/com.app.other.plist"},
      {{"com.app", "alice", Any()}, "home/alice/Library/Preferences/com.app.plist"},
      {{"com.app", "alice", Current()}, "home/alice/Library/Preferences/ByHost/com.app." + uuid + ".plist"},
      {{"com.app", "alice", uuid}, "home/alice/Library/Preferences/ByHost/com.app." + uuid + ".plist"},
      {{"com.app", "alice", "other"}, "home/alice/Library/Preferences/ByHost/com.app.other.plist"},
      {{"com.app", Current(), Any()}, "home/me/Library/Preferences/com.app.plist"},
      {{Any(), Any(), Current()}, "Library/Preferences/.GlobalPreferences.plist"},
      {{Any(), "alice", Current()}, "home/alice/Library/Preferences/ByHost/.GlobalPreferences." + uuid + ".plist"},
      {{"..", Any(), Current()}, "Library/Preferences/...plist"},
  };
  for (const auto& [domain, file] : kCases) {
    EXPECT_TRUE(set(domain)) << file;
    EXPECT_EQ(files.contentsOf(file), (Dictionary{{"key", 1}})) << file;
    EXPECT_TRUE(set(domain, std::nullopt)) << file;
    EXPECT_FALSE(std::filesystem::exists(path(file))) << file;
  }
}

TEST_F(LinuxPreferences, NewFilesBelongToThemWhosePreferencesTheyAre) {
  umask(0077);
  ASSERT_TRUE(set({"app", Any(), Current()}));
  umask(0);
  ASSERT_TRUE(set({"app", "alice", Current()}));
  umask(0022);
  EXPECT_EQ(statusOf("Library/Preferences/app.plist").st_mode, S_IFREG | 0644u);
  EXPECT_EQ(statusOf("Library/Preferences/app.plist").st_uid, geteuid());
  EXPECT_EQ(statusOf("Library/Preferences").st_mode, S_IFDIR | 0755u);
  const auto& alice = files.users->users["alice"];
  const auto uuid = std::string(PrivatePreferences::kMachineUuid);
  for (const auto& file : {std::string(), std::string("/Preferences"), std::string("/Preferences/ByHost"),
                           "/Preferences/ByHost/app." + uuid + ".plist"}) {
    const auto status = statusOf("home/alice/Library" + file);
    EXPECT_EQ(status.st_uid, alice.user) << file;
    EXPECT_EQ(status.st_gid, alice.group) << file;
    EXPECT_EQ(status.st_mode, file.ends_with(".plist") ? S_IFREG | 0600u : S_IFDIR | 0700u) << file;
  }
}

TEST_F(LinuxPreferences, ReplacedFilesGetNoRightsThatTheyDidNotHave) {
  constexpr char kFile[] = "Library/Preferences/app.plist";
  const std::pair<mode_t, mode_t> kCases[] = {{0600, 0600}, {0640, 0640}, {0666, 0644},
                                              {0777, 0644}, {0400, 0600}, {04755, 0644}};
  for (const auto& [before, after] : kCases) {
    write(kFile, "{ other = 1; }");
    ASSERT_EQ(chmod(path(kFile).c_str(), before), 0);
    ASSERT_TRUE(set({"app", Any(), Current()}));
    EXPECT_EQ(statusOf(kFile).st_mode & 07777u, after);
    EXPECT_EQ(files.contentsOf(kFile), (Dictionary{{"key", 1}, {"other", "1"}}));
  }
}

TEST_F(LinuxPreferences, ReadsEveryFormAndWritesTheBinaryOne) {
  constexpr char kFile[] = "Library/Preferences/app.plist";
  write(kFile, "<plist><dict><key>other</key><real>0.5</real></dict></plist>");
  ASSERT_TRUE(set({"app", Any(), Current()}));
  std::ifstream file(path(kFile));
  std::string start(8, ' ');
  file.read(start.data(), 8);
  EXPECT_EQ(start, "bplist00");
  EXPECT_EQ(files.contentsOf(kFile), (Dictionary{{"key", 1}, {"other", 0.5}}));
}

TEST_F(LinuxPreferences, WhatIsNoPropertyListIsLeftAlone) {
  constexpr char kFile[] = "Library/Preferences/app.plist";
  for (const std::string_view content : {"{ broken", "(an, array)", "", "bplist00garbage"}) {
    write(kFile, content);
    EXPECT_FALSE(set({"app", Any(), Current()})) << content;
    EXPECT_FALSE(set({"app", Any(), Current()}, std::nullopt)) << content;
    std::ifstream file(path(kFile));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), content);
  }
  std::filesystem::remove(path(kFile));
  std::filesystem::create_directory(path(kFile));
  EXPECT_FALSE(set({"app", Any(), Current()}));
  std::filesystem::remove(path(kFile));
  ASSERT_EQ(mkfifo(path(kFile).c_str(), 0600), 0);
  EXPECT_FALSE(set({"app", Any(), Current()}));  // and does not wait for a writer
  std::filesystem::remove(path(kFile));
  write(kFile, "");
  std::filesystem::resize_file(path(kFile), std::uintmax_t{1} << 40);  // a hole
  EXPECT_FALSE(set({"app", Any(), Current()}));
}

TEST_F(LinuxPreferences, RemovingWhatIsNotThereMakesNothing) {
  EXPECT_TRUE(set({"app", "alice", Any()}, std::nullopt));
  EXPECT_TRUE(set({"app", Any(), Any()}, std::nullopt));
  EXPECT_FALSE(std::filesystem::exists(path("home/alice/Library")));
  EXPECT_FALSE(std::filesystem::exists(path("Library")));
}

TEST_F(LinuxPreferences, WhatAPropertyListCannotHoldIsNotStored) {
  ASSERT_TRUE(set({"app", Any(), Current()}));
  EXPECT_FALSE(set({"app", Any(), Current()}, Value(), "null"));
  EXPECT_EQ(files.contentsOf("Library/Preferences/app.plist"), (Dictionary{{"key", 1}}));
}

TEST_F(LinuxPreferences, WithoutMachineIdentifierUsersHaveNoneOfThisHost) {
  for (const auto* identifier :
       {"", "0011", "00112233445566778899AABBCCDDEEFF", "uninitialized", "00112233445566778899aabbccddeeff0"}) {
    files.root.makeFile("etc/machine-id", identifier);
    EXPECT_FALSE(set({"app", "alice", Current()})) << identifier;
    EXPECT_TRUE(set({"app", Any(), Current()})) << identifier;
    EXPECT_TRUE(set({"app", "alice", Any()})) << identifier;
  }
}

TEST_F(LinuxPreferences, LinksInAHomeAreNotFollowed) {
  files.root.makeFolder("elsewhere/Preferences");
  for (const auto* link : {"Library", "Library/Preferences", "Library/Preferences/ByHost"}) {
    std::filesystem::remove_all(path("home/alice/Library"));
    const auto place = std::filesystem::path(path("home/alice")) / link;
    std::filesystem::create_directories(place.parent_path());
    std::filesystem::create_directory_symlink(path("elsewhere"), place);
    EXPECT_FALSE(set({"app", "alice", Current()})) << link;
  }
  std::filesystem::remove_all(path("home/alice/Library"));
  write("elsewhere/target.plist", "{ other = 1; }");
  files.root.makeFolder("home/alice/Library/Preferences");
  files.root.makeLink("home/alice/Library/Preferences/app.plist", path("elsewhere/target.plist"));
  EXPECT_FALSE(set({"app", "alice", Any()}));
  EXPECT_EQ(files.contentsOf("elsewhere/target.plist"), (Dictionary{{"other", "1"}}));
  // One where the new file is to be is taken away, and its target left alone.
  std::filesystem::remove(path("home/alice/Library/Preferences/app.plist"));
  files.root.makeLink("home/alice/Library/Preferences/app.plist.new", path("elsewhere/target.plist"));
  for (const auto* folder : {"home/alice/Library", "home/alice/Library/Preferences"})
    ASSERT_EQ(chown(path(folder).c_str(), files.users->users["alice"].user, files.users->users["alice"].group), 0);
  EXPECT_TRUE(set({"app", "alice", Any()}));
  EXPECT_EQ(files.contentsOf("elsewhere/target.plist"), (Dictionary{{"other", "1"}}));
  EXPECT_TRUE(S_ISREG(statusOf("home/alice/Library/Preferences/app.plist").st_mode));
}

struct LinuxPreferencesAsRoot : LinuxPreferences {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root can act for another user.";
  }
};

TEST_F(LinuxPreferencesAsRoot, ReadsNothingForAUserThatTheUserMayNotRead) {
  ASSERT_TRUE(set({"app", "alice", Any()}));
  write("secret.plist", "{ secret = 1; }");
  ASSERT_EQ(chmod(path("secret.plist").c_str(), 0600), 0);
  std::filesystem::create_hard_link(path("secret.plist"), path("home/alice/Library/Preferences/linked.plist"));
  EXPECT_FALSE(set({"linked", "alice", Any()}));
  EXPECT_EQ(statusOf("home/alice/Library/Preferences/linked.plist").st_uid, 0u);
}

TEST_F(LinuxPreferencesAsRoot, WritesNothingIntoAHomeThatIsNotTheUsersOwn) {
  files.users->users["alice"].homeFolder = "/";
  EXPECT_FALSE(set({"app", "alice", Any()}));
  files.users->users["alice"].homeFolder = "/home/me";
  EXPECT_FALSE(set({"app", "alice", Any()}));
  files.users->users["alice"].homeFolder = "/missing";
  EXPECT_FALSE(set({"app", "alice", Any()}));
  files.users->users["alice"].homeFolder = "home/alice";
  EXPECT_FALSE(set({"app", "alice", Any()}));
  EXPECT_FALSE(std::filesystem::exists(path("Library")));
}

TEST_F(LinuxPreferencesAsRoot, IsItselfAgainAfterwards) {
  ASSERT_TRUE(set({"app", "alice", Any()}));
  const auto file = files.root.makeFile("mine");
  EXPECT_EQ(statusOf("mine").st_uid, 0u);
  ASSERT_EQ(chown(file.c_str(), 1, 1), 0);  // takes root's rights
}

TEST_F(LinuxPreferences, AKillAtAnySystemCallLeavesTheOldOrTheNewFileWhole) {
  const Domain domain{"app", "alice", Any()};
  constexpr char kFile[] = "home/alice/Library/Preferences/app.plist";
  const std::string text(100'000, 'x');
  ASSERT_TRUE(set(domain, text, "kept"));
  const Dictionary old{{"kept", text}};
  const Dictionary changed{{"kept", text}, {"new", text}};
  int stop = 0;
  int newOnes = 0;
  for (auto end = tests::ChildEnd::Killed; end != tests::ChildEnd::Succeeded;) {
    ASSERT_LT(++stop, 1000);
    ASSERT_TRUE(set(domain, std::nullopt, "new"));  // also gets over what the one before left behind
    end = tests::runKilledAtSystemCall(stop, [&] { return set(domain, text, "new"); });
    if (end == tests::ChildEnd::NotTraceable) GTEST_SKIP() << "Child processes can't be traced here.";
    ASSERT_NE(end, tests::ChildEnd::Failed) << stop;
    const auto stored = files.contentsOf(kFile);
    ASSERT_TRUE(stored) << stop;
    ASSERT_TRUE(*stored == old || *stored == changed) << stop;
    newOnes += *stored == changed;
    if (end == tests::ChildEnd::Succeeded) {
      EXPECT_EQ(*stored, changed);
    }
  }
  EXPECT_GT(stop, 30);
  EXPECT_GT(newOnes, 1);
  EXPECT_LT(newOnes, stop);
}

}  // namespace
}  // namespace vantrell
