// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "host/macos/MacSystemLog.h"
#include "tests/host/SystemLogContract.h"
#include "tests/macos/ToolOutput.h"

namespace vantrell::tests {
namespace {

using host::LogLevel;

INSTANTIATE_TEST_SUITE_P(Mac, SystemLogContract,
                         testing::Values(SystemLogImplementation{
                             "Unified", [] { return std::make_unique<host::MacSystemLog>(); }}),
                         SystemLogContract::nameOf);

/// Reads back what was written, which administrators only may.
class MacSystemLogAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the log can be read by root only";
  }

  struct Entry {
    std::string subsystem;
    std::string category;
    std::string type;
    std::string message;
    bool operator==(const Entry&) const = default;
  };

  /// Waits for `count` entries that the predicate is true of: the log's daemon takes its time.
  static std::vector<Entry> entries(const std::string& predicate, std::size_t count) {
    std::vector<Entry> found;
    for (int attempt = 0; attempt < 20 && found.size() < count; ++attempt) {
      std::this_thread::sleep_for(std::chrono::seconds(1));
      found = entries(predicate);
    }
    return found;
  }

  const std::string process_ = std::to_string(getpid());
  const std::string subsystem_ = "com.vantrell.test.log" + process_;
  host::MacSystemLog log_;

 private:
  static std::vector<Entry> entries(const std::string& predicate) {
    const auto output = outputOf("/usr/bin/log show --last 3m --info --style json --predicate '" + predicate + "'");
    // Older systems begin with a line about the predicate.
    const auto begin = output.find("[{");
    if (begin == std::string::npos) return {};
    const auto list = nlohmann::json::parse(output.substr(begin), nullptr, false);
    std::vector<Entry> found;
    for (const auto& entry : list) {
      found.push_back({entry.value("subsystem", ""), entry.value("category", ""), entry.value("messageType", ""),
                       entry.value("eventMessage", "")});
    }
    return found;
  }
};

TEST_F(MacSystemLogAsRoot, WritesPublicMessagesUnderSubsystemCategoryAndLevel) {
  log_.write(subsystem_, "standard", LogLevel::Default, "shutting down\n");
  log_.write(subsystem_, "standard", LogLevel::Info, "100%s %{private}d");
  log_.write(subsystem_, "other", LogLevel::Error, std::string("a\0b \xFF", 5));
  log_.write(subsystem_, "other", LogLevel::Fault, "Gr\u00F6\u00DFe");
  EXPECT_THAT(entries("subsystem == \"" + subsystem_ + "\"", 4),
              testing::ElementsAre(Entry{subsystem_, "standard", "Default", "shutting down"},
                                   Entry{subsystem_, "standard", "Info", "100%s %{private}d"},
                                   Entry{subsystem_, "other", "Error", "a\uFFFDb \uFFFD"},
                                   Entry{subsystem_, "other", "Fault", "Gr\u00F6\u00DFe"}));
}

TEST_F(MacSystemLogAsRoot, WritesToTheDefaultLogWhatHasNoSubsystem) {
  const auto message = "without subsystem " + process_;
  log_.write({}, {}, LogLevel::Error, message);
  EXPECT_THAT(entries("eventMessage == \"" + message + "\"", 1), testing::ElementsAre(Entry{"", "", "Error", message}));
}

TEST_F(MacSystemLogAsRoot, WritesToTheDefaultLogOnceItHasAllItsHandles) {
  const auto subsystem = [this](std::size_t number) { return subsystem_ + "." + std::to_string(number); };
  const auto last = host::MacSystemLog::kMaximumHandles - 1;
  for (std::size_t i = 0; i < last; ++i) log_.write(subsystem(i), "many", LogLevel::Default, "message");
  const auto message = "about handles " + process_;
  for (const auto number : {last, last + 1, last}) log_.write(subsystem(number), "many", LogLevel::Default, message);
  EXPECT_THAT(
      entries("eventMessage == \"" + message + "\"", 3),
      testing::ElementsAre(Entry{subsystem(last), "many", "Default", message}, Entry{"", "", "Default", message},
                           Entry{subsystem(last), "many", "Default", message}));
}

}  // namespace
}  // namespace vantrell::tests
