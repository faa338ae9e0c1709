// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/support/DeepTree.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/treewalk/SearchFixture.h"
#include "treewalk/KnownOwners.h"

namespace vantrell {
namespace {

using namespace tests;

class SearchFileorphansAsRoot : public Searches<WalkFixtureAsRoot> {
 protected:
  Texts found(bool stay = true) { return hits(kOperation, {top(), stay}); }
  bool holdsOrphansOnly(const std::string& name, const UserIDSet& known = {0, kKnownUser}) {
    return operations_.isFolderAtPath(folder_.path(name), known);
  }
  static constexpr auto kOperation = &SearchOperations::searchFileorphans;
};
using SearchFileorphans = Searches<WalkFixture>;
using OrphanedFolderAsRoot = SearchFileorphansAsRoot;

TEST(KnownUserIDs, AreThoseOfBothSources) {
  FakeIdentities identities({1, 2, 3, 2}, {3, 4});
  EXPECT_EQ(allKnownUserIDs(identities), (UserIDSet{1, 2, 3, 4}));
}

TEST(KnownOwnersTest, LooksEachOwnerUpOnce) {
  FakeIdentities identities({1}, {2}, {3});
  KnownOwners owners(allKnownUserIDs(identities), &identities);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(owners.contains(1));
    EXPECT_TRUE(owners.contains(2));
    EXPECT_TRUE(owners.contains(3)) << "known though not enumerated";
    EXPECT_FALSE(owners.contains(4));
  }
  EXPECT_EQ(identities.lookUps, (FakeIdentities::UserIDs{3, 4}));
}

TEST(KnownOwnersTest, LooksNobodyUpWithoutIdentities) {
  KnownOwners owners({1});
  EXPECT_TRUE(owners.contains(1));
  EXPECT_FALSE(owners.contains(0));
}

TEST_F(SearchFileorphansAsRoot, ReportsWhatBelongsToNobody) {
  folder_.makeFolder("folder");
  for (const char* name : {"roots", "known", "nobodys", "folder/nobodys"}) folder_.makeFile(name);
  folder_.makeLink("link", "roots");
  give("known", kKnownUser);
  for (const char* name : {"nobodys", "folder/nobodys", "link"}) give(name, kNobodys);
  EXPECT_EQ(found(), (Texts{"folder/nobodys", "link", "nobodys"}));
}

TEST_F(SearchFileorphansAsRoot, RootIsKnownThoughNoSourceSaysSo) {
  identities_ = FakeIdentities();
  folder_.makeFile("roots");
  EXPECT_EQ(found(), Texts());
}

TEST_F(SearchFileorphansAsRoot, AFolderOfOrphansStandsForItsContents) {
  for (const char* name : {"a/b", "a/empty"}) folder_.makeFolder(name);
  for (const char* name : {"a/1", "a/b/2"}) folder_.makeFile(name);
  for (const char* name : {"a", "a/b", "a/empty", "a/1", "a/b/2"}) give(name, kNobodys);
  give("a/b/2", kNobodys + 1);
  folder_.makeFile("after");
  give("after", kNobodys);
  EXPECT_EQ(found(), (Texts{"a", "after"}));
}

TEST_F(SearchFileorphansAsRoot, AFolderThatHoldsSomebodysIsLeftOutButNotItsOrphans) {
  folder_.makeFolder("a/b");
  for (const char* name : {"a/1", "a/b/2", "a/b/known"}) folder_.makeFile(name);
  for (const char* name : {"a", "a/b", "a/1", "a/b/2"}) give(name, kNobodys);
  give("a/b/known", kKnownUser);
  EXPECT_EQ(found(), (Texts{"a/1", "a/b/2"}));
}

TEST_F(SearchFileorphansAsRoot, SomebodysFolderIsSearchedForOrphans) {
  folder_.makeFolder("known/empty");
  give("known", kKnownUser);
  give("known/empty", kNobodys);
  EXPECT_EQ(found(), Texts{"known/empty"});
}

TEST_F(SearchFileorphansAsRoot, AnOrphanedFolderThatWasNotEnteredEndsTheListingOfItsParent) {
  folder_.makeFolder("parent/mount");
  const MountedFileSystem other(folder_.path("parent/mount"));
  give("parent/mount", kNobodys);
  give("parent", kKnownUser);
  for (int i = 0; i < 200; ++i) folder_.makeFile("parent/file " + std::to_string(i));
  for (int i = 0; i < 200; ++i) give("parent/file " + std::to_string(i), kNobodys);
  // What the folder lists before the mount point is told of, what it lists after that is not.
  const auto listed = walk(folder_.path("parent"), true)->allObjects();
  const auto before = static_cast<std::size_t>(std::ranges::find(listed, "mount") - listed.begin());
  EXPECT_EQ(found(true).size(), before + 1);
  EXPECT_EQ(found(false).size(), 201U) << "entered, its own contents are what is skipped";
}

TEST_F(SearchFileorphansAsRoot, AnOrphanedFolderThatCannotBeReadIsNoHit) {
  folder_.makeFolder("closed");
  folder_.makeFile("after");
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0700), 0);
  give("closed", kNobodys);
  give("after", kNobodys);
  const Unprivileged nobody;
  EXPECT_EQ(found(), Texts{"after"});
}

TEST_F(SearchFileorphansAsRoot, OwnersThatAreNotEnumeratedAreNotOrphaned) {
  identities_ = FakeIdentities({}, {}, {kNobodys});
  for (int i = 0; i < 50; ++i) folder_.makeFile(std::to_string(i));
  for (int i = 0; i < 50; ++i) give(std::to_string(i), kNobodys);
  EXPECT_EQ(found(), Texts());
  EXPECT_EQ(identities_.lookUps, FakeIdentities::UserIDs{kNobodys});
}

TEST_F(SearchFileorphansAsRoot, SendsBatchesAndWordAsItGoesOn) {
  makeFiles(120);
  for (int i = 0; i < 120; ++i) give("file " + std::to_string(i), kNobodys);
  EXPECT_EQ(found().size(), 120U);
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0:20", "0:20", "0:20", "0:20", "0:20", "0", "0:20", "1:0"}));
}

TEST_F(SearchFileorphansAsRoot, EndsWhenCancelled) {
  makeFiles(150);
  looksUntilCancelled_ = 1;
  EXPECT_EQ(run(kOperation, {top(), true}), Error::posix(89));
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0"}));
}

TEST_F(SearchFileorphansAsRoot, EndsWhenCancelledWhileItJudgesALargeFolder) {
  folder_.makeFolder("large");
  makeFiles(1000, "large/");
  give("large", kNobodys);
  for (int i = 0; i < 1000; ++i) give("large/" + std::to_string(i), kNobodys);
  looksUntilCancelled_ = 0;
  EXPECT_EQ(run(kOperation, {top(), true}), Error::posix(89));
  EXPECT_EQ(looks_, 1);
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(SearchFileorphansAsRoot, ALargeTreeIsReportedAsWithoutReadingAhead) {
  for (int i = 0; i < 60; ++i) {
    const auto name = std::to_string(i);
    folder_.makeFolder(name + "/inner");
    makeFiles(20, name + "/inner/");
    if (i % 3 == 0) give(name, kNobodys);
    if (i % 2 == 0) give(name + "/inner", kNobodys);
    for (int j = 0; j < 20; ++j) {
      if (i % 5 != 0 || j != 7) give(name + "/inner/" + std::to_string(j), kNobodys);
    }
  }
  Texts expected;
  for (int i = 0; i < 60; ++i) {
    const auto name = std::to_string(i);
    const bool innerHoldsOrphansOnly = i % 5 != 0;
    const bool innerIsHit = i % 2 == 0 && innerHoldsOrphansOnly;
    if (i % 3 == 0 && innerIsHit) {
      expected.push_back(name);
    } else if (innerIsHit) {
      expected.push_back(name + "/inner");
    } else {
      for (int j = 0; j < 20; ++j) {
        if (innerHoldsOrphansOnly || j != 7) expected.push_back(name + "/inner/" + std::to_string(j));
      }
    }
  }
  EXPECT_EQ(found(), inOrder(expected));
}

TEST_F(SearchFileorphans, RefusesWhatIsNoFolderAndArgumentsThatMakeNoSense) {
  constexpr auto kOperation = &SearchOperations::searchFileorphans;
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(run(kOperation, {"", true}), Error::posix(22));
  EXPECT_EQ(run(kOperation, {folder_.path("missing"), true}), Error::posix(2));
  EXPECT_EQ(run(kOperation, {file, true}), Error::posix(20));
  for (const Array& arguments : {Array{}, Array{top()}, Array{top(), "1"}, Array{5, true}})
    EXPECT_EQ(run(kOperation, arguments), Error::posix(22));
}

TEST_F(OrphanedFolderAsRoot, IsEmptyOrHoldsNothingOfTheUsers) {
  for (const char* name : {"empty", "orphans/inner", "mixed/inner", "roots"}) folder_.makeFolder(name);
  for (const char* name : {"orphans/inner/1", "mixed/inner/1", "mixed/inner/2", "roots/1"}) folder_.makeFile(name);
  for (const char* name : {"orphans/inner", "orphans/inner/1", "mixed/inner", "mixed/inner/1"}) give(name, kNobodys);
  give("mixed/inner/2", kKnownUser);
  EXPECT_TRUE(holdsOrphansOnly("empty"));
  EXPECT_TRUE(holdsOrphansOnly("orphans")) << "the owner of the folder itself does not count";
  EXPECT_FALSE(holdsOrphansOnly("mixed"));
  EXPECT_FALSE(holdsOrphansOnly("roots"));
  EXPECT_TRUE(holdsOrphansOnly("roots", {kKnownUser}));
  EXPECT_FALSE(holdsOrphansOnly("missing"));
  EXPECT_FALSE(holdsOrphansOnly("roots/1"));
  EXPECT_FALSE(holdsOrphansOnly("empty", {}));
  EXPECT_FALSE(operations_.isFolderAtPath("", {1}));
}

TEST_F(OrphanedFolderAsRoot, IsNotJudgedByWhatOtherFileSystemsHold) {
  folder_.makeFolder("a/mount");
  give("a/mount", kNobodys);
  const MountedFileSystem other(folder_.path("a/mount"));
  give("a/mount", kNobodys);
  folder_.makeFile("a/mount/roots");
  EXPECT_TRUE(holdsOrphansOnly("a"));
  EXPECT_FALSE(holdsOrphansOnly("a/mount"));
}

TEST_F(OrphanedFolderAsRoot, WhatCannotBeReadIsNoOrphanFolderButAnEmptyFolderInside) {
  folder_.makeFolder("a/closed");
  folder_.makeFile("a/closed/roots");
  for (const char* name : {"a", "a/closed"}) give(name, kNobodys);
  ASSERT_EQ(chmod(folder_.path("a/closed").c_str(), 0700), 0);
  EXPECT_FALSE(holdsOrphansOnly("a"));
  const Unprivileged nobody;
  EXPECT_FALSE(holdsOrphansOnly("a/closed"));
  EXPECT_TRUE(holdsOrphansOnly("a"));
}

}  // namespace
}  // namespace vantrell
