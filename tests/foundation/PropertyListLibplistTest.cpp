// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// libplist as a second opinion on both formats.

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/PropertyListSamples.h"

#if __has_include(<plist/plist.h>)

#include <cstdlib>
#include <memory>

#include <plist/plist.h>

namespace vantrell {
namespace {

struct NodeDeleter {
  void operator()(plist_t node) const { plist_free(node); }
};
using NodePointer = std::unique_ptr<void, NodeDeleter>;

struct FreeDeleter {
  void operator()(char* bytes) const { std::free(bytes); }
};
using BytesPointer = std::unique_ptr<char, FreeDeleter>;

NodePointer parsed(const Data& list) {
  plist_t node = nullptr;
  plist_from_memory(reinterpret_cast<const char*>(list.data()), static_cast<std::uint32_t>(list.size()), &node);
  return NodePointer(node);
}

Data takeBytes(char* bytes, std::uint32_t size) {
  const BytesPointer owned(bytes);
  return {bytes, bytes + size};
}

Data binaryOf(plist_t node) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(node, &bytes, &size);
  return takeBytes(bytes, size);
}

Data xmlOf(plist_t node) {
  char* bytes = nullptr;
  std::uint32_t size = 0;
  plist_to_xml(node, &bytes, &size);
  return takeBytes(bytes, size);
}

std::string reencoded(const Data& list, Data (*encode)(plist_t), const Value& expected) {
  const auto node = parsed(list);
  if (!node) return "not parsed";
  const auto again = propertyListFromData(encode(node.get()));
  if (!again) return tests::corruption(again);
  return again->root == expected ? "equal" : "different";
}

class PropertyListLibplist : public testing::Test {
 protected:
  // libplist 2.2 writes reals into XML with fewer digits than they have, and cuts what XML can't tell from white space.
  Value withoutReals(const Value& value) {
    if (const auto* number = value.asNumber(); number != nullptr && number->kind() == Number::Kind::Real) return "real";
    if (const auto* array = value.asArray()) {
      Array result;
      for (const auto& element : *array) result.push_back(withoutReals(element));
      return result;
    }
    if (const auto* dictionary = value.asDictionary()) {
      Dictionary result;
      for (const auto& [key, element] : *dictionary) result.set(key, withoutReals(element));
      return result;
    }
    return value;
  }
};

TEST_F(PropertyListLibplist, ReadsOurBinaryListsAndWeReadTheirs) {
  tests::RandomValues random(1);
  for (int i = 0; i < 200; ++i) {
    const Value value = random.dictionary(3);
    EXPECT_EQ(reencoded(*binaryPropertyListFromValue(value), binaryOf, value), "equal") << i;
  }
}

TEST_F(PropertyListLibplist, ReadsOurXmlAndWeReadTheirs) {
  tests::RandomValues random(2);
  for (int i = 0; i < 200; ++i) {
    const Value value = withoutReals(random.dictionary(3));
    EXPECT_EQ(reencoded(*xmlPropertyListFromValue(value), xmlOf, value), "equal") << i;
  }
}

TEST_F(PropertyListLibplist, ReadsBinaryIntoTheSameAsXml) {
  tests::RandomValues random(3);
  for (int i = 0; i < 200; ++i) {
    const Value value = withoutReals(random.dictionary(3));
    EXPECT_EQ(reencoded(*binaryPropertyListFromValue(value), xmlOf, value), "equal") << i;
  }
}

TEST_F(PropertyListLibplist, AgreesOnUids) {
  for (const std::uint64_t uid : {0ull, 255ull, 256ull, 65535ull, 65536ull, 4294967295ull}) {
    const auto node = parsed(*binaryPropertyListFromValue(Array{Dictionary{{"CF$UID", uid}}}));
    ASSERT_TRUE(node);
    plist_t item = plist_array_get_item(node.get(), 0);
    ASSERT_EQ(plist_get_node_type(item), PLIST_UID);
    std::uint64_t value = 0;
    plist_get_uid_val(item, &value);
    EXPECT_EQ(value, uid);
    EXPECT_EQ(propertyListFromData(binaryOf(node.get()))->root, Value(Array{Dictionary{{"CF$UID", uid}}}));
  }
}

}  // namespace
}  // namespace vantrell

#else

TEST(PropertyListLibplist, ReadsOurListsAndWeReadTheirs) {
  GTEST_SKIP() << "libplist is not installed";
}

#endif
