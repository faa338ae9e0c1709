// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <memory>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/JsonOutput.h"
#include "client/SmcCommand.h"
#include "client/Vantrellctl.h"
#include "host/linux/AppleSmcDriver.h"
#include "system/SimulatedSmc.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeTerminal.h"

namespace vantrell {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using Keys = std::vector<SimulatedSmc::Key>;

class SmcCommand : public testing::Test {
 protected:
  SmcCommand() { client_.host.smcDriver = std::make_unique<host::AppleSmcDriver>("/nonexistent/applesmc"); }

  ExitStatus show(bool simulated, bool json = false) {
    const CommandContext context{client_.host, terminal_, operations_, out_, err_, json, true};
    CommandLine line{.command = CommandLine::Command::Smc};
    line.simulated = simulated;
    return carryOut(line, context);
  }
  void useKeys(Keys keys) { client_.host.smcDriver = std::make_unique<SimulatedSmc>(std::move(keys)); }
  std::vector<std::string> lines() const {
    std::vector<std::string> result;
    std::istringstream input(out_.str());
    for (std::string line; std::getline(input, line);) result.push_back(line);
    return result;
  }

  tests::ClientHost client_;
  QELPrivilegedToolOperationSetLM4 operations_{*client_.host.systemLog};
  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(SmcCommand, FailsWithAWordWhereThereIsNoController) {
  EXPECT_EQ(show(false), ExitStatus::Failure);
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(err_.str(),
            "vantrellctl: This computer has no System Management Controller, or no driver for it. \"smc --simulated\" "
            "shows one that is made up.\n");
}

TEST_F(SmcCommand, ListsTheKeysOfASimulatedController) {
  EXPECT_EQ(show(true), ExitStatus::Success);
  const auto rows = lines();
  EXPECT_EQ(rows.at(0), "Key   Type  Access      Value");
  EXPECT_EQ(rows.size(), SimulatedSmc::everyKindOfKey().size() + 2) << "headings, \"#KEY\" and the rest";
  EXPECT_TRUE(std::is_sorted(rows.begin() + 1, rows.end()));
  EXPECT_THAT(rows, Contains("F0Ac  fpe2  read        2000.0"));
  EXPECT_THAT(rows, Contains("BATP  flag  read        true"));
  EXPECT_THAT(rows, Contains("REV   {rev  read        1.68f10"));
  EXPECT_THAT(rows, Contains("KPPW  ui16  write-only  <write-only property>"));
  EXPECT_THAT(rows, Contains("MSSD  ui16  read        <received 4 bytes for type 'ui16': mismatch detected>"));
  EXPECT_THAT(rows, Contains("LSOO  {lso  read        "
                             "{\"SMCPowerLightOverrideRamp\":true,\"SMCPowerLightOverrideTargetBehavior\":-2}"));
}

TEST_F(SmcCommand, TellsOfKeysThatCanNotBeRead) {
  EXPECT_EQ(show(true), ExitStatus::Success);
  EXPECT_THAT(lines(), Contains("zERR  -     -           -"));
  EXPECT_EQ(err_.str(),
            "QELSystemManagementController: failed to get value for key 'zERR' (error -536870160)\n"
            "QELSystemManagementController: failed to get value for key 'zHID' (error -536870160)\n");
}

TEST_F(SmcCommand, PrintsOneJsonObjectALine) {
  useKeys({SimulatedSmc::readOnlyKey("FNum", "ui8", {2}),
           SimulatedSmc::writeOnlyKey("KPPW", "ui16", {0, 0}),
           SimulatedSmc::readOnlyKey("LSOO", "{lso", {1, 0}),
           {.code = 0x61626364, .readResult = host::smc_result::kKeyNotFound}});
  EXPECT_EQ(show(false, true), ExitStatus::Success);
  EXPECT_EQ(lines(), (std::vector<std::string>{
                         R"({"key":"#KEY","type":"ui32","writeOnly":false,"value":5})",
                         R"({"key":"FNum","type":"ui8 ","writeOnly":false,"value":2})",
                         R"({"key":"KPPW","type":"ui16","writeOnly":true,"value":"<write-only property>"})",
                         R"({"key":"LSOO","type":"{lso","writeOnly":false,"value":{"SMCPowerLightOverrideRamp":false,)"
                         R"("SMCPowerLightOverrideTargetBehavior":1}})",
                         R"({"key":"abcd","type":null,"writeOnly":null,"value":null})"}));
}

TEST_F(SmcCommand, PrintsTheSimulatedControllerAsJson) {
  EXPECT_EQ(show(true, true), ExitStatus::Success);
  for (const auto& line : lines()) {
    const auto object = Json::parse(line);
    EXPECT_EQ(object.size(), 4U) << line;
    EXPECT_TRUE(object["key"].is_string());
  }
  EXPECT_GT(lines().size(), 80U);
}

TEST_F(SmcCommand, KeepsARowOnItsLineWhateverTheControllerSays) {
  useKeys({SimulatedSmc::readOnlyKey("Text", "ch8*", {'a', '\n', 'b', 0, 0x1B, '[', '2', 'J'}),
           {.code = 0x0A1B5B4A, .type = 0x0A0A0A0A, .value = {1}}});
  EXPECT_EQ(show(false), ExitStatus::Success);
  EXPECT_EQ(lines().size(), 4U);
  EXPECT_THAT(out_.str(), HasSubstr("a\\nb\\x00\\x1b[2J\n"));
  EXPECT_THAT(out_.str(), Not(HasSubstr("\x1B")));
}

TEST_F(SmcCommand, FailsWhenTheControllerDoesNotTellItsKeys) {
  struct Mute final : host::SmcDriver {
    struct Connection final : host::SmcConnection {
      host::SmcReturnCode openUserClient() override { return host::kSmcNotPrivileged; }
      host::SmcReturnCode closeUserClient() override { return host::kSmcSuccess; }
      host::SmcReturnCode call(const host::SmcRecord&, host::SmcRecord&) override { return host::kSmcGeneralError; }
    };
    std::expected<std::unique_ptr<host::SmcConnection>, host::SmcReturnCode> connect() override {
      return std::make_unique<Connection>();
    }
  };
  client_.host.smcDriver = std::make_unique<Mute>();
  EXPECT_EQ(show(false), ExitStatus::Failure);
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(err_.str(),
            "QELSystemManagementController: could not determine available keys on this platform\n"
            "vantrellctl: The System Management Controller doesn't tell its keys. It may take the superuser to ask for "
            "them.\n");
}

TEST_F(SmcCommand, FailsWhenNobodyTakesTheOutput) {
  out_.setstate(std::ios::badbit);
  EXPECT_EQ(show(true), ExitStatus::Failure);
}

}  // namespace
}  // namespace vantrell
