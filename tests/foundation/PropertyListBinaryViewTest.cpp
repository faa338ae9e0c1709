// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstring>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "foundation/BinaryPropertyListView.h"
#include "tests/foundation/BinaryListMaker.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using tests::BinaryListMaker;
using tests::corruption;
using Node = BinaryPropertyListView::Node;

Data oneObject(Data object) {
  BinaryListMaker maker;
  maker.add(std::move(object));
  return maker.make();
}

std::optional<Number> numberOf(Data object) {
  const auto bytes = oneObject(std::move(object));
  const auto view = BinaryPropertyListView::fromData(bytes);
  return view ? view->root().asNumber() : std::nullopt;
}

TEST(PropertyListBinaryView, FindsTheEntriesOfADictionaryInPlace) {
  const Data uuid = {1, 2, 3, 4};
  const auto bytes = *binaryPropertyListFromValue(Dictionary{{"Vrs", "2.0"},
                                                             {"PID", 4711},
                                                             {"Parms", Array{1, "x", true}},
                                                             {"OUUID", uuid},
                                                             {"Time", Date{978307230, 500'000'000}}});
  const auto view = BinaryPropertyListView::fromData(bytes);
  ASSERT_TRUE(view) << corruption(view);
  const auto root = view->root();
  ASSERT_EQ(root.kind(), Node::Kind::Dictionary);
  EXPECT_EQ(root.count(), 5u);
  EXPECT_TRUE(root.find("Vrs")->isTextEqualTo("2.0"));
  EXPECT_FALSE(root.find("Vrs")->isTextEqualTo("2.1"));
  EXPECT_FALSE(root.find("Vrs")->isTextEqualTo("2.0."));
  EXPECT_EQ(root.find("PID")->asNumber(), Number(4711));
  EXPECT_EQ(root.find("Parms")->kind(), Node::Kind::Array);
  EXPECT_EQ(root.find("Parms")->count(), 3u);
  EXPECT_TRUE(root.find("Parms")->elementAt(1).isTextEqualTo("x"));
  EXPECT_EQ(root.find("Parms")->elementAt(2).asNumber()->kind(), Number::Kind::Boolean);
  EXPECT_EQ(root.find("Time")->asDate(), (Date{978307230, 500'000'000}));
  const auto data = root.find("OUUID")->asData();
  ASSERT_TRUE(data);
  EXPECT_EQ(Data(data->begin(), data->end()), uuid);
  EXPECT_GE(data->data(), bytes.data());
  EXPECT_LT(data->data(), bytes.data() + bytes.size());
  EXPECT_FALSE(root.find("vrs"));
  EXPECT_FALSE(root.find(""));
}

TEST(PropertyListBinaryView, AccessorsOfOtherKindsGiveNothing) {
  const auto bytes = *binaryPropertyListFromValue(Array{1, "a"});
  const auto root = BinaryPropertyListView::fromData(bytes)->root();
  EXPECT_FALSE(root.asNumber() || root.asDate() || root.asData() || root.asText() || root.asUid() || root.find("a"));
  EXPECT_FALSE(root.isTextEqualTo(""));
  EXPECT_EQ(root.elementAt(0).count(), 0u);
  EXPECT_FALSE(root.elementAt(0).asText());
  EXPECT_FALSE(root.elementAt(1).asNumber());
}

TEST(PropertyListBinaryView, NodesOutliveAMovedAndAnEndedView) {
  const auto bytes = *binaryPropertyListFromValue(Dictionary{{"key", Array{"element"}}});
  auto first = std::make_unique<BinaryPropertyListView>(*BinaryPropertyListView::fromData(bytes));
  const Node root = first->root();
  auto second = std::make_unique<BinaryPropertyListView>(std::move(*first));
  first.reset();
  const Node array = *second->root().find("key");
  second.reset();
  EXPECT_TRUE(root.find("key")->elementAt(0).isTextEqualTo("element"));
  EXPECT_TRUE(array.elementAt(0).isTextEqualTo("element"));
}

TEST(PropertyListBinaryView, TheLastOfEqualKeysCounts) {
  BinaryListMaker maker;
  maker.addDictionary({1, 2, 3, 4});
  maker.addText("key");
  maker.add({0x63, 0, 'k', 0, 'e', 0, 'y'});
  maker.addText("first");
  maker.addText("second");
  const auto bytes = maker.make();
  const auto view = BinaryPropertyListView::fromData(bytes);
  ASSERT_TRUE(view) << corruption(view);
  EXPECT_TRUE(view->root().find("key")->isTextEqualTo("second"));
  const auto list = propertyListFromData(bytes);
  ASSERT_TRUE(list);
  EXPECT_EQ(list->root, Value(Dictionary{{"key", "second"}}));
}

TEST(PropertyListBinaryView, Utf16TextIsComparedUnitByUnit) {
  const auto bytes = oneObject({0x62, 0, 'a', 0, 'b'});
  const auto root = BinaryPropertyListView::fromData(bytes)->root();
  EXPECT_TRUE(root.isTextEqualTo("ab"));
  EXPECT_FALSE(root.isTextEqualTo("ac"));
  EXPECT_FALSE(root.isTextEqualTo("a"));
  const auto other = oneObject({0x62, 1, 'a', 0, 'b'});
  EXPECT_FALSE(BinaryPropertyListView::fromData(other)->root().isTextEqualTo("ab"));
}

TEST(PropertyListBinaryView, ShortIntegersAreUnsignedAndLongOnesSigned) {
  EXPECT_EQ(numberOf({0x10, 0xFF}), Number(255));
  EXPECT_EQ(numberOf({0x11, 0xFF, 0xFE}), Number(65534));
  EXPECT_EQ(numberOf({0x12, 0xFF, 0xFF, 0xFF, 0xFF}), Number(4294967295));
  EXPECT_EQ(numberOf({0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}), Number(-2));
  EXPECT_EQ(numberOf({0x13, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}),
            Number(std::numeric_limits<std::int64_t>::max()));
}

TEST(PropertyListBinaryView, IntegersOf16BytesHoldNoMoreThan64Bits) {
  const auto wide = [](std::uint64_t high, std::uint64_t low) {
    Data object = {0x14};
    BinaryListMaker::appendNumber(object, high, 8);
    BinaryListMaker::appendNumber(object, low, 8);
    return object;
  };
  constexpr auto kAll = ~std::uint64_t{0};
  EXPECT_EQ(numberOf(wide(0, 5)), Number(5));
  EXPECT_EQ(numberOf(wide(0, 5))->kind(), Number::Kind::Signed);
  EXPECT_EQ(numberOf(wide(0, kAll)), Number(kAll));
  EXPECT_EQ(numberOf(wide(0, kAll))->kind(), Number::Kind::Unsigned);
  EXPECT_EQ(numberOf(wide(kAll, kAll)), Number(-1));
  EXPECT_EQ(numberOf(wide(kAll, kAll - 41)), Number(-42));
  EXPECT_EQ(numberOf(wide(kAll, 5)), std::nullopt);
  EXPECT_EQ(numberOf(wide(1, 0)), std::nullopt);
  EXPECT_EQ(numberOf(wide(std::uint64_t{1} << 63, 0)), std::nullopt);
}

TEST(PropertyListBinaryView, RealsAndBooleansAreNumbers) {
  EXPECT_EQ(numberOf({0x22, 0x3F, 0xC0, 0, 0}), Number(1.5));
  EXPECT_EQ(numberOf({0x23, 0xBF, 0xF8, 0, 0, 0, 0, 0, 0}), Number(-1.5));
  EXPECT_EQ(numberOf({0x22, 0x3F, 0xC0, 0, 0})->kind(), Number::Kind::Real);
  EXPECT_EQ(numberOf({0x08})->kind(), Number::Kind::Boolean);
  EXPECT_EQ(numberOf({0x08}), Number(false));
  EXPECT_EQ(numberOf({0x09}), Number(true));
}

TEST(PropertyListBinaryView, UnknownMarkersAreRefused) {
  for (const int marker : {0x01, 0x07, 0x0A, 0x0F, 0x15, 0x1F, 0x20, 0x21, 0x24, 0x30, 0x32,
                           0x34, 0x70, 0x88, 0x8F, 0x90, 0xB0, 0xC0, 0xE0, 0xF0, 0xFF}) {
    Data object(40, 0);
    object[0] = static_cast<std::uint8_t>(marker);
    EXPECT_FALSE(BinaryPropertyListView::fromData(oneObject(object))) << marker;
  }
}

TEST(PropertyListBinaryView, UidsHaveUpTo32Bits) {
  const auto uid = [](Data object) -> std::optional<std::uint32_t> {
    const auto bytes = oneObject(std::move(object));
    const auto view = BinaryPropertyListView::fromData(bytes);
    return view ? view->root().asUid() : std::nullopt;
  };
  EXPECT_EQ(uid({0x80, 7}), 7u);
  EXPECT_EQ(uid({0x82, 1, 0, 0}), 65536u);
  EXPECT_EQ(uid({0x83, 0xFF, 0xFF, 0xFF, 0xFF}), 0xFFFFFFFFu);
  EXPECT_EQ(uid({0x87, 0, 0, 0, 0, 0, 0, 0, 9}), 9u);
  EXPECT_EQ(uid({0x84, 1, 0, 0, 0, 0}), std::nullopt);
}

TEST(PropertyListBinaryView, TextMarkedAsAsciiMustBe) {
  EXPECT_EQ(corruption(BinaryPropertyListView::fromData(oneObject({0x51, 0xE9}))), "a text that is not ASCII");
}

TEST(PropertyListBinaryView, AnyVersionDigitIsAccepted) {
  BinaryListMaker maker;
  maker.add({0x09});
  for (const std::string_view header : {"bplist00", "bplist01", "bplist09"}) {
    maker.header = header;
    EXPECT_TRUE(BinaryPropertyListView::fromData(maker.make())) << header;
  }
  for (const std::string_view header : {"bplist15", "bplist10", "bplist0x", "bplist0 ", "Bplist00"}) {
    maker.header = header;
    EXPECT_FALSE(BinaryPropertyListView::fromData(maker.make())) << header;
  }
}

TEST(PropertyListBinaryView, AllSizesOfOffsetsAndReferencesAreRead) {
  for (unsigned offsetSize = 1; offsetSize <= 8; ++offsetSize) {
    for (unsigned referenceSize = 1; referenceSize <= 8; ++referenceSize) {
      BinaryListMaker maker;
      maker.offsetSize = offsetSize;
      maker.referenceSize = referenceSize;
      maker.addArray({1, 2, 1});
      maker.addText("a");
      maker.addText("b");
      const auto list = propertyListFromData(maker.make());
      ASSERT_TRUE(list) << offsetSize << " " << referenceSize;
      EXPECT_EQ(list->root, Value(Array{"a", "b", "a"}));
    }
  }
}

TEST(PropertyListBinaryView, ObjectsOutOfReachNeedNotBeSound) {
  BinaryListMaker maker;
  maker.addText("root");
  maker.add({0xFF});
  maker.addArray({2});
  maker.add({0x5F, 0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
  const auto bytes = maker.make();
  const auto view = BinaryPropertyListView::fromData(bytes);
  ASSERT_TRUE(view);
  EXPECT_TRUE(view->root().isTextEqualTo("root"));
}

TEST(PropertyListBinaryView, TheRootMayBeAnyObject) {
  BinaryListMaker maker;
  maker.addText("first");
  maker.addText("second");
  maker.root = 1;
  EXPECT_EQ(propertyListFromData(maker.make())->root, Value("second"));
}

TEST(PropertyListBinaryView, ReadsListsOfMoreThan256Objects) {
  Array array;
  for (int i = 0; i < 1000; ++i) array.emplace_back(i);
  const auto bytes = *binaryPropertyListFromValue(array);
  const auto view = BinaryPropertyListView::fromData(bytes);
  ASSERT_TRUE(view) << corruption(view);
  for (std::size_t i = 0; i < 1000; ++i) EXPECT_EQ(view->root().elementAt(i).asNumber(), Number(i));
}

}  // namespace
}  // namespace vantrell
