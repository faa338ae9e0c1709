// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Python's plistlib as a second opinion on both formats: it reads what we write and writes it anew in both formats, and
// what comes back must be what we set out from.

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/PropertyListSamples.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

constexpr char kScript[] = R"(
import os, plistlib, sys
folder = sys.argv[1]
for name in sorted(os.listdir(folder)):
    with open(os.path.join(folder, name), 'rb') as file:
        value = plistlib.load(file)
    for suffix, format in (('.binary', plistlib.FMT_BINARY), ('.xml', plistlib.FMT_XML)):
        if suffix == '.xml' and name.startswith('binary-only'):
            continue
        with open(os.path.join(folder, name + suffix), 'wb') as file:
            plistlib.dump(value, file, fmt=format)
)";

class PropertyListPython : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("python3 -c 'import plistlib' >/dev/null 2>&1") != 0) GTEST_SKIP() << "no python3 with plistlib";
  }

  void put(const std::string& name, const Result<Data>& list) {
    ASSERT_TRUE(list);
    folder_.makeFile(name, textOf(*list));
  }

  void runScript() {
    const tests::TemporaryFolder scripts;
    const auto script = scripts.makeFile("reencode.py", kScript);
    ASSERT_EQ(std::system(("python3 '" + script + "' '" + folder_.path() + "'").c_str()), 0);
  }

  Result<PropertyList> get(const std::string& name) {
    std::ifstream file(folder_.path(name), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return propertyListFromData(bytesOf(bytes));
  }

  void expectEqual(const std::string& name, PropertyListFormat format, const Value& expected) {
    const auto list = get(name);
    ASSERT_TRUE(list) << name << ": " << tests::corruption(list);
    EXPECT_EQ(list->format, format) << name;
    EXPECT_EQ(list->root, expected) << name;
  }

  tests::TemporaryFolder folder_;
};

TEST_F(PropertyListPython, ReadsOurListsAndWeReadTheirs) {
  constexpr int kCount = 100;
  tests::RandomValues random(5);
  std::vector<Value> values;
  for (int i = 0; i < kCount; ++i) {
    values.push_back(random.value(4));
    put("ours-binary-" + std::to_string(i), binaryPropertyListFromValue(values.back()));
    put("ours-xml-" + std::to_string(i), xmlPropertyListFromValue(values.back()));
  }
  runScript();
  for (int i = 0; i < kCount; ++i) {
    for (const std::string format : {"ours-binary-", "ours-xml-"}) {
      const auto name = format + std::to_string(i);
      expectEqual(name + ".binary", PropertyListFormat::Binary, values[static_cast<std::size_t>(i)]);
      expectEqual(name + ".xml", PropertyListFormat::Xml, values[static_cast<std::size_t>(i)]);
    }
  }
}

TEST_F(PropertyListPython, AgreesOnTheEdgesOfAllKinds) {
  const Value value = tests::sampleValue();
  put("sample-binary", binaryPropertyListFromValue(value));
  put("sample-xml", xmlPropertyListFromValue(value));
  runScript();
  // Into XML it writes all line ends as line feeds.
  Value withLineFeeds = value;
  withLineFeeds.asDictionary()->set("markup", "<a & \"b\">\n\ttail ]]>");
  for (const std::string name : {"sample-binary", "sample-xml"}) {
    expectEqual(name + ".binary", PropertyListFormat::Binary, value);
    expectEqual(name + ".xml", PropertyListFormat::Xml, withLineFeeds);
  }
}

TEST_F(PropertyListPython, AgreesOnUidsAndFractionsOfSeconds) {
  const Value value = Array{Dictionary{{"CF$UID", 0}}, Dictionary{{"CF$UID", 70'000}},
                            Dictionary{{"CF$UID", 4294967295}}, Date{1'700'000'000, 250'000'000}};
  put("binary-only", binaryPropertyListFromValue(value));
  runScript();
  expectEqual("binary-only.binary", PropertyListFormat::Binary, value);
}

TEST_F(PropertyListPython, ReadsLargeLists) {
  Array array;
  for (int i = 0; i < 70'000; ++i) array.push_back(Array{i, std::to_string(i % 1000)});
  put("large", binaryPropertyListFromValue(array));
  runScript();
  expectEqual("large.binary", PropertyListFormat::Binary, array);
}

}  // namespace
}  // namespace vantrell
