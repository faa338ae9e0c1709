// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "foundation/TreeWalk.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/DeepTree.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::FileType;
using host::FollowLinks;
using host::MountPoints;
using tests::makeDeepTree;
using tests::TemporaryFolder;

// Notes what it meets, "+" on entering and "-" on leaving a folder, below the top.
class Recorder final : public TreeVisitor {
 public:
  explicit Recorder(std::string top) : topLength_(top.size() + 1) {}

  Result<Enter> enter(TreeEntry& entry) override {
    record("+", entry.path());
    if (onEnter) onEnter(entry);
    if (failure_ && entry.name() == failAt) return failure(*failure_);
    const auto type =
        entry.type() == FileType::Unknown ? entry.folder().statusOf(entry.name(), FollowLinks::No)->type : entry.type();
    return descendEverywhere || type == FileType::Directory ? Enter::Descend : Enter::Skip;
  }
  Result<Leave> leave(TreeEntry& entry, unsigned scan) override {
    record("-", entry.path());
    return scan < scans ? Leave::ScanAgain : Leave::Done;
  }
  ErrorOrNil cannotDescend(TreeEntry& entry, const Error& error) override {
    record("!" + std::to_string(error.code()), entry.path());
    return std::nullopt;
  }

  void failOn(std::string name, Error error) {
    failAt = std::move(name);
    failure_ = std::move(error);
  }

  std::vector<std::string> events;
  std::function<void(TreeEntry&)> onEnter;
  bool descendEverywhere = false;
  unsigned scans = 1;
  bool recording = true;
  std::size_t count = 0;

 private:
  void record(const std::string& kind, const std::string& path) {
    ++count;
    if (recording) events.push_back(kind + path.substr(topLength_));
  }
  std::size_t topLength_;
  std::string failAt;
  ErrorOrNil failure_;
};

class TreeWalkTest : public testing::Test {
 protected:
  ErrorOrNil walk(TreeVisitor& visitor, std::size_t maximumOpenFolders = TreeWalk::kMaximumOpenFolders) {
    auto top = fileSystem_.openDirectory(folder_.path(), FollowLinks::No);
    return TreeWalk(std::move(top.value()), folder_.path(), MountPoints::Enter, visitor, maximumOpenFolders).run();
  }
  std::size_t indexOf(const Recorder& recorder, const std::string& event) {
    const auto found = std::ranges::find(recorder.events, event);
    EXPECT_NE(found, recorder.events.end()) << event;
    return static_cast<std::size_t>(found - recorder.events.begin());
  }

  host::LinuxFileSystem fileSystem_;
  TemporaryFolder folder_;
};

TEST_F(TreeWalkTest, MeetsEveryFolderBeforeAndAfterItsContents) {
  folder_.makeFolder("a/b");
  folder_.makeFile("a/b/file");
  folder_.makeFile("a/file");
  folder_.makeFolder("c");
  Recorder recorder(folder_.path());
  EXPECT_FALSE(walk(recorder));
  EXPECT_EQ(recorder.events.size(), 8U);
  EXPECT_LT(indexOf(recorder, "+a"), indexOf(recorder, "+a/b"));
  EXPECT_LT(indexOf(recorder, "+a/b"), indexOf(recorder, "+a/b/file"));
  EXPECT_LT(indexOf(recorder, "+a/b/file"), indexOf(recorder, "-a/b"));
  EXPECT_LT(indexOf(recorder, "-a/b"), indexOf(recorder, "-a"));
  EXPECT_LT(indexOf(recorder, "+a/file"), indexOf(recorder, "-a"));
  EXPECT_LT(indexOf(recorder, "+c"), indexOf(recorder, "-c"));
}

TEST_F(TreeWalkTest, AnEmptyFolderHasNothingToMeet) {
  Recorder recorder(folder_.path());
  EXPECT_FALSE(walk(recorder));
  EXPECT_TRUE(recorder.events.empty());
}

TEST_F(TreeWalkTest, AnErrorOfTheVisitorEndsIt) {
  folder_.makeFolder("a/b/c/d");
  Recorder recorder(folder_.path());
  recorder.failOn("c", Error("test", 5));
  EXPECT_EQ(walk(recorder), Error("test", 5));
  EXPECT_EQ(recorder.events, (std::vector<std::string>{"+a", "+a/b", "+a/b/c"}));
}

TEST_F(TreeWalkTest, TellsWhenSomethingIsNoFolder) {
  folder_.makeFile("file");
  Recorder recorder(folder_.path());
  recorder.descendEverywhere = true;
  EXPECT_FALSE(walk(recorder));
  EXPECT_EQ(recorder.events, (std::vector<std::string>{"+file", "!20file"}));
}

TEST_F(TreeWalkTest, DoesNotEnterALinkThatTookAFoldersPlace) {
  folder_.makeFolder("folder");
  const TemporaryFolder outside;
  outside.makeFile("file");
  Recorder recorder(folder_.path());
  recorder.onEnter = [&](TreeEntry& entry) {
    std::filesystem::remove(entry.path());
    std::filesystem::create_symlink(outside.path(), entry.path());
  };
  EXPECT_FALSE(walk(recorder));
  ASSERT_EQ(recorder.events.size(), 2U);
  EXPECT_EQ(recorder.events[0], "+folder");
  EXPECT_TRUE(recorder.events[1] == "!20folder" || recorder.events[1] == "!62folder") << recorder.events[1];
}

TEST_F(TreeWalkTest, ScansAFolderAgainWhenAsked) {
  folder_.makeFolder("a");
  folder_.makeFile("a/file");
  Recorder recorder(folder_.path());
  recorder.scans = 3;
  EXPECT_FALSE(walk(recorder));
  EXPECT_EQ(recorder.events, (std::vector<std::string>{"+a", "+a/file", "-a", "+a/file", "-a", "+a/file", "-a"}));
}

TEST_F(TreeWalkTest, MeetsEverythingOnceWithFewOpenFolders) {
  // Three folders in each folder, five levels: 363 folders, a file in each.
  const std::function<void(const std::string&, int)> fill = [&](const std::string& prefix, int levels) {
    for (const char* name : {"x", "y", "z"}) {
      folder_.makeFolder(prefix + name);
      folder_.makeFile(prefix + name + "/file", "");
      if (levels > 1) fill(prefix + name + "/", levels - 1);
    }
  };
  fill("", 5);
  Recorder unlimited(folder_.path());
  ASSERT_FALSE(walk(unlimited));
  EXPECT_EQ(unlimited.events.size(), 363U * 3);
  for (const std::size_t maximum : {0, 1, 2, 3, 4}) {
    Recorder limited(folder_.path());
    ASSERT_FALSE(walk(limited, maximum));
    EXPECT_EQ(limited.events, unlimited.events) << maximum;
  }
}

TEST_F(TreeWalkTest, WalksTreesThatNoPathReaches) {
  makeDeepTree(folder_.path(), 5000, "a folder with a long name", true);
  Recorder recorder(folder_.path());
  recorder.recording = false;
  EXPECT_FALSE(walk(recorder));
  EXPECT_EQ(recorder.count, 15'000U);
}

TEST_F(TreeWalkTest, EndsWhenTheWayBackLeadsElsewhere) {
  folder_.makeFolder("1/2/3/4/5");
  folder_.makeFolder("elsewhere");
  folder_.makeFile("elsewhere/file");
  Recorder recorder(folder_.path());
  bool moved = false;
  recorder.onEnter = [&](TreeEntry& entry) {
    if (std::string(entry.name()) != "5") return;
    // The handles of 1 and 2 are closed by now; 3 is found in another folder on the way back.
    std::filesystem::rename(folder_.path("1/2/3"), folder_.path("elsewhere/3"));
    moved = true;
  };
  const auto error = walk(recorder, 2);
  ASSERT_TRUE(moved);
  EXPECT_EQ(error, Error::posix(posix::kNoEntry));
  EXPECT_EQ(std::ranges::count(recorder.events, "-1/2"), 0);
}

}  // namespace
}  // namespace vantrell
