// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The firmware of this computer. Nothing is written unless VANTRELL_TEST_WRITES_NVRAM is set: flash memory wears.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/Data.h"
#include "host/macos/MacFirmwareVariables.h"

namespace vantrell {
namespace {

using namespace std::string_literals;

constexpr auto kBadArgument = static_cast<host::DeviceReturnCode>(0xE00002C2U);
constexpr char kOwnVariable[] = "vantrell-test";

/// What the system's own tool says. Its arguments are these tests' own.
struct NvramTool {
  explicit NvramTool(const std::string& arguments) {
    FILE* const pipe = popen(("/usr/sbin/nvram " + arguments + " 2>/dev/null").c_str(), "r");
    if (!pipe) return;
    std::array<char, 4096> buffer;
    while (const auto count = fread(buffer.data(), 1, buffer.size(), pipe)) output.append(buffer.data(), count);
    const int status = pclose(pipe);
    succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  bool succeeded = false;
  std::string output;
};

struct MacFirmwareVariables : testing::Test {
  void SetUp() override {
    ASSERT_EQ(firmware.connect(), host::kDeviceSuccess);
    options = firmware.options();
    if (!options) GTEST_SKIP() << "This computer's firmware has no variables.";
  }

  host::MacFirmwareVariables firmware;
  std::unique_ptr<host::FirmwareOptions> options;
};

TEST_F(MacFirmwareVariables, AreThoseThatTheSystemsToolTells) {
  for (const std::string name : {"boot-args", "SystemAudioVolume", "csr-active-config", "auto-boot", kOwnVariable}) {
    const NvramTool tool(name);
    const auto value = options->value(name);
    EXPECT_EQ(value.has_value(), tool.succeeded) << name;
    // The tool prints texts as they are, behind the name and a tab.
    if (value && value->asString()) {
      EXPECT_EQ(tool.output, name + "\t" + *value->asString() + "\n");
    }
  }
}

TEST_F(MacFirmwareVariables, HaveOneOfTheKindsThatAreToldApart) {
  for (const auto* name : {"boot-args", "SystemAudioVolume", "csr-active-config", "auto-boot"}) {
    if (const auto value = options->value(name)) {
      EXPECT_TRUE(value->asString() || value->asNumber() || value->asData()) << name;
    }
  }
}

TEST_F(MacFirmwareVariables, HaveNoNameWithoutCharactersOrWithAZeroByte) {
  for (const auto& name : {""s, "boot-args\0"s, "boot\0args"s}) {
    EXPECT_EQ(options->value(name), std::nullopt);
    EXPECT_EQ(options->setValue(name, "text"), kBadArgument);
  }
}

TEST_F(MacFirmwareVariables, AreNotSetToWhatTheyCannotHold) {
  EXPECT_EQ(options->setValue(kOwnVariable, Value()), kBadArgument);
  EXPECT_EQ(options->value(kOwnVariable), std::nullopt);
}

TEST_F(MacFirmwareVariables, AreSetByRootOnly) {
  if (geteuid() == 0) GTEST_SKIP() << "Root may.";
  EXPECT_LT(options->setValue(kOwnVariable, "text"), host::kDeviceSuccess);
  EXPECT_EQ(options->value(kOwnVariable), std::nullopt);
}

struct MacFirmwareVariablesAsRoot : MacFirmwareVariables {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root may set variables of the firmware.";
    if (!std::getenv("VANTRELL_TEST_WRITES_NVRAM")) GTEST_SKIP() << "VANTRELL_TEST_WRITES_NVRAM is not set.";
    MacFirmwareVariables::SetUp();
  }
  void TearDown() override { const NvramTool removal("-d "s + kOwnVariable); }
};

TEST_F(MacFirmwareVariablesAsRoot, AreMadeAndChanged) {
  for (const Data& bytes : {Data{0x41, 0x42}, Data{0x00, 0xFF}}) {
    ASSERT_EQ(options->setValue(kOwnVariable, bytes), host::kDeviceSuccess);
    EXPECT_EQ(options->value(kOwnVariable), Value(bytes));
  }
  ASSERT_EQ(options->setValue(kOwnVariable, "text"), host::kDeviceSuccess);
  // The kernel knows the types of its own variables only, and may keep another's text as data.
  const auto value = options->value(kOwnVariable);
  EXPECT_TRUE(value == Value("text") || value == Value(Data{'t', 'e', 'x', 't'}));
  EXPECT_EQ(NvramTool(kOwnVariable).output, kOwnVariable + "\ttext\n"s);
}

}  // namespace
}  // namespace vantrell
