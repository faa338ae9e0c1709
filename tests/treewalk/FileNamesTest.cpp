// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/treewalk/SearchFixture.h"
#include "treewalk/QELFileNameMatchDescriptor.h"

namespace vantrell {
namespace {

using namespace tests;

class SearchFilenames : public Searches<WalkFixture> {
 protected:
  Texts found(const char* prefix, const char* extension, bool wantFolders) {
    return hits(kOperation, {top(), prefix, extension, wantFolders});
  }
  static constexpr auto kOperation = &SearchOperations::searchFilenames;
};

class SearchFilenamesAsRoot : public Searches<WalkFixtureAsRoot> {};

TEST_F(SearchFilenames, FindsNamesByPrefixAndExtension) {
  for (const char* name : {"a.txt", "ab.txt", "b.txt", "a.TXT", "A.txt", "a.txt.bak", "atxt", ".a.txt"})
    folder_.makeFile(name);
  EXPECT_EQ(found("a", "txt", false), (Texts{"a.txt", "ab.txt"}));
  EXPECT_EQ(found("a", "", false), (Texts{"a.TXT", "a.txt", "a.txt.bak", "ab.txt", "atxt"}));
  EXPECT_EQ(found("", "txt", false), (Texts{".a.txt", "A.txt", "a.txt", "ab.txt", "b.txt"}));
  EXPECT_EQ(found("", "", false).size(), 8U);
  EXPECT_EQ(found("a.txt.bakk", "", false), Texts());
}

TEST_F(SearchFilenames, FindsFoldersAloneWhenTheseAreWanted) {
  for (const char* name : {"folder", "folder/folder", ".folder"}) folder_.makeFolder(name);
  folder_.makeFile("folder file");
  EXPECT_EQ(found("folder", "", true), Texts{"folder"});
  EXPECT_EQ(found("", "", true), (Texts{".folder", "folder"}));
  EXPECT_EQ(found("", "", false), Texts{"folder file"});
}

TEST_F(SearchFilenames, NeverLooksBelowTheFirstLevel) {
  folder_.makeFolder("a");
  folder_.makeFile("a/file");
  EXPECT_EQ(found("file", "", false), Texts());
}

TEST_F(SearchFilenames, JudgesLinksByWhatTheyLeadTo) {
  folder_.makeFolder("folder");
  folder_.makeFile("file");
  folder_.makeLink("to folder", "folder");
  folder_.makeLink("to file", "file");
  folder_.makeLink("to nothing", "nowhere");
  folder_.makeLink("to itself", "to itself");
  EXPECT_EQ(found("to", "", true), Texts{"to folder"});
  const auto record = feedback_.records().at(0);
  EXPECT_EQ(*record.asDictionary()->find("Type"), Value("NSFileTypeSymbolicLink")) << "but tells of them as links";
  EXPECT_EQ(found("to", "", false), Texts{"to file"});
}

TEST_F(SearchFilenames, CountsEveryNameWhetherItSuitsOrNot) {
  makeFiles(150, "other ");
  makeFiles(41);
  EXPECT_EQ(found("file", "", false).size(), 41U);
  EXPECT_EQ(looks_, 2);
  const auto summary = feedback_.summary();
  EXPECT_EQ(std::ranges::count(summary, "0"), 2);
  EXPECT_EQ(std::ranges::count(summary, "0:20"), 2);
  EXPECT_EQ(summary.back(), "1:1");
}

TEST_F(SearchFilenames, EndsWhenCancelled) {
  makeFiles(150);
  looksUntilCancelled_ = 1;
  EXPECT_EQ(run(kOperation, {top(), "none of them", "", false}), Error::posix(89));
  EXPECT_EQ(feedback_.summary(), (Texts{"0", "0"}));
}

TEST_F(SearchFilenames, RefusesWhatIsNoFolderAndArgumentsThatMakeNoSense) {
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(run(kOperation, {"", "", "", false}), Error::posix(22));
  EXPECT_EQ(run(kOperation, {folder_.path("missing"), "", "", false}), Error::posix(2));
  EXPECT_EQ(run(kOperation, {file, "", "", false}), Error::posix(20));
  for (const Array& arguments : {Array{}, Array{top(), "", ""}, Array{top(), "", 5, true}, Array{top(), "", "", "1"}})
    EXPECT_EQ(run(kOperation, arguments), Error::posix(22));
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(SearchFilenames, ShowsNamesThatAreNoTextWithReplacementCharacters) {
  folder_.makeFile("file \xff.txt");
  EXPECT_EQ(found("file", "txt", false), Texts{"file \xEF\xBF\xBD.txt"});
}

TEST_F(SearchFilenamesAsRoot, TakesAFolderThatCannotBeReadForAnEmptyOne) {
  folder_.makeFolder("closed");
  folder_.makeFile("closed/file");
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0711), 0);
  const Unprivileged nobody;
  EXPECT_EQ(run(&SearchOperations::searchFilenames, {folder_.path("closed"), "", "", false}), std::nullopt);
  EXPECT_EQ(feedback_.summary(), Texts{"1:0"});
}

}  // namespace
}  // namespace vantrell
