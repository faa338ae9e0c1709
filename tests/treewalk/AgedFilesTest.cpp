// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>

#include "tests/support/MountedFileSystem.h"
#include "tests/treewalk/SearchFixture.h"

namespace vantrell {
namespace {

using namespace tests;

class SearchAgedfiles : public Searches<WalkFixture> {
 protected:
  ErrorOrNil search(unsigned days, bool stay = true) { return run(kOperation, {top(), days, stay}); }
  Texts found(unsigned days, bool stay = true) { return hits(kOperation, {top(), days, stay}); }
  static constexpr auto kOperation = &SearchOperations::searchAgedfiles;
};

class SearchAgedfilesAsRoot : public Searches<WalkFixtureAsRoot> {};

TEST_F(SearchAgedfiles, ReportsFilesAndFoldersOfThatAgeOrOlder) {
  folder_.makeFolder("old folder");
  for (const char* name : {"old", "older", "young", "old folder/young inside"}) folder_.makeFile(name);
  setAge(folder_.path("old"), 10.001);
  setAge(folder_.path("older"), 400);
  setAge(folder_.path("young"), 9.999);
  setAge(folder_.path("old folder"), 11);
  EXPECT_EQ(found(10), (Texts{"old", "old folder", "older"}));
  EXPECT_EQ(found(11), (Texts{"old folder", "older"}));
  EXPECT_EQ(found(401), Texts());
}

TEST_F(SearchAgedfiles, ZeroDaysReportsAllThatIsNotOfTheFuture) {
  folder_.makeFolder("a");
  for (const char* name : {"a/now", "future"}) folder_.makeFile(name);
  setAge(folder_.path("future"), -1);
  EXPECT_EQ(found(0), (Texts{"a", "a/now"}));
}

TEST_F(SearchAgedfiles, DaysBeyondAllMeasureFindNothing) {
  folder_.makeFile("file");
  setAge(folder_.path("file"), 20000);
  EXPECT_EQ(hits(kOperation, {top(), ~std::uint64_t{0}, true}), Texts());
}

TEST_F(SearchAgedfiles, JudgesLinksByTheirOwnAge) {
  folder_.makeFolder("in");
  const auto target = folder_.makeFile("target");
  folder_.makeLink("in/link", target);
  folder_.makeLink("in/dangling", "nowhere");
  setAge(target, 100);
  setAge(folder_.path("in/dangling"), 100);
  EXPECT_EQ(found(50), (Texts{"in/dangling", "target"}));
}

TEST_F(SearchAgedfiles, ARecordHoldsWhatTheObjectIs) {
  folder_.makeFile("file", "12345");
  ASSERT_EQ(chmod(folder_.path("file").c_str(), 04751), 0);
  ASSERT_EQ(search(0), std::nullopt);
  const auto status = fileSystem_.status(folder_.path("file"), host::FollowLinks::No);
  EXPECT_EQ(feedback_.records(), (Array{Dictionary{{"Path", top() + "/file"},
                                                   {"Type", "NSFileTypeRegular"},
                                                   {"Size", 5U},
                                                   {"ModificationDate", status->modified},
                                                   {"Mode", 04751U}}}));
}

TEST_F(SearchAgedfiles, BuildsAllPathsOnTheResolvedFolder) {
  folder_.makeFolder("real");
  folder_.makeFile("real/file");
  const auto link = folder_.makeLink("link", "real");
  EXPECT_EQ(hits(kOperation, {link, 0U, true}), Texts{"real/file"});
  EXPECT_EQ(hits(kOperation, {link + "/", 0U, true}), Texts{"real/file"});
}

TEST_F(SearchAgedfiles, RefusesWhatIsNoFolder) {
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(run(kOperation, {"", 0U, true}), Error::posix(22));
  EXPECT_EQ(run(kOperation, {folder_.path("missing"), 0U, true}), Error::posix(2));
  EXPECT_EQ(run(kOperation, {folder_.makeLink("dangling", "nowhere"), 0U, true}), Error::posix(2));
  EXPECT_EQ(run(kOperation, {file, 0U, true}), Error::posix(20));
  for (const Array& arguments : {Array{}, Array{top()}, Array{top(), 0U}, Array{5, 0U, true}, Array{top(), "0", "1"}})
    EXPECT_EQ(run(kOperation, arguments), Error::posix(22));
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(SearchAgedfiles, AnEmptyFolderBringsTheFinalBatchAlone) {
  EXPECT_EQ(search(0), std::nullopt);
  EXPECT_EQ(feedback_.summary(), Texts{"1:0"});
  EXPECT_EQ(looks_, 0);
}

TEST_F(SearchAgedfiles, ExactlyTwentyHitsMakeOneBatchAndAnEmptyLastOne) {
  makeFiles(20);
  EXPECT_EQ(search(0), std::nullopt);
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0:20", "1:0"}));
}

TEST_F(SearchAgedfiles, OneHitMoreStaysForTheLastBatch) {
  makeFiles(21);
  EXPECT_EQ(search(0), std::nullopt);
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0:20", "1:1"}));
}

TEST_F(SearchAgedfiles, SaysThatItGoesOnWithEveryHundredthObject) {
  makeFiles(201);
  EXPECT_EQ(search(1), std::nullopt);
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0", "0", "1:0"}));
  EXPECT_EQ(looks_, 3);
}

TEST_F(SearchAgedfiles, SendsABatchBeforeTheWordOfTheSameObject) {
  makeFiles(150);
  for (const auto& path : walk()->allObjects()) setAge(folder_.path(path), 10);
  setAge(folder_.path(*walk()->nextObject()), 1);  // so that the 101st object fills the fifth batch
  ASSERT_EQ(search(5), std::nullopt);
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0:20", "0:20", "0:20", "0:20", "0:20", "0", "0:20", "0:20", "1:9"}));
}

TEST_F(SearchAgedfiles, EndsWhenCancelledAfterWordOfTheObjectAtHand) {
  makeFiles(1000);
  looksUntilCancelled_ = 1;
  EXPECT_EQ(search(0), Error::posix(89));
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0:20", "0:20", "0:20", "0:20", "0:20", "0"}));
  looksUntilCancelled_ = 0;
  EXPECT_EQ(search(0), Error::posix(89));
  EXPECT_EQ(feedback_.summary(), Texts{"0"});
}

TEST_F(SearchAgedfiles, ShowsNamesThatAreNoTextWithReplacementCharacters) {
  folder_.makeFolder("a\xff");
  folder_.makeFile("a\xff/b\xfe");
  EXPECT_EQ(found(0), (Texts{"a\xEF\xBF\xBD", "a\xEF\xBF\xBD/b\xEF\xBF\xBD"}));
}

TEST_F(SearchAgedfiles, NeverTellsOfAnotherObjectThanThePathNames) {
  const std::string longest(255, 'n');
  folder_.makeFolder("a/" + longest);
  folder_.makeFile("a/" + longest + "/untold");
  folder_.makeFile("a/" + longest + "/same", "12345");
  folder_.makeFile("a/same", "1");
  EXPECT_EQ(found(0), (Texts{"a", "a/" + longest, "a/same", "a/same"}));
  for (const auto& record : feedback_.records()) {
    const auto& told = *record.asDictionary();
    if (!told.find("Path")->asString()->ends_with("same")) continue;
    EXPECT_EQ(told.find("Size")->asNumber()->unsignedValue(), 1U);
  }
}

TEST_F(SearchAgedfiles, LeavesOutWhatVanishesMeanwhile) {
  makeFiles(3000);
  std::filesystem::create_directories(folder_.path("a/b"));
  feedback_.onMessage = [&, first = true](const Dictionary&) mutable {
    if (!std::exchange(first, false)) return;
    for (const auto& entry : std::filesystem::directory_iterator(top())) std::filesystem::remove_all(entry.path());
  };
  EXPECT_EQ(search(0), std::nullopt);
  EXPECT_LT(feedback_.records().size(), 3002U);
  EXPECT_TRUE(feedback_.summary().back().starts_with("1:"));
}

TEST_F(SearchAgedfiles, WorksWithoutFeedbackAndCancellation) {
  makeFiles(150);
  EXPECT_EQ(operations_.searchAgedfiles({top(), 0U, true}, nullptr, nullptr), std::nullopt);
}

TEST_F(SearchAgedfilesAsRoot, StaysOnTheFileSystemWhenAsked) {
  folder_.makeFolder("mount");
  const MountedFileSystem other(folder_.path("mount"));
  folder_.makeFile("mount/inside");
  EXPECT_EQ(hits(&SearchOperations::searchAgedfiles, {top(), 0U, true}), Texts{"mount"});
  EXPECT_EQ(hits(&SearchOperations::searchAgedfiles, {top(), 0U, false}), (Texts{"mount", "mount/inside"}));
}

TEST_F(SearchAgedfilesAsRoot, PassesOverWhatItMayNotRead) {
  folder_.makeFolder("closed");
  folder_.makeFile("closed/1");
  folder_.makeFile("2");
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0700), 0);
  const Unprivileged nobody;
  EXPECT_EQ(hits(&SearchOperations::searchAgedfiles, {top(), 0U, true}), (Texts{"2", "closed"}));
}

}  // namespace
}  // namespace vantrell
