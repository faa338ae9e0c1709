// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>

#include "tests/support/MountedFileSystem.h"
#include "tests/treewalk/SearchFixture.h"
#include "treewalk/QELFileNameMatchDescriptor.h"

namespace vantrell {
namespace {

using namespace tests;

template <class Base>
class PatternSearches : public Searches<Base> {
 protected:
  ErrorOrNil search(const Array& arguments) {
    this->feedback_.messages.clear();
    return this->operations_.searchPatterns(arguments, &this->feedback_);
  }
  Texts found(const Texts& pairs, const char* stay = "1") {
    Array arguments{this->top(), stay};
    arguments.insert(arguments.end(), pairs.begin(), pairs.end());
    EXPECT_EQ(search(arguments), std::nullopt);
    return this->hitPaths();
  }
};

using SearchPatterns = PatternSearches<WalkFixture>;
using SearchPatternsAsRoot = PatternSearches<WalkFixtureAsRoot>;
using SearchPatternsConcurrent = PatternSearches<WalkFixture>;

TEST(QELFileNameMatchDescriptorTest, MatchesByItsType) {
  using Descriptor = QELFileNameMatchDescriptor;
  EXPECT_TRUE((Descriptor{0, "a.txt"}.matches("a.txt")));
  EXPECT_FALSE((Descriptor{0, "a.txt"}.matches("A.txt")));
  EXPECT_FALSE((Descriptor{0, "a.txt"}.matches("a.txt ")));
  EXPECT_TRUE((Descriptor{1, "a."}.matches("a.txt")));
  EXPECT_TRUE((Descriptor{1, "a.txt"}.matches("a.txt")));
  EXPECT_FALSE((Descriptor{1, "A"}.matches("a.txt")));
  EXPECT_TRUE((Descriptor{2, "txt"}.matches("a.txt")));
  EXPECT_FALSE((Descriptor{2, ".txt"}.matches("a.txt")));
  EXPECT_FALSE((Descriptor{2, "TXT"}.matches("a.txt")));
  EXPECT_FALSE((Descriptor{3, "a.txt"}.matches("a.txt")));
}

TEST_F(SearchPatterns, FindsWhatSuitsAnyOfThePairs) {
  for (const char* name : {"a", "a/b"}) folder_.makeFolder(name);
  for (const char* name : {"a/exact", "a/b/exact", "a/b/inexact", "start", "a/.start", "x.end", "a/b/end", "other"})
    folder_.makeFile(name);
  EXPECT_EQ(found({"0", "exact"}), (Texts{"a/b/exact", "a/exact"}));
  EXPECT_EQ(found({"1", "st", "2", "end"}), (Texts{"start", "x.end"}));
  EXPECT_EQ(found({"1", "b", "0", "b"}), Texts{"a/b"}) << "told of once";
  EXPECT_EQ(found({"0", "a/b"}), Texts()) << "names are matched, not paths";
}

TEST_F(SearchPatterns, SendsAllItsMessagesInOrder) {
  makeFiles(40);
  makeFiles(60, "other ");
  EXPECT_EQ(found({"1", "file"}).size(), 40U);
  const auto& messages = feedback_.messages;
  ASSERT_EQ(messages.size(), 6U);
  EXPECT_EQ(messages[0], (Dictionary{{"ProgressFraction", 0.0}}));
  EXPECT_EQ(messages[1], (Dictionary{{"ProgressFraction", 0.01}}));
  EXPECT_EQ(messages[4], (Dictionary{{"ProgressFraction", 1.0}, {"FileObjectInfo", Array{}}}));
  EXPECT_EQ(messages[5], (Dictionary{{"FinalFeedbackMessage", true}}));
}

TEST_F(SearchPatterns, TellsTheFractionOfTheObjectsSeen) {
  makeFiles(50);
  EXPECT_EQ(found({"1", "file"}).size(), 50U);
  // The 20th object has the index 19, the 40th 39.
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0.01", "0.38:20", "0.78:20", "1:10", "final"}));
}

TEST_F(SearchPatterns, ExactlyTwentyHitsMakeOneBatchAndAnEmptyLastOne) {
  makeFiles(20);
  EXPECT_EQ(found({"1", "file"}).size(), 20U);
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0.01", "0.95:20", "1:0", "final"}));
}

TEST_F(SearchPatterns, NoHitsMakeAnEmptyLastBatch) {
  makeFiles(1);
  EXPECT_EQ(found({"0", "none"}), Texts());
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0.01", "1:0", "final"}));
}

TEST_F(SearchPatterns, ATreeWithoutObjectsIsAnError) {
  EXPECT_EQ(search({top(), "0", "0", "x"}), Error::posix(2));
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0.01"}));
}

TEST_F(SearchPatterns, RefusesListsThatMakeNoSenseBeforeItSendsAnything) {
  makeFiles(1);
  for (const Array& arguments :
       {Array{}, Array{top(), "0"}, Array{top(), "0", "1"}, Array{top(), "0", "1", "x", "1"}, Array{"", "0", "1", "x"},
        Array{top(), "2", "1", "x"}, Array{top(), "", "1", "x"}, Array{top(), "true", "1", "x"},
        Array{top(), "00", "1", "x"}, Array{top(), "0", "1", 5}}) {
    EXPECT_EQ(search(arguments), Error::posix(22));
    EXPECT_TRUE(feedback_.messages.empty());
  }
  EXPECT_EQ(search({folder_.path("missing"), "0", "1", "x"}), Error::posix(2));
  EXPECT_EQ(search({folder_.path("file 0"), "0", "1", "x"}), Error::posix(20));
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(SearchPatterns, RefusesPairsThatMakeNoSenseAfterTheFirstMessage) {
  makeFiles(1);
  for (const Texts& pair : {Texts{"3", "x"}, Texts{"00", "x"}, Texts{"", "x"}, Texts{"-", "x"}, Texts{"1", ""}}) {
    EXPECT_EQ(search({top(), "0", "1", "file", pair[0], pair[1]}), Error::posix(22));
    EXPECT_EQ(feedback_.summary(), Texts{"0"});
  }
}

TEST_F(SearchPatterns, TheSearchItselfRefusesOddLists) {
  makeFiles(1);
  for (const Texts& pairs : {Texts{}, Texts{"1"}, Texts{"1", "x", "1"}})
    EXPECT_EQ(operations_.searchForFileNamesAtPath(top(), true, pairs, {}), Error::posix(22));
  EXPECT_EQ(operations_.searchForFileNamesAtPath("", true, {"1", "x"}, {}), Error::posix(2));
  EXPECT_EQ(operations_.searchForFileNamesAtPath(top(), true, {"1", "x"}, {}), std::nullopt);
}

TEST_F(SearchPatterns, ComparesNamesAsBytesAndShowsThemAsText) {
  folder_.makeFolder("\xff");
  folder_.makeFile(
      "\xff/Gr\xc3\xbc\xc3\x9f"
      "e.\xfe");
  EXPECT_EQ(found({"1", "Gr\xc3\xbc"}), Texts{"\xEF\xBF\xBD/Gr\xc3\xbc\xc3\x9f"
                                              "e.\xEF\xBF\xBD"});
  EXPECT_EQ(found({"1", "\xEF\xBF\xBD"}), Texts());
}

TEST_F(SearchPatterns, LogsALimitInEachOfItsTwoWalks) {
  const std::string name(204, 'n');
  auto path = folder_.path();
  for (int i = 0; i < 6; ++i) std::filesystem::create_directory(path += "/" + name);
  found({"0", name});
  EXPECT_EQ(messages_.messages(), (Texts{kTooLong, kTooLong}));
}

TEST_F(SearchPatternsConcurrent, CountsALargeTreeWhileItMatches) {
  for (int i = 0; i < 40; ++i) {
    folder_.makeFolder(std::to_string(i));
    makeFiles(60, std::to_string(i) + "/file ");
  }
  constexpr std::size_t kTotal = 40 * 61;
  EXPECT_EQ(found({"1", "file"}).size(), 2400U);
  const auto& messages = feedback_.messages;
  ASSERT_EQ(messages.size(), 2U + 120 + 2);
  const auto last = messages[messages.size() - 3].find("ProgressFraction")->asNumber()->doubleValue();
  double before = 0.0;
  for (std::size_t i = 2; i < messages.size() - 2; ++i) {
    const auto fraction = messages[i].find("ProgressFraction")->asNumber()->doubleValue();
    EXPECT_EQ(messages[i].find("FileObjectInfo")->asArray()->size(), 20U);
    EXPECT_GT(fraction, before);
    before = fraction;
  }
  EXPECT_GE(last, (2400.0 - 1) / kTotal);
  EXPECT_LT(last, 1.0);
}

TEST_F(SearchPatternsConcurrent, StopsCountingWhenTheClientsMessageFails) {
  for (int i = 0; i < 40; ++i) {
    folder_.makeFolder(std::to_string(i));
    makeFiles(60, std::to_string(i) + "/file ");
  }
  feedback_.onMessage = [](const Dictionary& message) {
    if (message.contains("FileObjectInfo")) throw std::runtime_error("enough");
  };
  EXPECT_THROW(static_cast<void>(search({top(), "0", "1", "file"})), std::runtime_error);
}

TEST_F(SearchPatternsAsRoot, StaysOnTheFileSystemWhenAsked) {
  folder_.makeFolder("mount");
  const MountedFileSystem other(folder_.path("mount"));
  folder_.makeFile("mount/file");
  folder_.makeFile("file");
  EXPECT_EQ(found({"0", "file"}, "1"), Texts{"file"});
  EXPECT_EQ(found({"0", "file"}, "0"), (Texts{"file", "mount/file"}));
}

TEST_F(SearchPatternsAsRoot, AFolderThatCannotBeReadHoldsNothing) {
  folder_.makeFolder("closed");
  folder_.makeFile("closed/file");
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0711), 0);
  const Unprivileged nobody;
  EXPECT_EQ(search({folder_.path("closed"), "0", "0", "file"}), Error::posix(2));
  EXPECT_EQ(found({"0", "file"}), Texts());
}

}  // namespace
}  // namespace vantrell
