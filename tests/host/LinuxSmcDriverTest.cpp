// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The Linux way to the System Management Controller: what is its own. What it has in common with every other is tested
// in tests/system, where controllers are simulated.
//
// The kernel's driver exists on Apple computers only. A fake with its rules stands for it where the selected key
// matters; plain files where it does not, as in a folder with one key.

#include <algorithm>
#include <barrier>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/PosixCodes.h"
#include "host/Host.h"
#include "host/linux/AppleSmcDriver.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/system/SmcFakeAttributes.h"

namespace vantrell {
namespace {

using host::AppleSmcDriver;
using host::SmcRecord;
using host::SmcReturnCode;
using tests::FakeAppleSmc;
using Writes = std::vector<std::string>;
namespace smc_command = host::smc_command;
namespace smc_result = host::smc_result;

std::uint32_t codeOf(std::string_view text) {
  std::uint32_t code = 0;
  for (const char c : text) code = code << 8 | static_cast<std::uint8_t>(c);
  return code;
}

struct Answer {
  SmcReturnCode code;
  SmcRecord record;
};

Answer callDriver(host::SmcDriver& driver, const SmcRecord& request) {
  const auto connection = std::move(driver.connect().value());
  EXPECT_EQ(connection->openUserClient(), host::kSmcSuccess);
  Answer answer{};
  answer.code = connection->call(request, answer.record);
  EXPECT_EQ(connection->closeUserClient(), host::kSmcSuccess);
  return answer;
}
Answer info(host::SmcDriver& driver, std::string_view key) {
  return callDriver(driver, {.key = codeOf(key), .command = smc_command::kKeyInfo});
}
Answer read(host::SmcDriver& driver, std::string_view key, std::uint32_t size) {
  return callDriver(driver, {.key = codeOf(key), .keyInfo = {.dataSize = size}, .command = smc_command::kReadValue});
}
Answer write(host::SmcDriver& driver, std::string_view key, std::uint8_t first, std::uint8_t second) {
  SmcRecord request{.key = codeOf(key), .keyInfo = {.dataSize = 2}, .command = smc_command::kWriteValue};
  request.bytes[0] = first;
  request.bytes[1] = second;
  return callDriver(driver, request);
}

class AppleSmc : public testing::Test {
 protected:
  AppleSmc() {
    smc_.keys = {{"#KEY", "ui32", std::string("\0\0\0\7", 4)},
                 {"F0Mn", "fpe2", "\x1F\x40"},
                 {"F0Tg", "fpe2", "\x1F\x40"},
                 {"F1Mn", "flt ", std::string(4, '\0')},
                 {"FNum", "ui8 ", "\2"},
                 {"FS! ", "ui16", std::string("\0\2", 2)},
                 {"TEST", "ch8*", std::string(32, 'x')}};
  }
  Writes writesTo(const std::string& start) const {
    Writes result;
    std::ranges::copy_if(smc_.writes, std::back_inserter(result),
                         [&](const auto& write) { return write.starts_with(start); });
    return result;
  }

  FakeAppleSmc smc_;
  AppleSmcDriver driver_{std::make_unique<tests::FakeSmcAttributes>(smc_)};
};

TEST_F(AppleSmc, IsMissingWhereThereIsNoFolder) {
  const tests::TemporaryFolder folder;
  for (const auto& path : {folder.path("none"), folder.makeFile("file"), std::string()}) {
    EXPECT_EQ(AppleSmcDriver(path).connect().error(), 0xE00002BC) << path;
  }
  smc_.exists = false;
  EXPECT_EQ(driver_.connect().error(), host::kSmcGeneralError);
}

TEST_F(AppleSmc, IsAPartOfTheHost) {
  const auto host = host::makeHost();
  ASSERT_TRUE(host.smcDriver);
  if (std::filesystem::exists(AppleSmcDriver::kFolder)) GTEST_SKIP() << "this computer has a controller";
  EXPECT_EQ(host.smcDriver->connect().error(), host::kSmcGeneralError);
}

TEST_F(AppleSmc, CountsKeysWithoutMovingTheWindow) {
  smc_.isRoot = false;
  smc_.selected = 3;
  EXPECT_EQ(info(driver_, "#KEY").record.keyInfo.dataType, codeOf("ui32"));
  EXPECT_EQ(read(driver_, "#KEY", 4).record.bytes[3], 7);
  EXPECT_TRUE(smc_.writes.empty());
  EXPECT_EQ(smc_.selected, 3U);
}

TEST_F(AppleSmc, NeedsRootForEveryOtherKey) {
  smc_.isRoot = false;
  EXPECT_EQ(info(driver_, "FNum").code, host::kSmcNotPrivileged);
  EXPECT_EQ(read(driver_, "FNum", 1).code, host::kSmcNotPrivileged);
  EXPECT_EQ(callDriver(driver_, {.command = smc_command::kKeyAtIndex}).code, host::kSmcNotPrivileged);
}

TEST_F(AppleSmc, RemembersWhereKeysAre) {
  EXPECT_EQ(info(driver_, "TEST").code, host::kSmcSuccess);
  smc_.writes.clear();
  EXPECT_EQ(read(driver_, "TEST", 32).record.bytes[31], 'x');
  EXPECT_EQ(read(driver_, "FNum", 1).record.bytes[0], 2);
  EXPECT_EQ(smc_.writes, (Writes{"key_at_index=6", "key_at_index=4"}));
  smc_.writes.clear();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(info(driver_, "none").record.result, smc_result::kKeyNotFound);
  EXPECT_TRUE(smc_.writes.empty()) << "all keys are known by now";
}

TEST_F(AppleSmc, ReadsAgainWhenSomebodyElseMovesTheWindow) {
  for (const std::string attribute :
       {"key_at_index", "key_at_index_name", "key_at_index_type", "key_at_index_data_length", "key_at_index_data"}) {
    int disturbances = 0;
    smc_.after = [&](const std::string& name) {
      if (name != attribute || disturbances == 3) return;
      ++disturbances;
      smc_.selected = 1;
    };
    const auto answer = read(driver_, "FNum", 1);
    EXPECT_EQ(answer.code, host::kSmcSuccess) << attribute;
    EXPECT_EQ(answer.record.result, smc_result::kSuccess) << attribute;
    EXPECT_EQ(answer.record.bytes[0], 2) << attribute;
    EXPECT_EQ(disturbances, 3) << attribute;
  }
}

TEST_F(AppleSmc, NamesTheRightKeyWhenSomebodyElseMovesTheWindow) {
  for (const std::string attribute : {"key_at_index", "key_at_index_name"}) {
    int disturbances = 0;
    smc_.after = [&](const std::string& name) {
      if (name == attribute && disturbances++ < 3) smc_.selected = 1;
    };
    const auto answer = callDriver(driver_, {.command = smc_command::kKeyAtIndex, .data32 = 4});
    EXPECT_EQ(answer.code, host::kSmcSuccess);
    EXPECT_EQ(answer.record.key, codeOf("FNum"));
    EXPECT_GE(disturbances, 4);
  }
}

TEST_F(AppleSmc, GivesUpWhenTheWindowIsNeverLeftAlone) {
  EXPECT_EQ(info(driver_, "FNum").code, host::kSmcSuccess);
  smc_.after = [&](const std::string& name) {
    if (name == "key_at_index") smc_.selected = 1;
  };
  EXPECT_EQ(read(driver_, "FNum", 1).code, host::kSmcInputOutputError);
  EXPECT_EQ(callDriver(driver_, {.command = smc_command::kKeyAtIndex, .data32 = 4}).code, host::kSmcInputOutputError);
  smc_.after = nullptr;
  EXPECT_EQ(read(driver_, "FNum", 1).record.bytes[0], 2) << "and finds its way again";
}

TEST_F(AppleSmc, TellsFailuresOfTheFilesFromRefusals) {
  for (const auto* attribute : {"key_at_index_name", "key_at_index_type", "key_at_index_data_length", "key_at_index"}) {
    smc_.failures = {{attribute, posix::kInputOutput}};
    EXPECT_EQ(read(driver_, "FNum", 1).code, host::kSmcInputOutputError) << attribute;
  }
  smc_.failures = {{"key_count", posix::kNoEntry}};
  EXPECT_EQ(read(driver_, "#KEY", 4).code, host::kSmcInputOutputError);
  smc_.failures = {{"key_at_index_data", posix::kInputOutput}};
  EXPECT_EQ(read(driver_, "FNum", 1).record.result, smc_result::kNotReadable) << "it may be write-only";
  EXPECT_EQ(read(driver_, "FNum", 1).code, host::kSmcSuccess);
  smc_.failures = {{"key_at_index_data", posix::kAccessDenied}};
  EXPECT_EQ(read(driver_, "FNum", 1).code, host::kSmcNotPrivileged);
}

TEST_F(AppleSmc, SurvivesNonsense) {
  for (const auto* count : {"", "\n", "-1\n", "7 keys\n", "99999999999999999999\n", "0x7\n", " 7\n"}) {
    smc_.keyCount = count;
    EXPECT_EQ(read(driver_, "#KEY", 4).code, host::kSmcInputOutputError) << count;
  }
  smc_.keyCount = "4294967295\n";
  EXPECT_EQ(read(driver_, "#KEY", 4).record.bytes[0], 0xFF) << "whoever asks judges the number";
  EXPECT_EQ(info(driver_, "none").code, host::kSmcInputOutputError) << "but nobody searches so many";
  smc_.keyCount.reset();
  for (const std::size_t size : {33, 255, 4000}) {
    smc_.keys[4].value.assign(size, 'x');
    EXPECT_EQ(info(driver_, "FNum").record.keyInfo.dataSize, size);
    EXPECT_NE(read(driver_, "FNum", static_cast<std::uint32_t>(size)).record.result, smc_result::kSuccess);
  }
  smc_.keys[4].type = "toolong";
  EXPECT_EQ(info(driver_, "FNum").code, host::kSmcInputOutputError);
}

TEST_F(AppleSmc, KeepsBytesOfCodesThatAreNotText) {
  smc_.keys[6] = {"\xFF\xFE", "\x80", "x"};
  const auto named = callDriver(driver_, {.command = smc_command::kKeyAtIndex, .data32 = 6});
  EXPECT_EQ(named.record.key, 0xFFFE0000);
  EXPECT_EQ(callDriver(driver_, {.key = 0xFFFE0000, .command = smc_command::kKeyInfo}).record.keyInfo.dataType,
            0x80000000);
}

TEST_F(AppleSmc, WritesSpeedsIntoTheFansFiles) {
  EXPECT_EQ(write(driver_, "F0Mn", 0x2E, 0xE0).record.result, smc_result::kSuccess);
  EXPECT_EQ(write(driver_, "F0Tg", 0xFF, 0xFC).record.result, smc_result::kSuccess);
  EXPECT_EQ(writesTo("fan"), (Writes{"fan1_min=3000", "fan1_output=16383"}));
  EXPECT_EQ(smc_.find("F0Mn")->value, "\x2E\xE0");
}

TEST_F(AppleSmc, RefusesSpeedsThatTheFilesCanNotTake) {
  for (const int fraction : {1, 2, 3}) {
    EXPECT_EQ(write(driver_, "F0Mn", 0x2E, static_cast<std::uint8_t>(0xE0 | fraction)).record.result,
              smc_result::kNotWritable);
  }
  SmcRecord request{.key = codeOf("F1Mn"), .keyInfo = {.dataSize = 4}, .command = smc_command::kWriteValue};
  EXPECT_EQ(callDriver(driver_, request).record.result, smc_result::kNotWritable) << "of another type";
  EXPECT_TRUE(writesTo("fan").empty());
}

TEST_F(AppleSmc, WritesOnlyTheBitsThatChange) {
  EXPECT_EQ(write(driver_, "FS! ", 0, 1).record.result, smc_result::kSuccess);
  EXPECT_EQ(writesTo("fan"), (Writes{"fan1_manual=1", "fan2_manual=0"}));
  smc_.writes.clear();
  EXPECT_EQ(write(driver_, "FS! ", 0, 1).record.result, smc_result::kSuccess);
  EXPECT_TRUE(writesTo("fan").empty());
}

TEST_F(AppleSmc, RefusesBitsOfFansThatThereAreNot) {
  EXPECT_EQ(write(driver_, "FS! ", 0, 7).record.result, smc_result::kNotWritable);
  EXPECT_EQ(write(driver_, "FS! ", 0x80, 2).record.result, smc_result::kNotWritable);
  EXPECT_TRUE(writesTo("fan").empty()) << "not even those of the others";
  EXPECT_EQ(smc_.find("FS! ")->value, std::string("\0\2", 2));
}

TEST_F(AppleSmc, RefusesToWriteEverythingElse) {
  smc_.keys.push_back({"F0Mx", "fpe2", "\0\0"});
  smc_.keys.push_back({"FxMn", "fpe2", "ab"});
  smc_.keys.push_back({"G0Mn", "fpe2", "ab"});
  smc_.keys.back().value = "ab";
  for (const auto* key : {"FxMn", "G0Mn"}) {
    EXPECT_EQ(write(driver_, key, 0, 4).record.result, smc_result::kNotWritable) << key;
  }
  EXPECT_TRUE(writesTo("fan").empty());
}

TEST_F(AppleSmc, TellsRefusedWritesFromForbiddenOnes) {
  for (const auto failure : {posix::kInputOutput, posix::kInvalidArgument, posix::kNoEntry}) {
    smc_.failures = {{"fan1_min", failure}};
    EXPECT_EQ(write(driver_, "F0Mn", 0, 4).record.result, smc_result::kNotWritable);
  }
  smc_.failures = {{"fan1_min", posix::kAccessDenied}};
  EXPECT_EQ(write(driver_, "F0Mn", 0, 4).code, host::kSmcNotPrivileged);
  smc_.failures = {{"fan1_min", posix::kReadOnlyFileSystem}};
  EXPECT_EQ(write(driver_, "F0Mn", 0, 4).code, host::kSmcInputOutputError);
  smc_.failures = {{"fan2_manual", posix::kInputOutput}};
  EXPECT_EQ(write(driver_, "FS! ", 0, 1).record.result, smc_result::kNotWritable);
}

// The window is shared: without a lock, threads would read each other's keys.
TEST(AppleSmcConcurrent, ThreadsDoNotReadEachOthersKeys) {
  FakeAppleSmc smc;
  smc.keys = {{"#KEY", "ui32", std::string("\0\0\0\5", 4)},
              {"KEY1", "ui8 ", "\1"},
              {"KEY2", "ui8 ", "\2"},
              {"KEY3", "ui8 ", "\3"},
              {"KEY4", "ui8 ", "\4"}};
  AppleSmcDriver driver(std::make_unique<tests::FakeSmcAttributes>(smc));
  std::barrier start(4);
  std::vector<std::jthread> threads;
  for (std::uint8_t number = 1; number <= 4; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      for (int round = 0; round < 200; ++round) {
        const auto answer = read(driver, "KEY" + std::to_string(number), 1);
        EXPECT_EQ(answer.code, host::kSmcSuccess);
        EXPECT_EQ(answer.record.bytes[0], number);
      }
    });
  }
}

/// Plain files as the driver would show them for its first key.
class AppleSmcFolder : public testing::Test {
 protected:
  AppleSmcFolder() {
    folder_.makeFile("key_count", "1\n");
    folder_.makeFile("key_at_index", "1234\n");
    folder_.makeFile("key_at_index_name", "F0Mn\n");
    folder_.makeFile("key_at_index_type", "fpe2\n");
    folder_.makeFile("key_at_index_data_length", "2\n");
    folder_.makeFile("key_at_index_data", "\x1F\x40");
    folder_.makeFile("fan1_min", "2000\n");
  }
  std::string contentOf(const char* name) const {
    std::ifstream file(folder_.path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  tests::TemporaryFolder folder_;
  AppleSmcDriver driver_{folder_.path()};
};

TEST_F(AppleSmcFolder, ReadsAndWritesFiles) {
  EXPECT_EQ(callDriver(driver_, {.command = smc_command::kKeyAtIndex}).record.key, codeOf("F0Mn"));
  EXPECT_EQ(contentOf("key_at_index"), "0");
  EXPECT_EQ(info(driver_, "F0Mn").record.keyInfo.dataSize, 2U);
  EXPECT_EQ(read(driver_, "F0Mn", 2).record.bytes[1], 0x40);
  EXPECT_EQ(write(driver_, "F0Mn", 0x02, 0x00).record.result, smc_result::kSuccess);
  EXPECT_EQ(contentOf("fan1_min"), "128");
}

TEST_F(AppleSmcFolder, MakesNoFiles) {
  std::filesystem::remove(folder_.path("fan1_min"));
  EXPECT_EQ(write(driver_, "F0Mn", 0x02, 0x00).record.result, smc_result::kNotWritable);
  EXPECT_FALSE(std::filesystem::exists(folder_.path("fan1_min")));
}

TEST_F(AppleSmcFolder, SurvivesFilesThatAreNoAttributes) {
  folder_.makeFile("key_at_index_type", std::string(1'000'000, 'x'));
  EXPECT_EQ(info(driver_, "F0Mn").code, host::kSmcInputOutputError);
  const auto replace = [&](const char* name) { std::filesystem::remove(folder_.path(name)); };
  replace("key_at_index_type");
  ASSERT_EQ(mkfifo(folder_.path("key_at_index_type").c_str(), 0600), 0);
  EXPECT_NE(info(driver_, "F0Mn").record.keyInfo.dataType, codeOf("fpe2")) << "and does not wait for a writer";
  replace("key_at_index_type");
  folder_.makeLink("key_at_index_type", "key_at_index_name");
  EXPECT_EQ(info(driver_, "F0Mn").code, host::kSmcInputOutputError) << "links are not followed";
  replace("key_count");
  folder_.makeFolder("key_count");
  EXPECT_EQ(read(driver_, "#KEY", 4).code, host::kSmcInputOutputError);
}

}  // namespace
}  // namespace vantrell
