// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "foundation/Dictionary.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

std::vector<std::string> keysOf(const Dictionary& dictionary) {
  std::vector<std::string> keys;
  for (const DictionaryEntry& entry : dictionary) keys.push_back(entry.key);
  return keys;
}

TEST(DictionaryTest, BeginsEmpty) {
  const Dictionary dictionary;
  EXPECT_TRUE(dictionary.empty());
  EXPECT_EQ(dictionary.size(), 0U);
  EXPECT_EQ(dictionary.find("key"), nullptr);
  EXPECT_EQ(dictionary.find(""), nullptr);
}

TEST(DictionaryTest, FindsWhatWasSet) {
  Dictionary dictionary;
  dictionary.set("b", 2);
  dictionary.set("a", "one");
  dictionary.set("", true);
  ASSERT_NE(dictionary.find("a"), nullptr);
  EXPECT_EQ(*dictionary.find("a"), Value("one"));
  EXPECT_EQ(*dictionary.find("b"), Value(2));
  EXPECT_EQ(*dictionary.find(""), Value(true));
  EXPECT_FALSE(dictionary.contains("ab"));
  EXPECT_FALSE(dictionary.contains("A"));
}

TEST(DictionaryTest, EnumeratesByTheBytesOfTheKeys) {
  const Dictionary dictionary = {{"é", 1}, {"z", 2}, {"Z", 3}, {"", 4}, {std::string("a\0b", 3), 5}, {"a", 6}};
  EXPECT_EQ(keysOf(dictionary), (std::vector<std::string>{"", "Z", "a", std::string("a\0b", 3), "z", "é"}));
}

TEST(DictionaryTest, SettingReplaces) {
  Dictionary dictionary = {{"key", 1}};
  dictionary.set("key", "other");
  EXPECT_EQ(dictionary.size(), 1U);
  EXPECT_EQ(*dictionary.find("key"), Value("other"));
}

TEST(DictionaryTest, OfEqualKeysTheLastCounts) {
  const Dictionary dictionary = {{"k", 1}, {"a", 0}, {"k", 2}, {"a", 5}, {"k", 3}};
  EXPECT_EQ(dictionary, (Dictionary{{"a", 5}, {"k", 3}}));
}

TEST(DictionaryTest, RemovesOnlyTheKeyGiven) {
  Dictionary dictionary = {{"a", 1}, {"b", 2}, {"c", 3}};
  EXPECT_TRUE(dictionary.remove("b"));
  EXPECT_FALSE(dictionary.remove("b"));
  EXPECT_FALSE(dictionary.remove("d"));
  EXPECT_EQ(keysOf(dictionary), (std::vector<std::string>{"a", "c"}));
}

TEST(DictionaryTest, FoundValuesMayBeChangedInPlace) {
  Dictionary dictionary = {{"list", Array{1}}};
  dictionary.find("list")->asArray()->push_back(2);
  EXPECT_EQ(*dictionary.find("list"), Value(Array{1, 2}));
}

TEST(DictionaryTest, EqualityIgnoresTheOrderOfSetting) {
  Dictionary one;
  one.set("a", 1);
  one.set("b", Dictionary{{"inner", 2}});
  Dictionary other;
  other.set("b", Dictionary{{"inner", 2}});
  other.set("a", 1.0);
  EXPECT_EQ(one, other);
  other.find("b")->asDictionary()->set("inner", 3);
  EXPECT_NE(one, other);
}

TEST(DictionaryTest, CopiesAreIndependent) {
  Dictionary original = {{"a", 1}};
  Dictionary copy = original;
  copy.set("a", 2);
  copy.set("b", 3);
  EXPECT_EQ(original, (Dictionary{{"a", 1}}));
  original = copy;
  EXPECT_EQ(original, copy);
}

TEST(DictionaryTest, MayBeSetToAPartOfItself) {
  Dictionary dictionary = {{"inner", Dictionary{{"a", 1}}}};
  dictionary = Dictionary(*dictionary.find("inner")->asDictionary());
  EXPECT_EQ(dictionary, (Dictionary{{"a", 1}}));
}

TEST(DictionaryTest, BehavesLikeAMap) {
  EXPECT_TRUE(rc::check([](const std::vector<std::pair<std::string, int>>& entries, const std::string& removed) {
    std::map<std::string, int> model;
    std::vector<DictionaryEntry> given;
    Dictionary grown;
    for (const auto& [key, number] : entries) {
      model[key] = number;
      given.push_back({key, number});
      grown.set(key, number);
    }
    Dictionary made = Dictionary::fromEntries(given);
    RC_ASSERT(made == grown);
    RC_ASSERT(made.remove(removed) == (model.erase(removed) == 1));
    RC_ASSERT(made.size() == model.size());
    auto expected = model.begin();
    for (const DictionaryEntry& entry : made) {
      RC_ASSERT(entry.key == expected->first);
      RC_ASSERT(entry.value == Value(expected->second));
      ++expected;
    }
  }));
}

}  // namespace
}  // namespace vantrell
