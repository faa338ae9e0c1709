// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <bit>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "system/QELSystemManagementController.h"
#include "tests/support/RecordingLog.h"
#include "tests/system/SmcScriptedDriver.h"

namespace vantrell {
namespace {

using Controller = QELSystemManagementController;
using Key = SimulatedSmc::Key;
using Keys = std::vector<Key>;
using host::SmcRecord;
using host::SmcReturnCode;
using tests::ScriptedSmc;
namespace smc_command = host::smc_command;

const auto readOnly = SimulatedSmc::readOnlyKey;
const auto readWrite = SimulatedSmc::readWriteKey;

constexpr char kNoKeys[] = "QELSystemManagementController: could not determine available keys on this platform";

class SystemManagementController : public testing::Test {
 protected:
  explicit SystemManagementController(Keys keys = SimulatedSmc::everyKindOfKey()) : driver_(std::move(keys)) {}

  void SetUp() override {
    controller_ = Controller::init(driver_, log_);
    ASSERT_TRUE(controller_);
    driver_.calls.clear();
  }
  void useKeys(Keys keys) {
    alternative_ = std::make_unique<ScriptedSmc>(std::move(keys));
    controller_ = Controller::init(*alternative_, log_);
    ASSERT_TRUE(controller_);
  }
  std::optional<Value> valueOf(const char* key) { return controller_->valueForProperty(key); }
  std::optional<Value> valueOf(Key key) {
    const auto name = stringFromSMCKey(key.code);
    useKeys({std::move(key)});
    return controller_->valueForProperty(name);
  }

  tests::RecordingLog log_;
  ScriptedSmc driver_;
  std::unique_ptr<ScriptedSmc> alternative_;
  std::unique_ptr<Controller> controller_;
};
using SystemManagementControllerStart = SystemManagementController;

TEST_F(SystemManagementControllerStart, AsksForEveryKeyOnce) {
  ScriptedSmc driver({readOnly("REV ", "{rev", Data(6)), readOnly("FNum", "ui8", {2})});
  const auto controller = Controller::init(driver, log_);
  ASSERT_TRUE(controller);
  EXPECT_EQ(controller->availableKeys(), (std::set<std::string>{"#KEY", "FNum", "REV "}));
  EXPECT_TRUE(controller->propertyCache().empty());
  std::vector<std::uint32_t> indexes;
  for (const auto& call : driver.calls) {
    if (call.command == smc_command::kKeyAtIndex) indexes.push_back(call.data32);
  }
  EXPECT_EQ(indexes, (std::vector<std::uint32_t>{0, 1, 2}));
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(SystemManagementControllerStart, FailsWithoutTheService) {
  driver_.connectCode = host::kSmcGeneralError;
  EXPECT_FALSE(Controller::init(driver_, log_));
  ASSERT_EQ(log_.entries().size(), 1U);
  EXPECT_EQ(log_.entries()[0], (tests::RecordingLog::Entry{host::LogLevel::Default, "", "", kNoKeys}));
}

TEST_F(SystemManagementControllerStart, FailsWhenTheCountIsOfAnotherTypeOrAbsurd) {
  const std::pair<const char*, std::uint32_t> kAnswers[] = {
      {"ui16", 1}, {"ui3\0", 1}, {"UI32", 1}, {"ui32", 1 << 17}, {"ui32", 0xFFFFFFFF}};
  for (const auto& [type, count] : kAnswers) {
    log_.clear();
    driver_.answer = [&](const SmcRecord& input, SmcRecord& output, SmcReturnCode&) {
      if (input.command == smc_command::kKeyInfo) output.keyInfo = {.dataSize = 4, .dataType = smcKeyFromString(type)};
      for (unsigned i = 0; i < 4; ++i) output.bytes[i] = static_cast<std::uint8_t>(count >> (24 - 8 * i));
      return true;
    };
    EXPECT_FALSE(Controller::init(driver_, log_)) << type << count;
    EXPECT_EQ(log_.messages(), std::vector<std::string>{kNoKeys});
    EXPECT_EQ(driver_.callsWith(smc_command::kKeyAtIndex), 0U);
  }
}

TEST_F(SystemManagementControllerStart, TakesTheGreatestCountWithoutAHitch) {
  driver_.answer = [&](const SmcRecord& input, SmcRecord& output, SmcReturnCode&) {
    if (input.command == smc_command::kKeyInfo) output.keyInfo = {.dataSize = 4, .dataType = smcCode("ui32")};
    if (input.command == smc_command::kReadValue) output.bytes[1] = 1;  // 65536
    output.key = smcCode("SAME");
    return true;
  };
  const auto controller = Controller::init(driver_, log_);
  ASSERT_TRUE(controller);
  EXPECT_EQ(controller->availableKeys(), std::set<std::string>{"SAME"});
  EXPECT_EQ(driver_.callsWith(smc_command::kKeyAtIndex), Controller::kMaximumKeyCount);
}

TEST_F(SystemManagementControllerStart, FailsWhenAKeyIsNotToBeHad) {
  for (const bool callFails : {true, false}) {
    log_.clear();
    driver_.answer = [&](const SmcRecord& input, SmcRecord& output, SmcReturnCode& code) {
      if (input.command != smc_command::kKeyAtIndex || input.data32 != 3) return false;
      callFails ? code = 0xE00002D8 : output.result = 1;
      return true;
    };
    EXPECT_FALSE(Controller::init(driver_, log_));
    ASSERT_EQ(log_.entries().size(), 1U);
    EXPECT_EQ(log_.entries()[0],
              (tests::RecordingLog::Entry{host::LogLevel::Default, "", "",
                                          "QELSystemManagementController: could not get key at index 3"}));
  }
}

TEST_F(SystemManagementController, GivesAnEntryOfFourParts) {
  const auto before = Date::now();
  const auto entry = controller_->updateCacheForProperty("F0Ac");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->size(), 4U);
  EXPECT_EQ(*entry->find("Type"), Value("fpe2"));
  EXPECT_EQ(*entry->find("IsWriteOnly"), Value(false));
  EXPECT_EQ(*entry->find("Value"), Value(2000.0));
  EXPECT_GE(*entry->find("LastAccess")->asDate(), before);
  EXPECT_LE(*entry->find("LastAccess")->asDate(), Date::now());
}

TEST_F(SystemManagementController, NeverStoresAnEntry) {
  static_cast<void>(controller_->updateCacheForProperty("F0Ac"));
  EXPECT_TRUE(controller_->propertyCache().empty());
  driver_.calls.clear();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(valueOf("F0Ac"), Value(2000.0));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(controller_->typeCodeOfProperty("F0Ac"), "fpe2");
  EXPECT_FALSE(controller_->isWriteOnlyProperty("F0Ac"));
  EXPECT_EQ(driver_.callsWith(smc_command::kReadValue), 6U) << "each query reads the controller";
  EXPECT_TRUE(controller_->propertyCache().empty());
}

TEST_F(SystemManagementController, TakesAFreshEntryThatSomebodyPutIn) {
  const auto entryOfAge = [](std::int64_t seconds) {
    auto date = Date::now();
    date.seconds -= seconds;
    return Dictionary{{"Type", "fake"}, {"IsWriteOnly", true}, {"Value", "cached"}, {"LastAccess", date}};
  };
  controller_->propertyCache().set("F0Ac", entryOfAge(0));
  EXPECT_EQ(valueOf("F0Ac"), Value("cached"));
  controller_->propertyCache().set("F0Ac", entryOfAge(2));
  EXPECT_EQ(valueOf("F0Ac"), Value(2000.0)) << "too old";
  EXPECT_EQ(controller_->typeCodeOfProperty("F0Ac"), "fake") << "of any age";
  EXPECT_TRUE(controller_->isWriteOnlyProperty("F0Ac"));
  controller_->propertyCache().set("none", entryOfAge(0));
  EXPECT_EQ(valueOf("none"), std::nullopt) << "not among the keys";
}

TEST_F(SystemManagementController, KnowsNothingOfKeysThatItDoesNotHave) {
  for (const auto* key : {"", "F9Ac", "f0ac", "F0A", "F0Acx"}) {
    EXPECT_EQ(controller_->updateCacheForProperty(key), std::nullopt);
    EXPECT_EQ(valueOf(key), std::nullopt);
    EXPECT_EQ(controller_->typeCodeOfProperty(key), std::nullopt);
    EXPECT_FALSE(controller_->isWriteOnlyProperty(key));
    EXPECT_EQ(controller_->precisionDeltaOfNumericProperty(key), -1.0);
    EXPECT_EQ(controller_->maximumFractionDigitsOfNumericProperty(key), ~std::uint64_t{0});
  }
  EXPECT_TRUE(driver_.calls.empty());
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(SystemManagementController, MarksWriteOnlyProperties) {
  EXPECT_EQ(valueOf("KPPW"), Value("<write-only property>"));
  EXPECT_TRUE(controller_->isWriteOnlyProperty("KPPW"));
  EXPECT_EQ(controller_->typeCodeOfProperty("KPPW"), "ui16");
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(SystemManagementController, DecodesTheEmptyBufferOfWriteOnlyPropertiesOfAnySize) {
  EXPECT_EQ(valueOf(SimulatedSmc::writeOnlyKey("Text", "ch8*", {1})), Value(std::string(255, '\0')));
  std::string dump;
  for (int i = 0; i < 255; ++i) dump += "00 ";
  EXPECT_EQ(valueOf(SimulatedSmc::writeOnlyKey("Dump", "hex_", {1})), Value(dump));
  EXPECT_EQ(valueOf(SimulatedSmc::writeOnlyKey("What", "{zzz", {1})), Value("<decoding is currently not implemented>"));
  EXPECT_TRUE(controller_->isWriteOnlyProperty("What"));
}

TEST_F(SystemManagementController, LogsPropertiesThatCanNotBeRead) {
  for (const auto* key : {"zHID", "zERR"}) {
    log_.clear();
    EXPECT_EQ(valueOf(key), std::nullopt);
    ASSERT_EQ(log_.entries().size(), 1U);
    EXPECT_EQ(log_.entries()[0],
              (tests::RecordingLog::Entry{host::LogLevel::Default, "", "",
                                          "QELSystemManagementController: failed to get value for key '" +
                                              std::string(key) + "' (error -536870160)"}));
  }
}

TEST_F(SystemManagementController, LogsTheCodeOfAFailedCall) {
  driver_.answer = [](const SmcRecord&, SmcRecord&, SmcReturnCode& code) {
    code = 0xE00002BC;
    return true;
  };
  EXPECT_EQ(valueOf("FNum"), std::nullopt);
  EXPECT_TRUE(log_.contains("QELSystemManagementController: failed to get value for key 'FNum' (error -536870212)"));
}

TEST_F(SystemManagementController, TellsOfValuesThatDoNotFitTheirType) {
  EXPECT_EQ(valueOf("MSSD"), Value("<received 4 bytes for type 'ui16': mismatch detected>"));
  EXPECT_EQ(valueOf(readOnly("Odd ", "ui8", {1, 2})), Value("<received 2 bytes for type 'ui8 ': mismatch detected>"));
  EXPECT_EQ(valueOf(readOnly("Odd ", "si8 ", {0xFF})), Value("<received 1 bytes for type 'si8 ': mismatch detected>"));
  EXPECT_EQ(valueOf(readOnly("Odd ", "fp87", {1, 2})), Value("<received 2 bytes for type 'fp87': mismatch detected>"));
  EXPECT_EQ(valueOf(readOnly("Odd ", "{fds", Data(15))),
            Value("<received 15 bytes for type '{fds': mismatch detected>"));
  EXPECT_EQ(valueOf(readOnly("Odd ", "flag", {})), Value("<received 0 bytes for type 'flag': mismatch detected>"));
}

TEST_F(SystemManagementController, ReadsEveryKeyOfTheSimulatedController) {
  for (const auto& key : controller_->availableKeys()) {
    const auto value = controller_->valueForProperty(key);
    EXPECT_EQ(value.has_value(), key != "zHID" && key != "zERR") << key;
  }
  EXPECT_EQ(valueOf("#KEY"), Value(controller_->availableKeys().size()));
  EXPECT_EQ(valueOf("TB0T"), Value(30.5));
  EXPECT_EQ(valueOf("TA0P"), Value(-0.5));
  EXPECT_EQ(valueOf("PCPT"), Value(12.75));
  EXPECT_EQ(valueOf("NATJ"), Value("<decoding is currently not implemented>"));
  EXPECT_EQ(valueOf("F1ID")->asDictionary()->size(), 4U);
}

TEST_F(SystemManagementController, SurvivesKeysThatAreNotText) {
  useKeys({{.code = 0xFF00FFFE, .type = smcCode("ui8 "), .value = {1}},
           {.code = 0xC3A96162, .type = smcCode("ui8 "), .value = {2}},
           {.code = smcCode("Type"), .type = 0xFFFEFDFC, .value = {3}}});
  EXPECT_EQ(controller_->availableKeys().size(), 4U);
  EXPECT_EQ(valueOf("\xC3\xA9"
                    "ab"),
            Value(2))
      << "text of three characters, but four bytes";
  EXPECT_EQ(controller_->typeCodeOfProperty("Type"), "\xC3\xBF\xC3\xBE\xC3\xBD\xC3\xBC");
  EXPECT_EQ(valueOf("\xC3\xBF   "), std::nullopt) << "a key that can't be named";
  EXPECT_EQ(log_.countContaining("(error -536870178)"), 1U);
}

TEST_F(SystemManagementController, SurvivesAControllerThatChangesItsMind) {
  driver_.answer = [](const SmcRecord& input, SmcRecord& output, SmcReturnCode&) {
    output.keyInfo.dataType = smcCode("{fds");
    output.keyInfo.dataSize = input.command == smc_command::kKeyInfo ? 16 : 0xFFFFFFFF;
    output.bytes.fill(0xFF);
    return true;
  };
  const auto value = valueOf("FNum");
  ASSERT_TRUE(value && value->asDictionary());
  EXPECT_EQ(value->asDictionary()->find("SMCFanFunction")->asString()->size(), 24U) << "12 characters of Latin-1";
}

TEST_F(SystemManagementController, KnowsThePrecisionOfFixedPointProperties) {
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty("VD0R"), 1.0 / 256);
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty("TB0T"), 1.0 / 256);
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty("F0Ac"), 0.25);
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty("PCPT"), 1.0);
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty("FNum"), -1.0);
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty("zHID"), -1.0);
  EXPECT_EQ(controller_->precisionDeltaOfNumericProperty(""), -1.0);
}

TEST_F(SystemManagementController, CountsFractionDigitsByTheLastCharacterOfTheType) {
  const std::pair<const char*, std::uint64_t> kDigits[] = {{"fp88", 8}, {"fp6a", 1}, {"fp1f", 6},
                                                           {"fpe2", 2}, {"sf78", 8}, {"sp78", 0},
                                                           {"flt ", 0}, {"ui16", 0}, {"fp  ", 0}};
  for (const auto& [type, digits] : kDigits) {
    useKeys({readOnly("Some", type, {0, 0})});
    EXPECT_EQ(controller_->maximumFractionDigitsOfNumericProperty("Some"), digits) << type;
  }
  EXPECT_EQ(controller_->maximumFractionDigitsOfNumericProperty("none"), Controller::kNoFractionDigits);
  useKeys({{.code = smcCode("Some"), .infoResult = 132}});
  EXPECT_EQ(controller_->maximumFractionDigitsOfNumericProperty("Some"), ~std::uint64_t{0});
}

TEST_F(SystemManagementController, TellsItsVersions) {
  EXPECT_EQ(controller_->softwareVersion(), "1.68f10");
  EXPECT_EQ(controller_->softwareBranchAndBuildGeneration(), "2012-07 (2)");
}

TEST_F(SystemManagementController, TellsUnknownVersions) {
  useKeys({});
  EXPECT_EQ(controller_->softwareVersion(), "<?>");
  EXPECT_EQ(controller_->softwareBranchAndBuildGeneration(), "<?>");
  const auto branch = readOnly("RBr ", "ch8*", {'b'});
  useKeys({readOnly("REV ", "ui8 ", {1}), branch});
  EXPECT_EQ(controller_->softwareVersion(), "<?>") << "a number";
  EXPECT_EQ(controller_->softwareBranchAndBuildGeneration(), "<?>") << "no generation";
  useKeys({readOnly("RBr ", "ui8 ", {1}), readOnly("RSvn", "ui32", Data(4))});
  EXPECT_EQ(controller_->softwareBranchAndBuildGeneration(), "<?>") << "the branch is a number";
  useKeys({branch, readOnly("RSvn", "ch8*", {'1'})});
  EXPECT_EQ(controller_->softwareBranchAndBuildGeneration(), "<?>") << "the generation is text";
  useKeys({branch, readOnly("RSvn", "ui32", {0xFF, 0xFF, 0xFF, 0xFE})});
  EXPECT_EQ(controller_->softwareBranchAndBuildGeneration(), "b (4294967294)");
}

TEST_F(SystemManagementController, WritesRawBytes) {
  EXPECT_TRUE(controller_->writeRawBytes(Data{0x2E, 0xE0}, "F0Mn"));
  EXPECT_EQ(driver_.smc.valueOfKey("F0Mn"), (Data{0x2E, 0xE0}));
  ASSERT_EQ(driver_.calls.size(), 2U);
  EXPECT_EQ(driver_.calls[0].command, 9);
  EXPECT_EQ(driver_.calls[0].key, smcCode("F0Mn"));
  EXPECT_EQ(driver_.calls[1].command, 6);
  EXPECT_EQ(driver_.calls[1].key, smcCode("F0Mn"));
  EXPECT_EQ(driver_.calls[1].keyInfo.dataSize, 2U);
  EXPECT_EQ(driver_.calls[1].bytes[1], 0xE0);
  EXPECT_EQ(driver_.calls[1].bytes[2], 0);
  EXPECT_EQ(valueOf("F0Mn"), Value(3000.0));
}

TEST_F(SystemManagementController, WritesNothingToWhatIsNoKey) {
  for (const auto* key : {"", "FNu", "FNumx"}) EXPECT_FALSE(controller_->writeRawBytes(Data{1}, key)) << key;
  EXPECT_FALSE(controller_->writeRawBytes(Data{1}, std::string_view("\0\0\0\0", 4)));
  EXPECT_FALSE(controller_->writeRawBytes({}, "FNum"));
  EXPECT_TRUE(driver_.steps.size() > 0 && driver_.calls.empty()) << "no call for any of them";
}

TEST_F(SystemManagementController, ComparesTheSizeAfterAskingForIt) {
  EXPECT_FALSE(controller_->writeRawBytes(Data{1, 2, 3}, "F0Mn"));
  ASSERT_EQ(driver_.calls.size(), 1U);
  EXPECT_EQ(driver_.calls[0].command, 9);
  EXPECT_EQ(driver_.smc.valueOfKey("F0Mn"), (Data{0x1F, 0x40}));
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(SystemManagementController, ComparesOnlyTheLowByteOfTheLength) {
  Data bytes(258, 0xAA);
  bytes[0] = 0x04;
  bytes[1] = 0xB0;
  EXPECT_TRUE(controller_->writeRawBytes(bytes, "F0Mn"));
  EXPECT_EQ(driver_.smc.valueOfKey("F0Mn"), (Data{0x04, 0xB0}));
  EXPECT_EQ(driver_.calls.back().keyInfo.dataSize, 2U);
  EXPECT_EQ(driver_.calls.back().bytes[2], 0) << "two bytes only";
}

TEST_F(SystemManagementController, SendsNoByteForALengthOf256) {
  useKeys({readWrite("Void", "hex_", {})});
  alternative_->calls.clear();
  EXPECT_TRUE(controller_->writeRawBytes(Data(256, 0xAA), "Void"));
  EXPECT_EQ(alternative_->calls.back().bytes, (std::array<std::uint8_t, 32>{}));
}

TEST_F(SystemManagementController, SendsNoMoreThan32Bytes) {
  driver_.answer = [](const SmcRecord&, SmcRecord& output, SmcReturnCode&) {
    output.keyInfo.dataSize = 200;
    return true;
  };
  EXPECT_TRUE(controller_->writeRawBytes(Data(200, 0xAA), "FNum"));
  EXPECT_EQ(std::ranges::count(driver_.calls.back().bytes, 0xAA), 32);
  EXPECT_EQ(driver_.calls.back().keyInfo.dataSize, 200U);
}

TEST_F(SystemManagementController, FailsToWriteWhenTheKeyIsNotToBeHad) {
  EXPECT_FALSE(controller_->writeRawBytes(Data{1}, "none"));
  EXPECT_EQ(driver_.calls.size(), 1U);
  driver_.answer = [](const SmcRecord&, SmcRecord& output, SmcReturnCode& code) {
    output.keyInfo.dataSize = 1;
    code = 0xE00002BC;
    return true;
  };
  EXPECT_FALSE(controller_->writeRawBytes(Data{1}, "FNum"));
  EXPECT_TRUE(log_.entries().empty()) << "only the write itself is logged";
}

TEST_F(SystemManagementController, FailsOnEveryResultOfAWriteButZero) {
  for (unsigned result = 0; result < 256; ++result) {
    driver_.answer = [&](const SmcRecord& input, SmcRecord& output, SmcReturnCode&) {
      output.result = static_cast<std::uint8_t>(result);
      return input.command == smc_command::kWriteValue;
    };
    EXPECT_EQ(controller_->writeRawBytes(Data{1, 2}, "F0Mn"), result == 0) << result;
  }
  EXPECT_TRUE(log_.entries().empty());
  driver_.answer = nullptr;
  EXPECT_FALSE(controller_->writeRawBytes(Data{1}, "FNum")) << "read-only";
}

TEST_F(SystemManagementController, LogsTheThreePartsOfAFailedWritesCode) {
  const std::pair<SmcReturnCode, const char*> kCodes[] = {
      {0xE00002BC, "SMC write failure: system 0x38 subsystem 0x0 error code 0x2bc."},
      {0xFFFFFFFF, "SMC write failure: system 0x3f subsystem 0xfff error code 0x3fff."},
      {0x04008001, "SMC write failure: system 0x1 subsystem 0x2 error code 0x1."}};
  for (const auto& [failure, message] : kCodes) {
    log_.clear();
    driver_.answer = [code = failure](const SmcRecord& input, SmcRecord&, SmcReturnCode& returned) {
      returned = code;
      return input.command == smc_command::kWriteValue;
    };
    EXPECT_FALSE(controller_->writeRawBytes(Data{1, 2}, "F0Mn"));
    EXPECT_EQ(log_.messages(), std::vector<std::string>{message});
  }
}

}  // namespace
}  // namespace vantrell
