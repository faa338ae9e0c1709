// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <filesystem>

#include "catalogue/ErrorModel.h"
#include "tests/support/DeepTree.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/treewalk/SearchFixture.h"

namespace vantrell {
namespace {

using namespace tests;

template <class Base>
class SizeInspections : public Searches<Base> {
 protected:
  ErrorOrNil inspect(const Array& arguments) {
    this->looks_ = 0;
    return this->operations_.inspectStoragesize(arguments,
                                                [this] { return ++this->looks_ > this->looksUntilCancelled_; });
  }
  ErrorOrNil sizeOf(std::uint64_t size) {
    return Error(privilegedOperationErrorDomain(), 0, Dictionary{{"Size", size}});
  }
  /// What lstat says of these, added up.
  std::uint64_t sum(const Texts& names) {
    std::uint64_t total = 0;
    for (const auto& name : names)
      total += this->fileSystem_.status(this->folder_.path(name), host::FollowLinks::No).value().size;
    return total;
  }
};

using InspectStoragesize = SizeInspections<WalkFixture>;
using InspectStoragesizeAsRoot = SizeInspections<WalkFixtureAsRoot>;
using InspectStoragesizeConcurrent = SizeInspections<WalkFixture>;

TEST_F(InspectStoragesize, AnEmptyFolderHasTheSizeZero) {
  EXPECT_EQ(inspect({top()}), sizeOf(0));
  EXPECT_EQ(inspect({top()})->userInfo().find("Size")->asNumber()->kind(), Number::Kind::Unsigned);
}

TEST_F(InspectStoragesize, AddsUpTheLogicalSizesOfAllObjects) {
  folder_.makeFolder("a/b");
  folder_.makeFile("1", "12345");
  folder_.makeFile("a/2", "1234567");
  folder_.makeFile("a/b/sparse");
  std::filesystem::resize_file(folder_.path("a/b/sparse"), std::uintmax_t{1} << 40);
  folder_.makeLink("a/link", "../1");
  std::filesystem::create_hard_link(folder_.path("1"), folder_.path("a/hard"));
  const Texts names{"a", "a/b", "1", "a/2", "a/b/sparse", "a/link", "a/hard"};
  EXPECT_EQ(inspect({top()}), sizeOf(sum(names)));
  EXPECT_GT(sum(names), (std::uint64_t{1} << 40) + 5 + 5 + 7);
}

TEST_F(InspectStoragesize, DoesNotFollowLinksToFolders) {
  folder_.makeFolder("elsewhere");
  folder_.makeFile("elsewhere/large", std::string(10000, 'x'));
  folder_.makeFolder("tree");
  folder_.makeLink("tree/link", "../elsewhere");
  EXPECT_EQ(inspect({folder_.path("tree")}), sizeOf(sum({"tree/link"})));
  EXPECT_EQ(inspect({folder_.path("tree/link")}), sizeOf(10000)) << "but one that is the folder given";
}

TEST_F(InspectStoragesize, RefusesWhatIsNoFolder) {
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(inspect({""}), Error::posix(22));
  EXPECT_EQ(inspect({}), Error::posix(22));
  EXPECT_EQ(inspect({5}), Error::posix(22));
  EXPECT_EQ(inspect({folder_.path("missing")}), Error::posix(2));
  EXPECT_EQ(inspect({file}), Error::posix(20));
}

TEST_F(InspectStoragesize, LooksForCancellationWithEveryHundredthObject) {
  makeFiles(99);
  EXPECT_EQ(inspect({top()}), sizeOf(0));
  EXPECT_EQ(looks_, 0);
  makeFiles(250);
  EXPECT_EQ(inspect({top()}), sizeOf(0));
  EXPECT_EQ(looks_, 2);
  looksUntilCancelled_ = 1;
  EXPECT_EQ(inspect({top()}), Error::posix(89));
  EXPECT_EQ(looks_, 2);
  EXPECT_EQ(operations_.inspectStoragesize({top()}, nullptr), sizeOf(0));
}

TEST_F(InspectStoragesize, MeasuresTreesFarDeeperThanAnEnumeratorGoes) {
  makeDeepTree(folder_.path(), 1500);
  const TemporaryFolder empty;
  const auto innermost = fileSystem_.status(empty.path(), host::FollowLinks::No)->size;
  EXPECT_EQ(inspect({top()}), sizeOf(1499 * sum({"d"}) + innermost));
}

TEST_F(InspectStoragesizeAsRoot, CrossesMountPointsAndPassesOverWhatItCannotRead) {
  for (const char* name : {"mount", "closed"}) folder_.makeFolder(name);
  folder_.makeFile("closed/hidden", "12345");
  folder_.makeFile("mount/below", "123");
  const MountedFileSystem other(folder_.path("mount"));
  folder_.makeFile("mount/inside", "1234567");
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0711), 0);
  EXPECT_EQ(inspect({top()}), sizeOf(sum({"mount", "closed"}) + 5 + 7));
  const Unprivileged nobody;
  EXPECT_EQ(inspect({top()}), sizeOf(sum({"mount", "closed"}) + 7));
}

TEST_F(InspectStoragesizeConcurrent, TwoThreadsAddUpToTheSame) {
  std::uint64_t expected = 0;
  for (int i = 0; i < 100; ++i) {
    const auto name = std::to_string(i % 10) + "/" + std::to_string(i);
    folder_.makeFolder(name);
    for (int j = 0; j < 30; ++j) folder_.makeFile(name + "/" + std::to_string(j), std::string(j, 'x'));
    expected += 30 * 29 / 2;
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(top())) {
    if (entry.is_directory()) expected += fileSystem_.status(entry.path().string(), host::FollowLinks::No).value().size;
  }
  for (int i = 0; i < 10; ++i) EXPECT_EQ(inspect({top()}), sizeOf(expected));
  EXPECT_EQ(looks_, (3000 + 100 + 10) / 100);
}

TEST_F(InspectStoragesizeConcurrent, BothThreadsEndWhenCancelled) {
  for (int i = 0; i < 100; ++i) {
    folder_.makeFolder(std::to_string(i));
    makeFiles(30, std::to_string(i) + "/");
  }
  looksUntilCancelled_ = 10;
  EXPECT_EQ(inspect({top()}), Error::posix(89));
  EXPECT_EQ(looks_, 11);
}

}  // namespace
}  // namespace vantrell
