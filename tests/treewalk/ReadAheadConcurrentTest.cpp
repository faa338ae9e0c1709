// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <random>

#include "tests/support/DeepTree.h"
#include "tests/treewalk/WalkFixture.h"
#include "treewalk/ReadAheadEnumerator.h"

namespace vantrell {
namespace {

using namespace tests;

class ReadAheadConcurrent : public WalkFixture {
 protected:
  /// A tree of several thousand objects, with long names and depths that meet the limits.
  void makeTree(unsigned seed) {
    std::mt19937 random(seed);
    Texts folders{"."};
    for (int i = 0; i < 200; ++i) {
      const auto& parent = folders[random() % folders.size()];
      const std::string name = "f" + std::to_string(i) + std::string(random() % 8 == 0 ? 200 : random() % 20, 'n');
      if (parent.size() + name.size() > 3000) continue;
      folders.push_back(parent + "/" + name);
      folder_.makeFolder(folders.back());
      for (auto j = random() % 25; j > 0; --j) folder_.makeFile(folders.back() + "/" + std::to_string(j), "x");
    }
    folder_.makeFolder("a/" + std::string(255, 'z') + "/inner");
    const auto deep = folder_.makeFolder("deep " + std::to_string(seed));
    makeDeepTree(deep, 510);
  }

  struct Met {
    std::string path;
    std::string name;
    bool isEntered;
    bool isPathFaithful;
    EntryRefusal refusal;
    std::uint64_t inode;
    bool operator==(const Met&) const = default;
  };

  /// What a walk hands out, skipping with one object in `skipping` (0: never).
  template <class Walk>
  std::vector<Met> met(Walk& walk, unsigned skipping) {
    std::mt19937 random(7);
    std::vector<Met> result;
    while (const auto* object = walk.next()) {
      const auto status = object->status();
      result.push_back({std::string(object->relativePath()), std::string(object->name()), object->isEntered(),
                        object->isPathFaithful(), object->refusal(), status ? status->inode : 0});
      if (skipping != 0 && random() % skipping == 0) walk.skipDescendents();
    }
    return result;
  }

  std::unique_ptr<ReadAheadEnumerator> readAhead() { return std::make_unique<ReadAheadEnumerator>(this->walk(), log_); }
};

TEST_F(ReadAheadConcurrent, HandsOutTheSameInTheSameOrderAndLogsTheSame) {
  for (const unsigned seed : {1U, 2U}) {
    makeTree(seed);
    for (const unsigned skipping : {0U, 100U, 20U, 3U}) {
      messages_.clear();
      const auto expected = met(*walk(), skipping);
      const auto expectedMessages = messages_.messages();
      messages_.clear();
      const auto walk = readAhead();
      EXPECT_TRUE(met(*walk, skipping) == expected) << seed << " " << skipping;
      EXPECT_EQ(messages_.messages(), expectedMessages);
      EXPECT_EQ(walk->next(), nullptr);
      EXPECT_EQ(walk->next(), nullptr);
    }
  }
}

TEST_F(ReadAheadConcurrent, AFastCallerAndASlowOneGetTheSame) {
  makeTree(3);
  const auto expected = walk()->allObjects();
  for (const int pause : {0, 1}) {
    const auto walk = readAhead();
    Texts paths;
    while (const auto* object = walk->next()) {
      paths.emplace_back(object->relativePath());
      if (pause && paths.size() % 64 == 0) usleep(500);
    }
    EXPECT_EQ(paths, expected);
  }
}

TEST_F(ReadAheadConcurrent, CanBeLeftAtAnyTime) {
  makeTree(4);
  for (const int objects : {0, 1, 100, 300, 1000}) {
    const auto walk = readAhead();
    for (int i = 0; i < objects; ++i) ASSERT_NE(walk->next(), nullptr);
  }
}

TEST_F(ReadAheadConcurrent, ASmallTreeIsReadInOneGo) {
  EXPECT_EQ(readAhead()->next(), nullptr);
  folder_.makeFile("file");
  const auto walk = readAhead();
  EXPECT_EQ(walk->next()->relativePath(), "file");
  EXPECT_EQ(walk->next(), nullptr);
  EXPECT_EQ(walk->next(), nullptr);
}

TEST_F(ReadAheadConcurrent, EndsWhenTheBaseIsSkipped) {
  for (int i = 0; i < 2000; ++i) folder_.makeFile(std::to_string(i), "");
  const auto walk = readAhead();
  for (int i = 0; i < 1000; ++i) ASSERT_NE(walk->next(), nullptr);
  walk->skipDescendents();
  EXPECT_EQ(walk->next(), nullptr);
  walk->skipDescendents();
  EXPECT_EQ(walk->next(), nullptr);
}

}  // namespace
}  // namespace vantrell
