// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "foundation/UniqueFunction.h"

namespace vantrell {
namespace {

TEST(OwnedCallable, HoldsWhatCannotBeCopied) {
  auto number = std::make_unique<int>(4);
  OwnedCallable<int(int)> add = [number = std::move(number)](int other) { return *number + other; };
  EXPECT_EQ(add(3), 7);
}

TEST(OwnedCallable, KeepsTheStateOfItsTargetFromCallToCall) {
  OwnedCallable<int()> next = [count = 0]() mutable { return ++count; };
  EXPECT_EQ(next(), 1);
  EXPECT_EQ(next(), 2);
}

TEST(OwnedCallable, IsEmptyUntilItIsGivenSomethingAndAfterItWasMovedFrom) {
  OwnedCallable<void()> empty;
  OwnedCallable<void()> null = nullptr;
  EXPECT_FALSE(empty);
  EXPECT_FALSE(null);
  OwnedCallable<void()> full = [] {};
  ASSERT_TRUE(full);
  empty = std::move(full);
  EXPECT_TRUE(empty);
  EXPECT_FALSE(full);  // NOLINT(bugprone-use-after-move): what is promised of it
}

TEST(OwnedCallable, LetsItsTargetGoWhenItIsReplaced) {
  auto token = std::make_shared<int>(0);
  OwnedCallable<void()> holder = [token] {};
  EXPECT_EQ(token.use_count(), 2);
  holder = nullptr;
  EXPECT_EQ(token.use_count(), 1);
}

TEST(OwnedCallable, HandsArgumentsOnWithoutCopyingThem) {
  OwnedCallable<std::size_t(std::unique_ptr<std::string>)> size = [](std::unique_ptr<std::string> text) {
    return text->size();
  };
  EXPECT_EQ(size(std::make_unique<std::string>("four")), 4u);
  std::string target;
  OwnedCallable<void(std::string&)> fill = [](std::string& text) { text = "filled"; };
  fill(target);
  EXPECT_EQ(target, "filled");
}

TEST(OwnedCallable, DropsAnAnswerThatNobodyAskedFor) {
  int calls = 0;
  OwnedCallable<void()> call = [&calls] { return ++calls; };
  call();
  EXPECT_EQ(calls, 1);
}

static_assert(!std::is_copy_constructible_v<OwnedCallable<void()>>);
static_assert(!std::is_constructible_v<OwnedCallable<int(int)>, std::string>);

}  // namespace
}  // namespace vantrell
