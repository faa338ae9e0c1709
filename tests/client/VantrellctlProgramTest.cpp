// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The built command as a person starts it, as far as it goes without a service.

#include <algorithm>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/macho/MachOBuilder.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

const std::string kProgram = std::string(VANTRELL_BINARY_DIR) + "/vantrellctl";

class VantrellctlProgram : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kProgram)) GTEST_SKIP() << kProgram << " is not built";
  }
  static tests::ProgramResult run(const Words& words) { return tests::runProgram(kProgram, words); }
};

TEST_F(VantrellctlProgram, EndsWith2OnAUsageError) {
  const std::vector<Words> lines{{},
                                 {"no-such-command"},
                                 {"--no-such-option", "list"},
                                 {"run"},
                                 {"run", "no-such-operation"},
                                 {"run", "nop", "too many"},
                                 {"run", "signal-process", "1", "x"},
                                 {"--bus", "--address", "unix:path=/x", "version"},
                                 {"macho"},
                                 {"bundle"},
                                 {"bundle", "/a", "/b"},
                                 {"smc", "FNum"}};
  for (const auto& words : lines) {
    const auto result = run(words);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.error, "");
  }
}

TEST_F(VantrellctlProgram, HelpsOnStandardOutput) {
  const auto result = run({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("--no-progress"));
  EXPECT_EQ(result.error, "");
}

TEST_F(VantrellctlProgram, ListsTheOperations) {
  const auto table = run({"list"});
  EXPECT_EQ(table.status, 0);
  EXPECT_THAT(table.output, StartsWith("Code  Identifier"));
  EXPECT_EQ(std::ranges::count(table.output, '\n'), 34);

  const auto json = run({"--json", "list"});
  EXPECT_EQ(json.status, 0);
  EXPECT_EQ(std::ranges::count(json.output, '\n'), 33);
  EXPECT_EQ(nlohmann::json::parse(json.output.substr(0, json.output.find('\n')))["identifier"], "modify-systemfile");
}

TEST_F(VantrellctlProgram, EndsWith3WhereNobodyListens) {
  const auto result = run({"--address", "unix:path=/nonexistent/socket", "--helper", kProgram, "run", "nop"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.error, StartsWith("vantrellctl: The service can't be reached at unix:path=/nonexistent/socket: "));
  const auto spawning = run({"--spawn", "/nonexistent/helper", "version"});
  EXPECT_EQ(spawning.status, 3);
  EXPECT_THAT(spawning.error, StartsWith("vantrellctl: The helper \"/nonexistent/helper\" can't be started: No such"));
}

TEST_F(VantrellctlProgram, DescribesExecutablesOfThisSystem) {
  const auto result = run({"macho", kProgram});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, testing::ContainsRegex("Descriptor: [0-9a-f]{40}\n"));
}

TEST_F(VantrellctlProgram, DescribesMachOFiles) {
  const tests::TemporaryFolder folder;
  const auto bytes = tests::MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "abc", 0, {}, {}}}).build();
  const auto file = folder.makeFile("program", textOf(bytes));
  const auto result = run({"macho", file});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("  descriptor: a9993e364706816aba3e25717850c26c9cd0d89d\n"));
  const auto json = run({"--json", "macho", file});
  EXPECT_EQ(json.status, 0);
  const auto object = nlohmann::json::parse(json.output);
  EXPECT_EQ(object["format"], "mach-o");
  EXPECT_EQ(object["descriptors"], nlohmann::json({"a9993e364706816aba3e25717850c26c9cd0d89d"}));
  EXPECT_EQ(object["report"], result.output);
}

TEST_F(VantrellctlProgram, EndsWith1OnAFileThatIsNoExecutable) {
  const tests::TemporaryFolder folder;
  for (const auto& file : {folder.makeFile("text"), folder.path("missing"), folder.path()}) {
    const auto result = run({"macho", file});
    EXPECT_EQ(result.status, 1) << file;
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.error, "");
  }
}

TEST_F(VantrellctlProgram, ShowsASimulatedSystemManagementController) {
  const auto result = run({"smc", "--simulated"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, StartsWith("Key   Type  Access      Value\n#KEY  ui32  read"));
  const auto json = run({"--json", "smc", "--simulated"});
  EXPECT_EQ(json.status, 0);
  EXPECT_EQ(std::ranges::count(json.output, '\n'), std::ranges::count(result.output, '\n') - 1);
  EXPECT_EQ(nlohmann::json::parse(json.output.substr(0, json.output.find('\n')))["key"], "#KEY");
}

TEST_F(VantrellctlProgram, EndsWith1WithoutASystemManagementController) {
  if (std::filesystem::exists("/sys/devices/platform/applesmc.768")) GTEST_SKIP() << "this computer has one";
  const auto result = run({"smc"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.error, StartsWith("vantrellctl: This computer has no System Management Controller"));
}

}  // namespace
}  // namespace vantrell
