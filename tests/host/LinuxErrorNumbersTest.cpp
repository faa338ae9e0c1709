// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cerrno>
#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

TEST(ErrorNumbersTest, OneToThirtyFourAgreeButForEleven) {
  for (int number = 1; number <= 34; ++number) {
    if (number != EAGAIN) {
      EXPECT_EQ(darwinErrorNumber(number), number);
    }
  }
  EXPECT_EQ(EAGAIN, 11);
  EXPECT_EQ(darwinErrorNumber(EAGAIN), 35);
  EXPECT_EQ(darwinErrorNumber(EDEADLK), 11);
}

TEST(ErrorNumbersTest, TranslatesTheNumbersThatDiffer) {
  const std::vector<std::pair<int, std::int64_t>> table = {
      {EDEADLK, 11},      {EAGAIN, 35},       {EINPROGRESS, 36},  {EALREADY, 37},     {ENOTSOCK, 38},
      {ENOTSUP, 45},      {EADDRINUSE, 48},   {ECONNRESET, 54},   {ENOBUFS, 55},      {ETIMEDOUT, 60},
      {ECONNREFUSED, 61}, {ELOOP, 62},        {ENAMETOOLONG, 63}, {ENOTEMPTY, 66},    {EUSERS, 68},
      {EDQUOT, 69},       {ESTALE, 70},       {ENOLCK, 77},       {ENOSYS, 78},       {EOVERFLOW, 84},
      {ECANCELED, 89},    {EIDRM, 90},        {ENOMSG, 91},       {EILSEQ, 92},       {EBADMSG, 94},
      {EPROTO, 100},      {EDESTADDRREQ, 39}, {EMSGSIZE, 40},     {EAFNOSUPPORT, 47}, {ENETDOWN, 50},
      {ECONNABORTED, 53}, {EISCONN, 56},      {ENOTCONN, 57},     {ESHUTDOWN, 58},    {EHOSTUNREACH, 65},
      {EREMOTE, 71},      {EMULTIHOP, 95},    {ENOLINK, 97},      {ETIME, 101},       {ENOTRECOVERABLE, 104},
      {EOWNERDEAD, 105},
  };
  for (const auto& [number, expected] : table) EXPECT_EQ(darwinErrorNumber(number), expected) << number;
}

TEST(ErrorNumbersTest, AMissingAttributeIsDarwinsNumberForIt) {
  EXPECT_EQ(darwinErrorNumber(ENODATA), posix::kNoAttribute);
}

TEST(ErrorNumbersTest, NumbersWithoutACounterpartAreInputOutputErrors) {
  for (const int number : {0, -1, EUCLEAN, ENOKEY, EMEDIUMTYPE, 134, 4095}) {
    EXPECT_EQ(darwinErrorNumber(number), posix::kInputOutput) << number;
  }
}

TEST(ErrorNumbersTest, NoTwoNumbersShareACounterpart) {
  std::map<std::int64_t, int> sources;
  for (int number = 1; number < 134; ++number) {
    const std::int64_t code = darwinErrorNumber(number);
    if (code == posix::kInputOutput) continue;
    EXPECT_TRUE(sources.emplace(code, number).second) << number << " and " << sources[code] << " are both " << code;
  }
}

TEST(ErrorNumbersTest, ErrorsBearTheTranslatedNumber) {
  EXPECT_EQ(errorFromErrno(ENOTEMPTY), Error::posix(66));
  errno = ELOOP;
  EXPECT_EQ(errorFromErrno(), Error::posix(62));
  const auto fails = []() -> Result<int> { return errnoFailure(ENAMETOOLONG); };
  EXPECT_EQ(fails().error(), Error::posix(63));
}

}  // namespace
}  // namespace vantrell::host
