// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "foundation/Error.h"
#include "foundation/PosixCodes.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

TEST(ErrorTest, HoldsDomainCodeAndUserInfo) {
  const Error error("Domain", std::numeric_limits<std::int64_t>::min(), Dictionary{{"Size", 17U}});
  EXPECT_EQ(error.domain(), "Domain");
  EXPECT_EQ(error.code(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(error.userInfo(), (Dictionary{{"Size", 17U}}));
  EXPECT_TRUE(error.hasUserInfo());
}

TEST(ErrorTest, TellsMissingUserInfoFromEmptyUserInfo) {
  const Error without("Domain", 1);
  const Error empty("Domain", 1, Dictionary());
  EXPECT_FALSE(without.hasUserInfo());
  EXPECT_TRUE(without.userInfo().empty());
  EXPECT_TRUE(empty.hasUserInfo());
  EXPECT_NE(without, empty);
}

TEST(ErrorTest, PosixErrorsHaveThePosixDomainAndNoUserInfo) {
  const Error error = Error::posix(posix::kCanceled);
  EXPECT_EQ(error.domain(), "NSPOSIXErrorDomain");
  EXPECT_EQ(error.code(), 89);
  EXPECT_FALSE(error.hasUserInfo());
  EXPECT_TRUE(error.isPosix());
  EXPECT_TRUE(error.isPosix(89));
  EXPECT_FALSE(error.isPosix(2));
}

TEST(ErrorTest, OtherDomainsAreNotPosixWhateverTheCode) {
  const Error error(std::string(kCocoaErrorDomain), 89);
  EXPECT_FALSE(error.isPosix());
  EXPECT_FALSE(error.isPosix(89));
}

TEST(ErrorTest, EqualsByContents) {
  const Error error("Domain", 5, Dictionary{{"a", "b"}});
  const Error copy = error;
  EXPECT_EQ(error, copy);
  EXPECT_EQ(error, Error("Domain", 5, Dictionary{{"a", "b"}}));
  EXPECT_NE(error, Error("Domain", 6, Dictionary{{"a", "b"}}));
  EXPECT_NE(error, Error("Other", 5, Dictionary{{"a", "b"}}));
  EXPECT_NE(error, Error("Domain", 5, Dictionary{{"a", "c"}}));
}

TEST(ErrorTest, CopiesShareTheirContents) {
  const Error error("Domain", 5, Dictionary{{"a", "b"}});
  const Error copy = error;
  EXPECT_EQ(&copy.userInfo(), &error.userInfo());
}

TEST(ErrorTest, CarriesAnUnderlyingError) {
  const Error error(std::string(kCocoaErrorDomain), 513,
                    Dictionary{{NSUnderlyingErrorKey, Error::posix(1)}, {NSFilePathErrorKey, "/x"}});
  const Value* underlying = error.userInfo().find("NSUnderlyingError");
  ASSERT_NE(underlying, nullptr);
  ASSERT_NE(underlying->asError(), nullptr);
  EXPECT_TRUE(underlying->asError()->isPosix(1));
}

TEST(ResultTest, CarriesAValueOrTheError) {
  const auto half = [](int number) -> Result<int> {
    if (number % 2 != 0) return posixFailure(posix::kInvalidArgument);
    return number / 2;
  };
  EXPECT_EQ(half(4).value(), 2);
  ASSERT_FALSE(half(3).has_value());
  EXPECT_TRUE(half(3).error().isPosix(22));
}

}  // namespace
}  // namespace vantrell
