// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/CommandLine.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;
using Command = CommandLine::Command;

class CommandLineTest : public testing::Test {
 protected:
  std::variant<CommandLine, ExitStatus> parse(const Words& words) {
    std::vector<const char*> pointers{"vantrellctl"};
    for (const auto& word : words) pointers.push_back(word.c_str());
    return parseCommandLine(static_cast<int>(pointers.size()), pointers.data(), out_, err_);
  }
  CommandLine line(const Words& words) {
    auto parsed = parse(words);
    if (auto* result = std::get_if<CommandLine>(&parsed)) return std::move(*result);
    ADD_FAILURE() << err_.str();
    return {};
  }
  void expectUsageError(const Words& words) {
    err_.str("");
    const auto parsed = parse(words);
    const auto* status = std::get_if<ExitStatus>(&parsed);
    ASSERT_TRUE(status) << testing::PrintToString(words);
    EXPECT_EQ(*status, ExitStatus::Usage);
    EXPECT_NE(err_.str(), "");
  }

  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(CommandLineTest, KnowsItsCommands) {
  EXPECT_EQ(line({"list"}).command, Command::List);
  EXPECT_EQ(line({"version"}).command, Command::Version);
  EXPECT_EQ(line({"run", "nop"}).command, Command::Run);
  const auto macho = line({"macho", "[a,b]"});
  EXPECT_EQ(macho.command, Command::MachO);
  EXPECT_EQ(macho.file, "[a,b]");
  EXPECT_EQ(line({"signature", "/a"}).command, Command::Signature);
  EXPECT_EQ(line({"signature", "/a"}).file, "/a");
  EXPECT_EQ(line({"smc"}).command, Command::Smc);
  EXPECT_FALSE(line({"smc"}).simulated);
  EXPECT_EQ(line({"smc", "--simulated"}).command, Command::Smc);
  EXPECT_TRUE(line({"smc", "--simulated"}).simulated);
}

TEST_F(CommandLineTest, TakesGlobalOptionsBeforeTheCommand) {
  const auto plain = line({"list"});
  EXPECT_FALSE(plain.json);
  EXPECT_TRUE(plain.progress);
  EXPECT_FALSE(plain.connection.address || plain.connection.bus || plain.connection.spawn || plain.connection.helper);

  const auto full = line({"--address", "unix:path=/a", "--helper=/h", "--json", "--no-progress", "list"});
  EXPECT_EQ(full.connection.address, "unix:path=/a");
  EXPECT_EQ(full.connection.helper, "/h");
  EXPECT_TRUE(full.json);
  EXPECT_FALSE(full.progress);
  EXPECT_TRUE(line({"--bus", "version"}).connection.bus);
  EXPECT_EQ(line({"--spawn", "./h", "version"}).connection.spawn, "./h");
}

TEST_F(CommandLineTest, HandsEveryWordAfterTheIdentifierToTheOperation) {
  const auto parsed =
      line({"run", "execute-utility", "-x", "--json", "--help", "", "[a,b]", "list", "--", "run", "-5"});
  EXPECT_EQ(parsed.identifier, "execute-utility");
  EXPECT_EQ(parsed.arguments, (Words{"-x", "--json", "--help", "", "[a,b]", "list", "--", "run", "-5"}));
  EXPECT_FALSE(parsed.json);
}

TEST_F(CommandLineTest, LeavesOutADoubleHyphenAfterTheIdentifier) {
  EXPECT_EQ(line({"run", "signal-process", "--", "-5", "1"}).arguments, (Words{"-5", "1"}));
  EXPECT_EQ(line({"run", "x", "--", "--"}).arguments, (Words{"--"}));
}

TEST_F(CommandLineTest, TakesACommandsNameForAnIdentifierAfterRun) {
  EXPECT_EQ(line({"run", "list", "version"}).identifier, "list");
  EXPECT_EQ(line({"run", "list", "version"}).arguments, Words{"version"});
}

TEST_F(CommandLineTest, RefusesWhatItDoesNotKnow) {
  expectUsageError({});
  expectUsageError({"--json"});
  expectUsageError({"unknown"});
  expectUsageError({"--unknown", "list"});
  expectUsageError({"list", "more"});
  expectUsageError({"version", "--json"});
  expectUsageError({"list", "version"});
  expectUsageError({"run"});
  expectUsageError({"run", "--json", "nop"});
  expectUsageError({"macho"});
  expectUsageError({"macho", "a", "b"});
  expectUsageError({"signature"});
  expectUsageError({"signature", "/a", "/b"});
  expectUsageError({"smc", "FNum"});
  expectUsageError({"--simulated", "smc"});
  expectUsageError({"--address"});
}

TEST_F(CommandLineTest, TakesOneWayToTheServiceOnly) {
  expectUsageError({"--address", "a", "--bus", "version"});
  expectUsageError({"--address", "a", "--spawn", "h", "version"});
  expectUsageError({"--bus", "--spawn", "h", "version"});
}

TEST_F(CommandLineTest, PrintsHelpOnRequest) {
  for (const Words& words : {Words{"--help"}, Words{"-h"}, Words{"run", "--help"}, Words{"list", "-h"}}) {
    out_.str("");
    const auto parsed = parse(words);
    const auto* status = std::get_if<ExitStatus>(&parsed);
    ASSERT_TRUE(status);
    EXPECT_EQ(*status, ExitStatus::Success);
    EXPECT_NE(out_.str(), "");
  }
  EXPECT_EQ(err_.str(), "");
  out_.str("");
  static_cast<void>(parse({"--help"}));
  for (const char* word : {"--address", "--bus", "--spawn", "--helper", "--json", "--no-progress", "list", "version",
                           "run", "macho", "smc", "Exit status"}) {
    EXPECT_THAT(out_.str(), HasSubstr(word));
  }
}

}  // namespace
}  // namespace vantrell
