// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>

#include <gtest/gtest.h>

#include "foundation/BinaryPropertyListView.h"
#include "foundation/PropertyList.h"
#include "tests/foundation/BinaryListMaker.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using tests::BinaryListMaker;
using tests::corruption;

// Both ways to read it agree that it is corrupt, and why.
void expectCorrupt(const Data& bytes, std::string_view reason) {
  EXPECT_EQ(corruption(propertyListFromData(bytes)), reason);
  EXPECT_EQ(corruption(BinaryPropertyListView::fromData(bytes)), reason);
}

constexpr char kCycle[] = "a container that contains itself";
constexpr char kOutside[] = "an object that is malformed or lies outside the list";
constexpr char kTrailer[] = "header or trailer malformed";

TEST(PropertyListBinaryHostile, ContainersThatContainThemselvesAreRefused) {
  BinaryListMaker self;
  self.addArray({0});
  expectCorrupt(self.make(), kCycle);

  BinaryListMaker mutual;
  mutual.addArray({1});
  mutual.addArray({2});
  mutual.addArray({1});
  expectCorrupt(mutual.make(), kCycle);

  BinaryListMaker throughDictionary;
  throughDictionary.addDictionary({1, 2});
  throughDictionary.addText("key");
  throughDictionary.addArray({1, 0});
  expectCorrupt(throughDictionary.make(), kCycle);

  BinaryListMaker large;  // more objects than are checked without allocation
  for (std::uint64_t i = 0; i < 300; ++i) large.addArray({299});
  expectCorrupt(large.make(), kCycle);
}

TEST(PropertyListBinaryHostile, TheSameArrayTwiceIsNoCycle) {
  BinaryListMaker maker;
  maker.addArray({1, 1});
  maker.addArray({2, 2});
  maker.addText("x");
  const auto list = propertyListFromData(maker.make());
  ASSERT_TRUE(list);
  EXPECT_EQ(list->root, Value(Array{Array{"x", "x"}, Array{"x", "x"}}));
}

TEST(PropertyListBinaryHostile, ADepthBombIsRefused) {
  BinaryListMaker maker;
  maker.referenceSize = 4;
  for (std::uint64_t i = 1; i < 200'000; ++i) maker.addArray({i});
  maker.addArray({});
  expectCorrupt(maker.make(), "nested too deeply");
}

TEST(PropertyListBinaryHostile, DepthIsCountedAlongTheLongestPathHoweverItIsMet) {
  // 0 holds first the end of a chain, then its beginning, so the chain's objects are known before they are deep.
  constexpr std::uint64_t kChain = 20;
  BinaryListMaker maker;
  maker.addArray({kChain, 10, 1});
  for (std::uint64_t i = 1; i < kChain; ++i) maker.addArray({i + 1});
  maker.addArray({});
  const auto bytes = maker.make();
  EXPECT_TRUE(propertyListFromData(bytes, {.maximumDepth = kChain + 1}));
  EXPECT_TRUE(BinaryPropertyListView::fromData(bytes, {.maximumDepth = kChain + 1}));
  for (std::size_t depth = 0; depth <= kChain; ++depth) {
    EXPECT_EQ(corruption(propertyListFromData(bytes, {.maximumDepth = depth})), "nested too deeply");
  }
}

TEST(PropertyListBinaryHostile, NestingIsReadUpToTheDeepest) {
  const auto bytes = binaryPropertyListFromValue(tests::nestedArrays(kDeepestPropertyList));
  ASSERT_TRUE(bytes);
  EXPECT_TRUE(propertyListFromData(*bytes));
  EXPECT_TRUE(propertyListFromData(*bytes, {.maximumDepth = 1'000'000}));
  EXPECT_FALSE(propertyListFromData(*bytes, {.maximumDepth = kDeepestPropertyList - 1}));
}

TEST(PropertyListBinaryHostile, DoublingArraysAreCheckedInLinearTimeAndNotMade) {
  BinaryListMaker maker;
  for (std::uint64_t i = 1; i <= 60; ++i) maker.addArray({i, i});
  maker.addText("bomb");
  const auto bytes = maker.make();
  EXPECT_TRUE(BinaryPropertyListView::fromData(bytes));
  EXPECT_EQ(corruption(propertyListFromData(bytes)), "shared values that would take too much memory");
  EXPECT_EQ(corruption(propertyListFromData(bytes, {.maximumObjects = 1000})), "too many values");
}

TEST(PropertyListBinaryHostile, DoublingEmptyArraysAreNotMade) {
  BinaryListMaker maker;
  for (std::uint64_t i = 1; i <= 60; ++i) maker.addArray({i, i});
  maker.addArray({});
  EXPECT_FALSE(propertyListFromData(maker.make()));
}

TEST(PropertyListBinaryHostile, ASharedLongTextIsNotCopiedWithoutBound) {
  BinaryListMaker maker;
  maker.addArray(std::vector<std::uint64_t>(20'000, 1));
  maker.addText(std::string(10'000, 'x'));
  const auto bytes = maker.make();
  EXPECT_EQ(corruption(propertyListFromData(bytes)), "shared values that would take too much memory");
  EXPECT_TRUE(BinaryPropertyListView::fromData(bytes));
}

TEST(PropertyListBinaryHostile, ASharedLongKeyIsNotCopiedWithoutBound) {
  BinaryListMaker maker;
  std::vector<std::uint64_t> references(20'000, 1);
  references.resize(40'000, 2);
  maker.addDictionary(references);
  maker.addText(std::string(10'000, 'k'));
  maker.add({0x09});
  EXPECT_EQ(corruption(propertyListFromData(maker.make())), "shared values that would take too much memory");
}

TEST(PropertyListBinaryHostile, OverlaidArraysAreNotScannedAgainAndAgain) {
  // 30,000 objects that are all the same 30,000 references: laid over one another, they would take 9 * 10^8 steps.
  constexpr std::uint64_t kCount = 30'000;
  Data bytes(8);
  std::copy_n("bplist00", 8, bytes.begin());
  Data leaves;
  BinaryListMaker::appendMarker(leaves, 0xA0, kCount);
  for (std::uint64_t i = 0; i < kCount; ++i) BinaryListMaker::appendNumber(leaves, kCount + 1, 2);
  const std::uint64_t sharedOffset = bytes.size();
  bytes.insert(bytes.end(), leaves.begin(), leaves.end());
  const std::uint64_t rootOffset = bytes.size();
  BinaryListMaker::appendMarker(bytes, 0xA0, kCount);
  for (std::uint64_t i = 0; i < kCount; ++i) BinaryListMaker::appendNumber(bytes, i, 2);
  const std::uint64_t leafOffset = bytes.size();
  bytes.push_back(0x09);
  const std::uint64_t table = bytes.size();
  for (std::uint64_t i = 0; i < kCount; ++i) BinaryListMaker::appendNumber(bytes, sharedOffset, 4);
  BinaryListMaker::appendNumber(bytes, rootOffset, 4);
  BinaryListMaker::appendNumber(bytes, leafOffset, 4);
  BinaryListMaker().appendTrailer(bytes, kCount + 2, kCount, table);
  expectCorrupt(bytes, "objects that overlap");
}

TEST(PropertyListBinaryHostile, ReferencesToNoObjectAreRefused) {
  BinaryListMaker maker;
  maker.addArray({1});
  expectCorrupt(maker.make(), "a reference to no object");
  BinaryListMaker top;
  top.addText("x");
  top.root = 1;
  expectCorrupt(top.make(), kTrailer);
}

TEST(PropertyListBinaryHostile, KeysThatAreNoTextsAreRefused) {
  for (const Data& key : {Data{0x10, 1}, Data{0x41, 1}, Data{0xA0}, Data{0xD0}, Data{0x09}}) {
    BinaryListMaker maker;
    maker.addDictionary({1, 2});
    maker.add(key);
    maker.addText("value");
    expectCorrupt(maker.make(), "a key that is no text");
  }
  BinaryListMaker seenBefore;
  seenBefore.addArray({1, 2});
  seenBefore.add({0x10, 1});
  seenBefore.addDictionary({1, 1});
  expectCorrupt(seenBefore.make(), "a key that is no text");
}

TEST(PropertyListBinaryHostile, HugeCountsAreRefused) {
  for (const int kind : {0x4F, 0x5F, 0x6F, 0xAF, 0xDF}) {
    for (const std::uint64_t count :
         {std::uint64_t{100}, std::uint64_t{1} << 31, std::uint64_t{1} << 60, std::uint64_t{1} << 62,
          std::uint64_t{1} << 63, ~std::uint64_t{0}, ~std::uint64_t{0} / 2, ~std::uint64_t{0} / 4 + 2}) {
      BinaryListMaker maker;
      Data object = {static_cast<std::uint8_t>(kind), 0x13};
      BinaryListMaker::appendNumber(object, count, 8);
      maker.add(object);
      expectCorrupt(maker.make(), kOutside);
    }
  }
}

TEST(PropertyListBinaryHostile, CountsThatAreNoShortIntegersAreRefused) {
  for (const int marker : {0x08, 0x14, 0x22, 0x33, 0x50}) {
    BinaryListMaker maker;
    Data object = {0x5F, static_cast<std::uint8_t>(marker), 0, 0, 0, 0, 0, 0, 0, 1};
    object.resize(30, 'x');
    maker.add(object);
    expectCorrupt(maker.make(), kOutside);
  }
}

TEST(PropertyListBinaryHostile, ObjectsMustNotReachIntoTheOffsetTable) {
  BinaryListMaker maker;
  maker.add({0x52, 'a'});
  expectCorrupt(maker.make(), kOutside);
  BinaryListMaker marker;
  marker.add({0x5F});
  expectCorrupt(marker.make(), kOutside);
  BinaryListMaker number;
  number.add({0x13, 0, 0, 0});
  expectCorrupt(number.make(), kOutside);
}

TEST(PropertyListBinaryHostile, OffsetsOutsideTheObjectsAreRefused) {
  for (const std::uint64_t offset : {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{10}, std::uint64_t{18},
                                     std::uint64_t{1000}, std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
    Data bytes(8);
    std::copy_n("bplist00", 8, bytes.begin());
    bytes.insert(bytes.end(), {0x51, 'x'});
    BinaryListMaker::appendNumber(bytes, offset, 8);
    BinaryListMaker maker;
    maker.offsetSize = 8;
    maker.appendTrailer(bytes, 1, 0, 10);
    expectCorrupt(bytes, kOutside);
  }
}

TEST(PropertyListBinaryHostile, TrailersThatDoNotHoldAreRefused) {
  const auto list = [](std::uint64_t count, std::uint64_t top, std::uint64_t table, unsigned offsetSize,
                       unsigned referenceSize) {
    Data bytes(8);
    std::copy_n("bplist00", 8, bytes.begin());
    bytes.insert(bytes.end(), {0x51, 'x', 8});
    BinaryListMaker maker;
    maker.offsetSize = offsetSize;
    maker.referenceSize = referenceSize;
    maker.appendTrailer(bytes, count, top, table);
    return bytes;
  };
  ASSERT_TRUE(propertyListFromData(list(1, 0, 10, 1, 1)));
  constexpr auto kHuge = ~std::uint64_t{0};
  for (const auto count : {std::uint64_t{0}, std::uint64_t{2}, std::uint64_t{1} << 60, std::uint64_t{1} << 61, kHuge}) {
    expectCorrupt(list(count, 0, 10, 1, 1), kTrailer);
    expectCorrupt(list(count, 0, 10, 8, 8), kTrailer);
  }
  for (const auto top : {std::uint64_t{1}, kHuge}) expectCorrupt(list(1, top, 10, 1, 1), kTrailer);
  for (const auto table :
       {std::uint64_t{0}, std::uint64_t{8}, std::uint64_t{11}, std::uint64_t{43}, kHuge, kHuge - 7}) {
    expectCorrupt(list(1, 0, table, 1, 1), kTrailer);
  }
  for (const unsigned size : {0u, 9u, 255u}) {
    expectCorrupt(list(1, 0, 10, size, 1), kTrailer);
    expectCorrupt(list(1, 0, 10, 1, size), kTrailer);
  }
}

TEST(PropertyListBinaryHostile, TruncatedAnywhereItIsRefused) {
  const auto whole = *binaryPropertyListFromValue(tests::sampleValue());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const auto part = DataView(whole).first(size);
    EXPECT_FALSE(BinaryPropertyListView::fromData(part)) << size;
    // Cut off within the first word, it is a text of the older form.
    if (size >= 6) {
      EXPECT_FALSE(propertyListFromData(part)) << size;
    }
  }
}

TEST(PropertyListBinaryHostile, EveryChangedByteGivesAnErrorOrAListThatCanBeWrittenAgain) {
  const auto sample = *binaryPropertyListFromValue(Dictionary{{"a", Array{1, 2.5, "text", "gr\u00fc\u00df"}},
                                                              {"b", Date{1, 0}},
                                                              {"c", Data{1, 2}},
                                                              {"d", Dictionary{{"e", -1}}}});
  for (std::size_t at = 0; at < sample.size(); ++at) {
    for (int change = 1; change < 256; ++change) {
      Data changed = sample;
      changed[at] = static_cast<std::uint8_t>(changed[at] ^ change);
      const auto list = propertyListFromData(changed);
      if (!list) {
        EXPECT_NE(corruption(list), "another error");
        continue;
      }
      const auto again = binaryPropertyListFromValue(list->root);
      // Null can be read and not written.
      if (!again) {
        EXPECT_TRUE(tests::isUnwritable(again));
        continue;
      }
      ASSERT_TRUE(propertyListFromData(*again)) << at << " " << change;
    }
  }
}

TEST(PropertyListBinaryHostile, TheSizeIsLimited) {
  const auto bytes = *binaryPropertyListFromValue("a text");
  EXPECT_TRUE(propertyListFromData(bytes, {.maximumSize = bytes.size()}));
  EXPECT_EQ(corruption(propertyListFromData(bytes, {.maximumSize = bytes.size() - 1})), "larger than allowed");
  EXPECT_EQ(corruption(BinaryPropertyListView::fromData(bytes, {.maximumSize = bytes.size() - 1})),
            "larger than allowed");
}

TEST(PropertyListBinaryHostile, TheCountOfValuesIsLimited) {
  const auto bytes = *binaryPropertyListFromValue(Array{1, 1, 1});
  EXPECT_TRUE(propertyListFromData(bytes, {.maximumObjects = 4}));
  EXPECT_EQ(corruption(propertyListFromData(bytes, {.maximumObjects = 3})), "too many values");
}

}  // namespace
}  // namespace vantrell
