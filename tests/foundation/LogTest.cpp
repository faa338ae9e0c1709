// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>
#include <tuple>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "foundation/Log.h"

namespace vantrell {
namespace {

using host::LogLevel;

class RecordingLog final : public host::SystemLog {
 public:
  using Entry = std::tuple<std::string, std::string, LogLevel, std::string>;

  bool isRecording() const noexcept override { return recording; }
  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view message) noexcept override {
    entries.emplace_back(subsystem, category, level, message);
  }

  bool recording = true;
  std::vector<Entry> entries;
};

struct Counted {
  int* formatted;
};

}  // namespace
}  // namespace vantrell

template <>
struct fmt::formatter<vantrell::Counted> : fmt::formatter<int> {
  auto format(const vantrell::Counted& counted, format_context& context) const {
    return fmt::formatter<int>::format(++*counted.formatted, context);
  }
};

namespace vantrell {
namespace {

TEST(LogTest, WritesUnderItsSubsystemAndCategory) {
  RecordingLog system;
  const Log log(system, "com.example.tool", "Core");
  log.info("{} of {}", 1, "two");
  EXPECT_EQ(system.entries,
            (std::vector<RecordingLog::Entry>{{"com.example.tool", "Core", LogLevel::Info, "1 of two"}}));
}

TEST(LogTest, TheDefaultLogHasNeither) {
  RecordingLog system;
  Log(system).notice("text");
  EXPECT_EQ(system.entries, (std::vector<RecordingLog::Entry>{{"", "", LogLevel::Default, "text"}}));
}

TEST(LogTest, EachCallHasItsLevel) {
  RecordingLog system;
  const Log log(system);
  log.notice("n");
  log.info("i");
  log.error("e");
  log.fault("f");
  log.write(LogLevel::Error, "w");
  EXPECT_EQ(system.entries, (std::vector<RecordingLog::Entry>{{"", "", LogLevel::Default, "n"},
                                                              {"", "", LogLevel::Info, "i"},
                                                              {"", "", LogLevel::Error, "e"},
                                                              {"", "", LogLevel::Fault, "f"},
                                                              {"", "", LogLevel::Error, "w"}}));
}

TEST(LogTest, TextThatIsAnArgumentIsNeverReadAsAFormat) {
  RecordingLog system;
  const std::string hostile = "{} {0} %s %n";
  Log(system).error("'{}'", hostile);
  EXPECT_EQ(std::get<3>(system.entries.at(0)), "'{} {0} %s %n'");
}

TEST(LogTest, FormatsNothingWhenMessagesGoNowhere) {
  RecordingLog system;
  int formatted = 0;
  const Log log(system);
  system.recording = false;
  log.error("{}", Counted{&formatted});
  EXPECT_EQ(formatted, 0);
  EXPECT_TRUE(system.entries.empty());
  system.recording = true;
  log.error("{}", Counted{&formatted});
  EXPECT_EQ(formatted, 1);
}

TEST(LogTest, CopiesWriteToTheSameLog) {
  RecordingLog system;
  const Log log(system, "s", "c");
  const Log copy = log;
  copy.info("text");
  EXPECT_EQ(system.entries, (std::vector<RecordingLog::Entry>{{"s", "c", LogLevel::Info, "text"}}));
}

}  // namespace
}  // namespace vantrell
