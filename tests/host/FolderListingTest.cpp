// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/posix/FolderListing.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::FolderListing;
using tests::TemporaryFolder;

struct Closing {
  void operator()(DIR* stream) const { closedir(stream); }
};
using Stream = std::unique_ptr<DIR, Closing>;

class FolderListingTest : public testing::TestWithParam<std::size_t> {
 protected:
  std::set<std::string> makeEntries(int count) {
    std::set<std::string> names;
    for (int index = 0; index < count; ++index) {
      names.insert("entry " + std::to_string(index));
      folder_.makeLink("entry " + std::to_string(index), "nowhere");
    }
    return names;
  }
  Stream open() const { return Stream(opendir(folder_.path().c_str())); }

  static std::vector<std::string> rest(FolderListing& listing, const Stream& stream) {
    std::vector<std::string> names;
    for (auto entry = listing.next(stream.get()).value(); entry; entry = listing.next(stream.get()).value())
      names.emplace_back(entry->name);
    return names;
  }

  TemporaryFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(BatchSizes, FolderListingTest, testing::Values(1, 2, 3, 7, 100, FolderListing::kBatchSize),
                         testing::PrintToStringParamName());

TEST_P(FolderListingTest, MeetsEveryEntryOnce) {
  const auto expected = makeEntries(130);
  FolderListing listing(GetParam());
  const auto stream = open();
  const auto names = rest(listing, stream);
  EXPECT_EQ(names.size(), expected.size());
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expected);
  EXPECT_FALSE(listing.next(stream.get()).value());
}

TEST_P(FolderListingTest, IsInTheSameOrderWhateverTheBatch) {
  makeEntries(130);
  FolderListing whole;
  FolderListing listing(GetParam());
  EXPECT_EQ(rest(listing, open()), rest(whole, open()));
}

TEST_P(FolderListingTest, TellsTypes) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  FolderListing listing(GetParam());
  const auto stream = open();
  for (int count = 0; count < 3; ++count) {
    const auto entry = listing.next(stream.get()).value();
    ASSERT_TRUE(entry);
    const int type = entry->name == "file" ? DT_REG : entry->name == "folder" ? DT_DIR : DT_LNK;
    EXPECT_THAT(entry->type, testing::AnyOf(type, DT_UNKNOWN)) << entry->name;
    EXPECT_EQ(entry->name.data()[entry->name.size()], '\0');
  }
}

TEST_P(FolderListingTest, AnotherOneGoesOnWhereItStood) {
  makeEntries(60);
  FolderListing whole;
  const auto names = rest(whole, open());
  for (const std::size_t stop : {0, 1, 2, 30, 59, 60}) {
    FolderListing listing(GetParam());
    const auto stream = open();
    for (std::size_t index = 0; index < stop; ++index) ASSERT_TRUE(listing.next(stream.get()).value());
    FolderListing later(GetParam());
    later.setPosition(listing.position());
    EXPECT_EQ(rest(later, open()), std::vector(names.begin() + static_cast<std::ptrdiff_t>(stop), names.end())) << stop;
  }
}

TEST_P(FolderListingTest, NothingIsMissedForWhatIsRemovedOnTheWay) {
  const auto expected = makeEntries(130);
  std::set<std::string> met;
  std::uint64_t position = 0;
  while (met.size() < expected.size()) {  // with another listing for every ten
    FolderListing listing(GetParam());
    const auto stream = open();
    listing.setPosition(position);
    for (int count = 0; count < 10; ++count) {
      const auto entry = listing.next(stream.get()).value();
      ASSERT_TRUE(entry);
      const std::string name(entry->name);
      EXPECT_TRUE(met.insert(name).second) << name;
      std::filesystem::remove(folder_.path(name));
    }
    position = listing.position();
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_P(FolderListingTest, EndsHoweverMuchIsMadeOnTheWay) {
  const auto expected = makeEntries(50);
  FolderListing listing(GetParam());
  const auto stream = open();
  std::set<std::string> met;
  int made = 0;
  for (auto entry = listing.next(stream.get()).value(); entry; entry = listing.next(stream.get()).value()) {
    EXPECT_TRUE(met.insert(std::string(entry->name)).second) << entry->name;
    folder_.makeLink("new " + std::to_string(made++), "nowhere");
    ASSERT_LT(made, 5000);
  }
  EXPECT_TRUE(std::ranges::includes(met, expected));
}

TEST_P(FolderListingTest, BeginsAnewAtTheStart) {
  makeEntries(20);
  FolderListing listing(GetParam());
  const auto stream = open();
  const auto names = rest(listing, stream);
  folder_.makeLink("new", "nowhere");
  listing.setPosition(0);
  EXPECT_EQ(rest(listing, stream).size(), names.size() + 1);
}

TEST_P(FolderListingTest, AFolderThatHasGoneOrIsEmptyIsAtItsEnd) {
  FolderListing listing(GetParam());
  EXPECT_FALSE(listing.next(open().get()).value());
  folder_.makeFolder("gone");
  const Stream stream(opendir(folder_.path("gone").c_str()));
  std::filesystem::remove(folder_.path("gone"));
  FolderListing gone(GetParam());
  EXPECT_FALSE(gone.next(stream.get()).value());
}

TEST_P(FolderListingTest, ListsNamesThatAreNotText) {
  const std::string name = "\xff\xfe\x80 \n\xc3(";
  folder_.makeLink(name, "nowhere");
  FolderListing listing(GetParam());
  EXPECT_EQ(rest(listing, open()), std::vector{name});
}

}  // namespace
}  // namespace vantrell
