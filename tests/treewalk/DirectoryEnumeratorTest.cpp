// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>

#include "tests/support/DeepTree.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/RedirectedFileSystem.h"
#include "tests/treewalk/WalkFixture.h"

namespace vantrell {
namespace {

using namespace tests;
using DirectoryEnumerator = WalkFixture;
using DirectoryEnumeratorAsRoot = WalkFixtureAsRoot;

/// Steps up to the object with that relative path.
const WalkedObject* nextNamed(QELDirectoryEnumerator& walk, std::string_view relativePath) {
  while (const auto* object = walk.next()) {
    if (object->relativePath() == relativePath) return object;
  }
  return nullptr;
}

TEST_F(DirectoryEnumerator, HandsOutEachFolderRightBeforeItsContents) {
  for (const char* name : {"a/b/c", "a/d", "e"}) folder_.makeFolder(name);
  for (const char* name : {"a/b/c/1", "a/b/2", "a/3", "4"}) folder_.makeFile(name);
  const auto paths = walk()->allObjects();
  EXPECT_EQ(inOrder(paths), (Texts{"4", "a", "a/3", "a/b", "a/b/2", "a/b/c", "a/b/c/1", "a/d", "e"}));
  // Whatever the order among siblings: what lies in a folder follows it without anything in between.
  for (const std::string folder : {"a", "a/b", "a/b/c"}) {
    auto at = std::ranges::find(paths, folder) + 1;
    const auto lies = [&](const std::string& path) { return path.starts_with(folder + "/"); };
    while (at != paths.end() && lies(*at)) ++at;
    EXPECT_EQ(std::count_if(at, paths.end(), lies), 0) << folder;
  }
}

TEST_F(DirectoryEnumerator, KeepsTheOrderOfTheFileSystem) {
  for (int i = 0; i < 300; ++i) folder_.makeFile("file " + std::to_string(i));
  Texts listed;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder_.path().c_str()), closedir);
  while (const auto* entry = readdir(stream.get())) {
    if (entry->d_name[0] != '.') listed.emplace_back(entry->d_name);
  }
  EXPECT_EQ(walk()->allObjects(), listed);
}

TEST_F(DirectoryEnumerator, HandsOutHiddenNamesButNeverDotAndDotDot) {
  for (const char* name : {".hidden", "..two", "...", ".. "}) folder_.makeFolder(name);
  EXPECT_EQ(inOrder(walk()->allObjects()), (Texts{".. ", "...", "..two", ".hidden"}));
}

TEST_F(DirectoryEnumerator, HandsOutLinksToFoldersAndNeverEntersThem) {
  folder_.makeFolder("folder");
  folder_.makeFile("folder/file");
  folder_.makeLink("link", "folder");
  folder_.makeLink("folder/up", "..");
  EXPECT_EQ(inOrder(walk()->allObjects()), (Texts{"folder", "folder/file", "folder/up", "link"}));
}

TEST_F(DirectoryEnumerator, FollowsALinkThatTheBaseItselfIs) {
  folder_.makeFolder("folder");
  folder_.makeFile("folder/file");
  const auto link = folder_.makeLink("link", "folder");
  EXPECT_EQ(walk(link)->allObjects(), Texts{"file"});
  EXPECT_EQ(walk(link)->copyCurrentAbsoluteFileSystemRepresentation(), link + "/");
}

TEST_F(DirectoryEnumerator, RefusesAnInvalidBaseAndLogsIt) {
  const auto file = folder_.makeFile("file");
  for (const auto& path : {std::string(), folder_.path("missing"), file, folder_.path() + std::string("\0", 1)}) {
    messages_.clear();
    EXPECT_EQ(walk(path), nullptr);
    EXPECT_EQ(messages_.entries(),
              (std::vector<RecordingLog::Entry>{
                  {host::LogLevel::Error, "", "",
                   "QELDirectoryEnumerator: attempt to initialize with invalid path '" + path + "'"}}));
  }
}

TEST_F(DirectoryEnumerator, ShowsPathsBelowTheRootWithASingleSlash) {
  folder_.makeFolder("a");
  folder_.makeFile("a/1");
  RedirectedFileSystem atRoot(fileSystem_, {{"/", folder_.path()}});
  const auto walk = QELDirectoryEnumerator::enumeratorAtPath(atRoot, log_, "/");
  EXPECT_EQ(walk->basePrefix(), "/");
  EXPECT_EQ(walk->nextObject(), "a");
  EXPECT_EQ(walk->copyCurrentAbsoluteFileSystemRepresentation(), "/a");
  EXPECT_EQ(walk->copyCurrentAbsoluteFileSystemRepresentation({"1"}), "/a/1");
  EXPECT_EQ(walk->nextObject(), "a/1");
}

TEST_F(DirectoryEnumerator, NeverEntersTheVolumesByNumberUnlessItStaysOnOneFileSystem) {
  for (const char* name : {".vol/1", ".volume/2", ".vo/3", "a/.vol/4"}) folder_.makeFolder(name);
  RedirectedFileSystem atRoot(fileSystem_, {{"/", folder_.path()}});
  const auto pathsWhenStaying = [&](bool stay) {
    return inOrder(QELDirectoryEnumerator::enumeratorAtPath(atRoot, log_, "/", stay)->allObjects());
  };
  EXPECT_EQ(pathsWhenStaying(false), (Texts{".vo", ".vo/3", ".vol", ".volume", "a", "a/.vol", "a/.vol/4"}));
  EXPECT_EQ(pathsWhenStaying(true),
            (Texts{".vo", ".vo/3", ".vol", ".vol/1", ".volume", ".volume/2", "a", "a/.vol", "a/.vol/4"}));
}

TEST_F(DirectoryEnumerator, TakesABaseThatCannotBeReadForAnEmptyOne) {
  folder_.makeFile("file");
  RedirectedFileSystem failing(fileSystem_, {});
  failing.failOpening(folder_.path(), Error::posix(posix::kAccessDenied));
  const auto walk = QELDirectoryEnumerator::enumeratorAtPath(failing, log_, folder_.path());
  ASSERT_NE(walk, nullptr);
  EXPECT_EQ(walk->currentDirectoryStream(), nullptr);
  EXPECT_EQ(walk->nextObject(), std::nullopt);
  EXPECT_EQ(walk->lastInaccessibleFolderPath(), "");
  EXPECT_TRUE(messages_.entries().empty());
}

TEST_F(DirectoryEnumeratorAsRoot, HandsOutFoldersThatCannotBeReadAndGoesOnBehindThem) {
  for (const char* name : {"closed", "open"}) folder_.makeFolder(name);
  for (const char* name : {"closed/1", "open/2", "3"}) folder_.makeFile(name);
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0711), 0);
  const Unprivileged nobody;
  const auto walk = this->walk();
  EXPECT_EQ(inOrder(walk->allObjects()), (Texts{"3", "closed", "open", "open/2"}));
  EXPECT_EQ(walk->lastInaccessibleFolderPath(), folder_.path("closed"));
  EXPECT_TRUE(messages_.entries().empty());
}

TEST_F(DirectoryEnumerator, TakesAFolderForInaccessibleWhenDescriptorsRunOut) {
  makeDeepTree(folder_.path(), 30);
  const auto walk = this->walk();
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const int next = dup(0);
  close(next);
  const rlimit few{static_cast<rlim_t>(next) + 5, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  const auto paths = walk->allObjects();
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(paths.size(), 6U);
  EXPECT_EQ(walk->lastInaccessibleFolderPath(), folder_.path("d/d/d/d/d/d"));
}

TEST_F(DirectoryEnumerator, OpensFiveHundredLevelsAtMost) {
  makeDeepTree(folder_.path(), 520);
  const auto walk = this->walk();
  std::size_t deepest = 0;
  std::size_t count = 0;
  const WalkedObject* object = nullptr;
  EntryRefusal last{};
  while ((object = walk->next())) {
    ++count;
    deepest = std::max(deepest, walk->levels());
    last = object->refusal();
  }
  EXPECT_EQ(deepest, QELDirectoryEnumerator::kMaximumLevels);
  EXPECT_EQ(count, 500U);  // the last one is handed out but not entered
  EXPECT_EQ(last, EntryRefusal::TooDeep);
  EXPECT_EQ(messages_.entries(), (std::vector<RecordingLog::Entry>{{host::LogLevel::Default, "", "", kTooDeep}}));
}

TEST_F(DirectoryEnumerator, EntersRelativePathsOfUpTo1024Bytes) {
  // 204 bytes, and four times a separator and 204 more: 1024.
  const std::string name(204, 'n');
  makeDeepTree(folder_.path(), 6, name.c_str());
  std::size_t longest = 0;
  for (const auto& path : walk()->allObjects()) longest = std::max(longest, path.size());
  EXPECT_EQ(longest, 1024U + 1 + 204);
  EXPECT_EQ(messages_.messages(), Texts{kTooLong});
}

TEST_F(DirectoryEnumerator, EntersNoRelativePathOf1025Bytes) {
  const std::string name(204, 'n');
  makeDeepTree(folder_.path(), 4, name.c_str());
  const auto fourth = folder_.path(name + "/" + name + "/" + name + "/" + name);
  std::filesystem::create_directories(fourth + "/" + std::string(205, 'x') + "/inner");
  std::filesystem::create_directories(fourth + "/" + std::string(204, 'y'));
  std::ofstream(fourth + "/" + std::string(204, 'y') + "/inner").put('x');
  const auto paths = walk()->allObjects();
  EXPECT_EQ(std::ranges::count_if(paths, [](const auto& path) { return path.ends_with("y/inner"); }), 1);
  EXPECT_EQ(std::ranges::count_if(paths, [](const auto& path) { return path.ends_with("x"); }), 1);
  EXPECT_EQ(std::ranges::count_if(paths, [](const auto& path) { return path.ends_with("x/inner"); }), 0);
  EXPECT_EQ(messages_.messages(), Texts{kTooLong});
}

TEST_F(DirectoryEnumerator, CountsTheRelativePathOnlyAndBearsALongBase) {
  std::string base = folder_.path();
  while (base.size() < 3000) base += "/" + std::string(200, 'b');
  std::filesystem::create_directories(base);
  const std::string name(255, 'n');
  makeDeepTree(base, 1, name.c_str());
  EXPECT_EQ(walk(base)->allObjects(), Texts{name});
  EXPECT_TRUE(messages_.entries().empty());
}

TEST_F(DirectoryEnumerator, StoresTheLengthOfAComponentInEightBits) {
  const std::string longest(255, 'n');
  folder_.makeFolder("a/" + longest + "/inner");
  folder_.makeFile("a/" + longest + "/inner/deep");
  folder_.makeFile("a/after");
  const auto paths = walk()->allObjects();
  // The long name is told with the folder itself, but adds 256 modulo 256 bytes to the paths of its contents.
  EXPECT_EQ(inOrder(paths), (Texts{"a", "a/after", "a/inner", "a/inner/deep", "a/" + longest}));
  EXPECT_TRUE(messages_.entries().empty());
}

TEST_F(DirectoryEnumerator, EntersTheFolderItMetWhateverItsPathSays) {
  const std::string longest(255, 'n');
  folder_.makeFolder("a/" + longest);
  folder_.makeFile("a/" + longest + "/file", "12345");
  folder_.makeFile("a/file", "1");
  const auto walk = this->walk();
  std::multiset<std::pair<std::uint64_t, bool>> files;
  while (const auto* object = walk->next()) {
    if (object->relativePath() == "a/file") files.emplace(object->status()->size, object->isPathFaithful());
  }
  EXPECT_EQ(files, (std::multiset<std::pair<std::uint64_t, bool>>{{1, true}, {5, false}}));
}

TEST_F(DirectoryEnumerator, ALongNameRightBelowTheBaseIsTold) {
  const std::string longest(255, 'n');
  folder_.makeFolder(longest + "/inner");
  EXPECT_EQ(inOrder(walk()->allObjects()), (Texts{longest, longest + "/inner"}));
}

TEST_F(DirectoryEnumerator, LongNamesDoNotCountAgainstThePathLimit) {
  const std::string longest(255, 'n');
  folder_.makeFolder("a");
  makeDeepTree(folder_.path("a"), 20, longest.c_str(), true);
  const auto paths = walk()->allObjects();
  EXPECT_EQ(paths.size(), 1U + 2 * 20);
  EXPECT_EQ(std::ranges::count(paths, "a/file"), 20);
  EXPECT_TRUE(messages_.entries().empty());
}

TEST_F(DirectoryEnumerator, SkipsTheContentsOfTheFolderJustHandedOut) {
  for (const char* name : {"a/b/c", "d"}) folder_.makeFolder(name);
  for (const char* name : {"a/1", "a/b/2", "d/3"}) folder_.makeFile(name);
  const auto walk = this->walk();
  Texts paths;
  while (const auto path = walk->nextObject()) {
    paths.push_back(*path);
    if (*path == "a/b") walk->skipDescendents();
  }
  EXPECT_EQ(inOrder(paths), (Texts{"a", "a/1", "a/b", "d", "d/3"}));
}

TEST_F(DirectoryEnumerator, SkipsTheRestOfAFolderAfterAnObjectThatIsNone) {
  folder_.makeFolder("a");
  for (int i = 0; i < 10; ++i) folder_.makeFile("a/" + std::to_string(i));
  folder_.makeFolder("b");
  folder_.makeFile("b/1");
  const auto walk = this->walk();
  int inA = 0;
  int inB = 0;
  while (const auto path = walk->nextObject()) {
    inB += *path == "b/1";
    if (!path->starts_with("a/")) continue;
    ++inA;
    walk->skipDescendents();
  }
  EXPECT_EQ(inA, 1);
  EXPECT_EQ(inB, 1);
}

TEST_F(DirectoryEnumerator, SkippingInTheBaseEndsTheWalk) {
  for (const char* name : {"1", "2", "3"}) folder_.makeFile(name);
  const auto walk = this->walk();
  EXPECT_TRUE(walk->nextObject());
  walk->skipDescendents();
  EXPECT_EQ(walk->nextObject(), std::nullopt);
  walk->skipDescendents();
  EXPECT_EQ(walk->nextObject(), std::nullopt);
  EXPECT_EQ(walk->popDirectory(), nullptr);
}

TEST_F(DirectoryEnumerator, AnExhaustedWalkStaysSo) {
  folder_.makeFile("file");
  const auto walk = this->walk();
  EXPECT_EQ(walk->allObjects(), Texts{"file"});
  folder_.makeFile("later");
  EXPECT_EQ(walk->nextObject(), std::nullopt);
  EXPECT_EQ(walk->allObjects(), Texts());
}

TEST_F(DirectoryEnumeratorAsRoot, HandsOutFoldersOfOtherFileSystemsWithoutEnteringThemWhenItStays) {
  folder_.makeFolder("mount");
  folder_.makeFolder("folder");
  const MountedFileSystem other(folder_.path("mount"));
  folder_.makeFile("mount/inside");
  folder_.makeFile("folder/file");
  EXPECT_EQ(inOrder(walk(folder_.path(), true)->allObjects()), (Texts{"folder", "folder/file", "mount"}));
  EXPECT_EQ(inOrder(walk(folder_.path(), false)->allObjects()),
            (Texts{"folder", "folder/file", "mount", "mount/inside"}));
  EXPECT_TRUE(walk(folder_.path(), true)->shouldStayOnFileSystem());
  EXPECT_FALSE(walk(folder_.path(), false)->shouldStayOnFileSystem());
}

TEST_F(DirectoryEnumeratorAsRoot, StaysOnTheFileSystemOfALinkThatTheBaseIs) {
  folder_.makeFolder("mount");
  const MountedFileSystem other(folder_.path("mount"));
  folder_.makeFolder("mount/folder/inner");
  const auto link = folder_.makeLink("link", "mount");
  EXPECT_EQ(walk(link, true)->allObjects(), Texts{"folder"});  // none of it lies where the link does
  EXPECT_EQ(inOrder(walk(folder_.path("mount"), true)->allObjects()), (Texts{"folder", "folder/inner"}));
}

TEST_F(DirectoryEnumerator, HandsOutNamesAsTheBytesTheyAre) {
  folder_.makeFolder("a\xff");
  folder_.makeFile("a\xff/\xfe\n");
  EXPECT_EQ(walk()->allObjects(), (Texts{"a\xff", "a\xff/\xfe\n"}));
}

TEST_F(DirectoryEnumerator, HandsOutTheStatusAndTheFolderThatHoldsTheObject) {
  folder_.makeFolder("a");
  folder_.makeFile("a/file", "12345");
  const auto walk = this->walk();
  const auto* a = nextNamed(*walk, "a");
  ASSERT_NE(a, nullptr);
  EXPECT_TRUE(a->isEntered());
  EXPECT_TRUE(a->status()->isDirectory());
  // The walk stands in "a" by now; the folder that holds it is still at hand.
  EXPECT_EQ(a->folder().statusOf(a->name().data(), host::FollowLinks::No)->inode, a->status()->inode);
  walk->skipDescendents();
  EXPECT_TRUE(a->folder().status().has_value());
  walk->skipDescendents();
  EXPECT_TRUE(a->folder().status().has_value()) << "held by the object, though the walk has left it";
  EXPECT_EQ(a->relativePath(), "a");
}

TEST_F(DirectoryEnumerator, ReadsAStatusOnceOnly) {
  folder_.makeFile("file", "12345");
  const auto walk = this->walk();
  const auto* file = walk->next();
  EXPECT_EQ(file->status()->size, 5U);
  std::filesystem::remove(folder_.path("file"));
  EXPECT_EQ(file->status()->size, 5U);
}

TEST_F(DirectoryEnumerator, GoesOnWhenWhatItMeetsVanishes) {
  for (const char* name : {"a/1", "b/2", "c/3"}) folder_.makeFolder(name);
  const auto walk = this->walk();
  const auto first = walk->nextObject();
  ASSERT_TRUE(first);
  std::filesystem::remove_all(folder_.path(*first));
  // The other two are listed already, and may be gone when they are met.
  const auto second = walk->nextObject();
  ASSERT_TRUE(second);
  for (const char* name : {"a", "b", "c"}) {
    if (name != *second) std::filesystem::remove_all(folder_.path(name));
  }
  const auto rest = walk->allObjects();
  EXPECT_EQ(rest.size(), 2U);  // the contents of the second, and the third by name alone
  EXPECT_EQ(walk->lastInaccessibleFolderPath(), "") << "what is gone is not inaccessible";
}

TEST_F(DirectoryEnumerator, NeverFollowsAFolderThatWasSwappedForALink) {
  folder_.makeFolder("victim");
  folder_.makeFile("victim/secret");
  folder_.makeFolder("tree/a");
  folder_.makeFolder("tree/b");
  const auto walk = this->walk(folder_.path("tree"));
  ASSERT_TRUE(walk->nextObject());
  for (const char* name : {"a", "b"}) {
    std::filesystem::remove_all(folder_.path(std::string("tree/") + name));
    folder_.makeLink(std::string("tree/") + name, "../victim");
  }
  for (const auto& path : walk->allObjects()) EXPECT_EQ(path.find("secret"), std::string::npos) << path;
}

TEST_F(DirectoryEnumerator, TellsPathsOfEntries) {
  folder_.makeFolder("a");
  const auto walk = this->walk();
  const host::DirectoryEntry entry{"x"};
  EXPECT_EQ(walk->currentRelativePath(&entry), "x");
  EXPECT_EQ(walk->copyCurrentAbsoluteFileSystemRepresentation(entry), folder_.path("x"));
  EXPECT_EQ(walk->nextObject(), "a");
  EXPECT_EQ(walk->currentRelativePath(&entry), "a/x");
  EXPECT_EQ(walk->copyCurrentAbsoluteFileSystemRepresentation(entry), folder_.path("a/x"));
  EXPECT_EQ(walk->currentRelativePath(nullptr), std::nullopt);
  EXPECT_EQ(walk->pushDirectoryEntry(nullptr), EntryRefusal::None);
  EXPECT_EQ(walk->levels(), 2U);
  EXPECT_NE(walk->popDirectory(), nullptr);
  EXPECT_EQ(walk->currentRelativePath(&entry), "x");
}

TEST_F(DirectoryEnumerator, RemembersTheInaccessiblePathItIsTold) {
  const auto walk = this->walk();
  walk->setLastInaccessibleFolderPath("/x");
  EXPECT_EQ(walk->lastInaccessibleFolderPath(), "/x");
}

}  // namespace
}  // namespace vantrell
