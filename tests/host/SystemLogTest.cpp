// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/SystemLogContract.h"
#include "tests/support/RecordingLog.h"

namespace vantrell::tests {

using host::LogLevel;

TEST_P(SystemLogContract, TakesAnyMessageAtEveryLevelWithoutAWordOnStandardError) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  errno = 77;
  for (const LogLevel level : {LogLevel::Default, LogLevel::Info, LogLevel::Error, LogLevel::Fault}) {
    log->write({}, {}, level, "message %s %n");
    log->write("subsystem", "category", level, std::string_view("\0\n\xFF", 3));
    log->write({}, {}, level, std::string(300000, 'x'));
    log->write({}, {}, level, "");
  }
  const int callersErrno = errno;
  EXPECT_EQ(callersErrno, 77);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

namespace {

INSTANTIATE_TEST_SUITE_P(Recording, SystemLogContract,
                         testing::Values(SystemLogImplementation{"Recording",
                                                                 [] { return std::make_unique<RecordingLog>(); }}),
                         SystemLogContract::nameOf);

TEST(RecordingLog, KeepsEntriesInOrder) {
  RecordingLog log;
  log.write("s", "c", LogLevel::Fault, "one\n");
  log.write({}, {}, LogLevel::Info, "two");
  EXPECT_THAT(log.entries(), testing::ElementsAre(RecordingLog::Entry{LogLevel::Fault, "s", "c", "one"},
                                                  RecordingLog::Entry{LogLevel::Info, "", "", "two"}));
  EXPECT_TRUE(log.waitForMessage("two"));
  EXPECT_FALSE(log.waitForMessage("three", 1, std::chrono::milliseconds(1)));
}

}  // namespace
}  // namespace vantrell::tests
