// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Codes, fixed-point types, and what values of each type mean.

#include <bit>
#include <cmath>
#include <limits>
#include <set>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "system/QELSystemManagementController.h"
#include "system/SmcCodes.h"
#include "system/SmcFixedPoint.h"
#include "system/SmcRecordTypes.h"
#include "system/SmcValueDecoder.h"

namespace vantrell {
namespace {

using Controller = QELSystemManagementController;

/// As a property is read: into a buffer of 255 zero bytes.
std::optional<Value> decoded(std::uint32_t type, const Data& bytes) {
  Data buffer(255);
  std::ranges::copy(bytes, buffer.begin());
  return decodedSmcValue(type, buffer, bytes.size());
}
std::optional<Value> decoded(std::string_view type, const Data& bytes) {
  return decoded(smcKeyFromString(type), bytes);
}
Number::Kind kindOf(const std::optional<Value>& value) {
  return value.value().asNumber()->kind();
}

TEST(SmcCodes, TakeTheFirstCharacterForTheHighestByte) {
  EXPECT_EQ(Controller::smcKeyFromString("#KEY"), 0x234B4559U);
  EXPECT_EQ(Controller::smcKeyFromString("FS! "), 0x46532120U);
  EXPECT_EQ(Controller::smcKeyFromString("\xFF\xFF\xFF\xFF"), 0xFFFFFFFFU);
  EXPECT_EQ(Controller::smcKeyFromString("\xC3\xA9"
                                         "ab"),
            0xC3A96162U);
  EXPECT_EQ(smcCode("#KEY"), 0x234B4559U);
  EXPECT_EQ(smcCode("ui8\0"), 0x75693800U);
}

TEST(SmcCodes, AreZeroForTextsOfAnotherLength) {
  for (const auto* text : {"", "F", "FNu", "FNumx",
                           "\xC3\xA9"
                           "abc"}) {
    EXPECT_EQ(Controller::smcKeyFromString(text), 0U) << text;
  }
}

TEST(SmcCodes, BecomeTextOfFourCharacters) {
  EXPECT_EQ(Controller::stringFromSMCKey(0x234B4559), "#KEY");
  EXPECT_EQ(Controller::stringFromSMCKey(smcCode("ui8\0")), "ui8 ");
  EXPECT_EQ(Controller::stringFromSMCKey(smcCode("ui8 ")), "ui8 ");
  EXPECT_EQ(Controller::stringFromSMCKey(smcCode("a\0bc")), "a   ") << "cut at the zero byte";
  EXPECT_EQ(Controller::stringFromSMCKey(0), "    ");
}

TEST(SmcCodes, BecomeValidTextWhateverTheirBytes) {
  EXPECT_EQ(Controller::stringFromSMCKey(0xC3A96162),
            "\xC3\xA9"
            "ab");
  EXPECT_EQ(Controller::stringFromSMCKey(0xFF616263),
            "\xC3\xBF"
            "abc");
  EXPECT_NE(Controller::stringFromSMCKey(0xFE616263), Controller::stringFromSMCKey(0xFF616263));
}

TEST(SmcDivisors, ArePowersOfTwoForTheUnsignedTypes) {
  const char* const kTypes[] = {"fpf1", "fpe2", "fpd3", "fpc4", "fpb5", "fpa6", "fp97", "fp88",
                                "fp79", "fp6a", "fp5b", "fp4c", "fp3d", "fp2e", "fp1f"};
  double divisor = 1;
  for (const auto* type : kTypes) {
    divisor *= 2;
    EXPECT_EQ(Controller::divisorForFloatingPointCode(smcKeyFromString(type)), divisor) << type;
  }
  EXPECT_EQ(divisor, 32768.0);
}

TEST(SmcDivisors, ArePowersOfTwoForTheSignedTypes) {
  const char* const kTypes[] = {"spf0", "spe1", "spd2", "spc3", "spb4", "spa5", "sp96", "sp87",
                                "sp78", "sp69", "sp5a", "sp4b", "sp3c", "sp2d", "sp1e", "sp0f"};
  double divisor = 0.5;
  for (const auto* type : kTypes) {
    divisor *= 2;
    EXPECT_EQ(Controller::divisorForFloatingPointCode(smcKeyFromString(type)), divisor) << type;
  }
  EXPECT_EQ(divisor, 32768.0);
}

TEST(SmcDivisors, AreOneForFloatsAndMinusOneForEverythingElse) {
  EXPECT_EQ(Controller::divisorForFloatingPointCode(smcCode("flt ")), 1.0);
  for (const auto* type : {"fp0f", "fpf0", "fp87", "fp89", "fpff", "fp00", "sp88", "sp77", "spf1", "spff", "fpE2",
                           "fp8 ", "sf78", "ui16", "flt\0", "xp88", "fpg0", "SP78"}) {
    EXPECT_EQ(Controller::divisorForFloatingPointCode(smcKeyFromString(type)), -1.0) << type;
  }
  EXPECT_EQ(Controller::divisorForFloatingPointCode(0), -1.0);
}

TEST(SmcDivisors, AreKnownFor32TypesInAll) {
  int known = 0;
  constexpr std::string_view kDigits = "0123456789abcdef";
  for (const auto* family : {"fp", "sp", "sf", "si"}) {
    for (const char first : kDigits) {
      for (const char second : kDigits) {
        const auto type = std::string(family) + first + second;
        if (divisorForSmcType(smcKeyFromString(type)) > 0) ++known;
      }
    }
  }
  EXPECT_EQ(known + 1, 32) << "31 fixed-point types and \"flt \"";
}

TEST(SmcEncoding, TruncatesTowardZero) {
  EXPECT_EQ(Controller::getSMCShort(31.25, "fp88"), 0x1F40);
  EXPECT_EQ(Controller::getSMCShort(2000, "fpe2"), 0x1F40);
  EXPECT_EQ(Controller::getSMCShort(-0.5, "sp78"), 0xFF80);
  EXPECT_EQ(Controller::getSMCShort(0.999999, "spf0"), 0);
  EXPECT_EQ(Controller::getSMCShort(-0.999999, "spf0"), 0);
  EXPECT_EQ(Controller::getSMCShort(-1.999999, "spf0"), 0xFFFF);
  EXPECT_EQ(Controller::getSMCShort(1.999, "spe1"), 3);
  EXPECT_EQ(Controller::getSMCShort(-1.999, "spe1"), 0xFFFD);
  EXPECT_EQ(Controller::getSMCShort(1234.9, "flt "), 1234);
}

TEST(SmcEncoding, RefusesTypesWithoutADivisor) {
  for (const auto* type : {"", "ui16", "fp87", "f", "fp88x"}) {
    EXPECT_EQ(Controller::getSMCShort(1, type), std::nullopt) << type;
  }
}

TEST(SmcEncoding, GivesTheNearestThatTheTypeHolds) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Controller::getSMCShort(255.99999, "fp88"), 0xFFFF);
  EXPECT_EQ(Controller::getSMCShort(256, "fp88"), 0xFFFF);
  EXPECT_EQ(Controller::getSMCShort(-0.001, "fp88"), 0);
  EXPECT_EQ(Controller::getSMCShort(-1, "fp88"), 0);
  EXPECT_EQ(Controller::getSMCShort(127.999, "sp78"), 0x7FFF);
  EXPECT_EQ(Controller::getSMCShort(128, "sp78"), 0x7FFF);
  EXPECT_EQ(Controller::getSMCShort(-128, "sp78"), 0x8000);
  EXPECT_EQ(Controller::getSMCShort(-129, "sp78"), 0x8000);
  EXPECT_EQ(Controller::getSMCShort(65535, "flt "), 0xFFFF);
  EXPECT_EQ(Controller::getSMCShort(70000, "flt "), 0xFFFF);
  EXPECT_EQ(Controller::getSMCShort(-40000, "flt "), 0x8000);
  for (const auto* type : {"fp1f", "flt "}) {
    EXPECT_EQ(Controller::getSMCShort(kInfinity, type), 0xFFFF) << type;
    EXPECT_EQ(Controller::getSMCShort(1e308, type), 0xFFFF) << type;
    EXPECT_EQ(Controller::getSMCShort(kNaN, type), 0) << type;
  }
  EXPECT_EQ(Controller::getSMCShort(-kInfinity, "sp0f"), 0x8000);
  EXPECT_EQ(Controller::getSMCShort(kNaN, "sp0f"), 0);
}

TEST(SmcEncoding, IsReadBackByTheDecoder) {
  for (const auto* type : {"fp1f", "fp88", "fpf1", "sp0f", "sp78", "spf0"}) {
    const auto divisor = divisorForSmcType(smcKeyFromString(type));
    for (const int raw : {0, 1, 2, 255, 256, 32767}) {
      const auto bits = Controller::getSMCShort(raw / divisor, type).value();
      const Data bytes{static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)};
      EXPECT_EQ(decoded(type, bytes), Value(raw / divisor)) << type << " " << raw;
    }
  }
}

TEST(SmcDecoding, ReadsBytesAsUnsignedNumbers) {
  for (const auto type : {smcCode("byte"), smcCode("ui8\0"), smcCode("ui8 "), smcCode("{lsm"), smcCode("{lss"),
                          smcCode("{msp"), smcCode("{mss")}) {
    EXPECT_EQ(decoded(type, {200}), Value(200)) << stringFromSMCKey(type);
    EXPECT_EQ(kindOf(decoded(type, {200})), Number::Kind::Unsigned);
    EXPECT_EQ(decoded(type, {}), std::nullopt);
    EXPECT_EQ(decoded(type, {1, 2}), std::nullopt);
  }
}

TEST(SmcDecoding, ReadsOneCharacter) {
  EXPECT_EQ(decoded("char", {'C'}), Value("C"));
  EXPECT_EQ(decoded("char", {0}), Value(std::string(1, '\0')));
  EXPECT_EQ(decoded("char", {0xE9}), Value("\xC3\xA9"));
  EXPECT_EQ(decoded("char", {'a', 'b'}), std::nullopt);
}

TEST(SmcDecoding, ReadsFlagsAsBooleans) {
  EXPECT_EQ(decoded("flag", {0}), Value(false));
  EXPECT_EQ(decoded("flag", {1}), Value(true));
  EXPECT_EQ(decoded("flag", {0x80}), Value(true));
  EXPECT_EQ(kindOf(decoded("flag", {2})), Number::Kind::Boolean);
  EXPECT_EQ(decoded("flag", {0, 0}), std::nullopt);
}

TEST(SmcDecoding, ReadsFloatsInHostByteOrder) {
  const auto bits = std::bit_cast<std::array<std::uint8_t, 4>>(12.75F);
  EXPECT_EQ(decoded("flt ", Data(bits.begin(), bits.end())), Value(12.75));
  EXPECT_EQ(kindOf(decoded("flt ", Data(bits.begin(), bits.end()))), Number::Kind::Real);
  const auto nan = std::bit_cast<std::array<std::uint8_t, 4>>(std::numeric_limits<float>::quiet_NaN());
  EXPECT_TRUE(std::isnan(decoded("flt ", Data(nan.begin(), nan.end())).value().asNumber()->doubleValue()));
  EXPECT_EQ(decoded("flt ", {0, 0}), std::nullopt);
  EXPECT_EQ(decoded("flt ", Data(8)), std::nullopt);
}

TEST(SmcDecoding, ReadsSignedBytesAsText) {
  for (const auto type : {smcCode("si8\0"), smcCode("si8 ")}) {
    EXPECT_EQ(decoded(type, {'A'}), Value("A"));
    EXPECT_EQ(decoded(type, {0}), Value(""));
    EXPECT_EQ(decoded(type, {0xFF}), std::nullopt) << "not UTF-8";
    EXPECT_EQ(decoded(type, {'A', 'B'}), std::nullopt);
  }
}

TEST(SmcDecoding, ReadsIntegersWithTheHighestByteFirst) {
  EXPECT_EQ(decoded("si16", {0xFF, 0xC4}), Value(-60));
  EXPECT_EQ(decoded("si16", {0x7F, 0xFF}), Value(32767));
  EXPECT_EQ(kindOf(decoded("si16", {0, 1})), Number::Kind::Signed);
  for (const auto type : {smcCode("ui16"), smcCode("ui6\0"), smcCode("ui6 "), smcCode("{pwm")}) {
    EXPECT_EQ(decoded(type, {0xFF, 0xC4}), Value(65476)) << stringFromSMCKey(type);
    EXPECT_EQ(kindOf(decoded(type, {0, 1})), Number::Kind::Unsigned);
    EXPECT_EQ(decoded(type, {1}), std::nullopt);
    EXPECT_EQ(decoded(type, {0, 0, 0, 1}), std::nullopt);
  }
  EXPECT_EQ(decoded("ui32", {0xFE, 0xDC, 0xBA, 0x98}), Value(0xFEDCBA98U));
  EXPECT_EQ(decoded("ui32", {0, 1}), std::nullopt);
  EXPECT_EQ(decoded("si16", {1}), std::nullopt);
}

TEST(SmcDecoding, ReadsTextOrDumpsWhatIsNone) {
  EXPECT_EQ(decoded("ch8*", {'a', 'b'}), Value("ab"));
  EXPECT_EQ(decoded("ch8*", {0xC3, 0xA9}), Value("\xC3\xA9"));
  EXPECT_EQ(decoded("ch8*", {'a', 0, 'b', 0}), Value(std::string("a\0b\0", 4)));
  EXPECT_EQ(decoded("ch8*", {}), Value(""));
  EXPECT_EQ(decoded("ch8*", {'a', 0xFF, 0x0A}), Value("61 ff 0a "));
  EXPECT_EQ(decoded("ch8*", {0xC3}), Value("c3 ")) << "cut in the middle of a character";
}

TEST(SmcDecoding, DumpsEachByteWithABlankBehindIt) {
  EXPECT_EQ(decoded("hex_", {0x01, 0xAB, 0x00}), Value("01 ab 00 "));
  EXPECT_EQ(decoded("hex_", {}), Value(""));
}

TEST(SmcDecoding, ReadsRevisions) {
  EXPECT_EQ(decoded("{rev", {1, 68, 0x0F, 0, 0, 10}), Value("1.68f10"));
  EXPECT_EQ(decoded("{rev", {2, 200, 0xAB, 0x77, 0xFF, 0xFF}), Value("2.200ab65535")) << "byte 3 is not looked at";
  EXPECT_EQ(decoded("{rev", {1, 68, 0x0F, 0, 0}), std::nullopt);
  EXPECT_EQ(decoded("{rev", Data(7)), std::nullopt);
}

TEST(SmcDecoding, ReadsFixedPointNumbers) {
  EXPECT_EQ(decoded("fp88", {0x1F, 0x40}), Value(31.25));
  EXPECT_EQ(decoded("fpe2", {0x1F, 0x40}), Value(2000.0));
  EXPECT_EQ(decoded("fp88", {0xFF, 0x80}), Value(255.5)) << "unsigned";
  EXPECT_EQ(decoded("sp78", {0xFF, 0x80}), Value(-0.5)) << "signed";
  EXPECT_EQ(decoded("spf0", {0x80, 0x00}), Value(-32768.0));
  EXPECT_EQ(decoded("fp1f", {0x80, 0x00}), Value(1.0));
  EXPECT_EQ(kindOf(decoded("spf0", {0, 1})), Number::Kind::Real);
}

TEST(SmcDecoding, ReadsNoFixedPointNumberOfAnotherSizeOrWithoutADivisor) {
  for (const auto* type : {"fp88", "sp78"}) {
    EXPECT_EQ(decoded(type, {1}), std::nullopt);
    EXPECT_EQ(decoded(type, {0, 0, 0, 1}), std::nullopt);
    EXPECT_EQ(decoded(type, {}), std::nullopt);
  }
  for (const auto* type : {"fp87", "sp88", "fpxx", "sp  "}) EXPECT_EQ(decoded(type, {1, 2}), std::nullopt) << type;
}

TEST(SmcDecoding, MarksTypesThatItDoesNotKnow) {
  for (const auto* type : {"{zzz", "abcd", "FP88", "UI8 ", "flt_", "sf78"}) {
    EXPECT_EQ(decoded(type, {1, 2}), Value("<decoding is currently not implemented>")) << type;
  }
  EXPECT_EQ(decoded(0, {}), Value(Controller::valueDecodingNotImplementedMarker()));
}

TEST(SmcDecoding, NeverReadsBeyondTheBuffer) {
  const Data two{1, 2};
  EXPECT_EQ(decodedSmcValue(smcCode("hex_"), two, 255), Value("01 02 "));
  EXPECT_EQ(decodedSmcValue(smcCode("{alc"), two, 16), std::nullopt);
}

TEST(SmcRecords, ReadTheLuxFunction) {
  EXPECT_EQ(decoded("{ala", {0xFF, 0x20, 0xFF, 0xF0, 0x80, 0x03}),
            Value(Dictionary{{"SMCAmbientLightLuxFunctionSlope", 0xFF20},
                             {"SMCAmbientLightLuxFunctionYIntercept", -16},
                             {"SMCAmbientLightLuxFunctionRegion", 0x8003}}));
}

TEST(SmcRecords, TakeBothTimesOfTheLightConfigurationFromOneField) {
  EXPECT_EQ(decoded("{alc", {0xFF, 100, 0xAA, 0xBB, 0x0F, 0xFF, 0, 16, 0, 10, 0x83, 0xE8, 0, 75, 200, 255}),
            Value(Dictionary{{"SMCAmbientLightI2CTime", 0xFF64},
                             {"SMCAmbientLightADCTime", 0xFF64},
                             {"SMCAmbientLightPowerLightMax", 0x0FFF},
                             {"SMCAmbientLightPowerLightMin", 16},
                             {"SMCAmbientLightLowRoomLux", 10},
                             {"SMCAmbientLightHighRoomLux", 0x83E8},
                             {"SMCAmbientLightBezelReflection", 75},
                             {"SMCAmbientLightSensorCount", 200},
                             {"SMCAmbientLightLidDelay", 255}}));
}

TEST(SmcRecords, ReadTheLightSensor) {
  const auto value = decoded("{ali", {0xFE, 0, 7});
  EXPECT_EQ(value, Value(Dictionary{{"SMCAmbientLightSensorType", -2},
                                    {"SMCAmbientLightSensorIsValidWhenLidClosed", false},
                                    {"SMCAmbientLightSensorIsControllingPowerLight", true}}));
  const auto* flag = value->asDictionary()->find("SMCAmbientLightSensorIsControllingPowerLight");
  EXPECT_EQ(flag->asNumber()->kind(), Number::Kind::Boolean);
}

TEST(SmcRecords, ReadTheLightSensorsTemperatures) {
  const auto value = decoded("{alr", {0xFF, 0xEC, 0xFF, 0xFD, 0x83, 0x20, 0xFF, 0xF6, 0, 60});
  EXPECT_EQ(value, Value(Dictionary{{"SMCAmbientLightTemperatureBaseline", -20},
                                    {"SMCAmbientLightTemperatureCoefficient", 65533 * 0.125},
                                    {"SMCAmbientLightInflectionVoltage", 0x8320},
                                    {"SMCAmbientLightLowTempBoundary", -10},
                                    {"SMCAmbientLightHighTempBoundary", 60}}));
  const auto zero = decoded("{alr", Data(10));
  const auto* coefficient = zero->asDictionary()->find("SMCAmbientLightTemperatureCoefficient");
  EXPECT_EQ(coefficient->asNumber()->kind(), Number::Kind::Real) << "also when it is whole";
}

TEST(SmcRecords, ReadTheLuxThresholds) {
  EXPECT_EQ(decoded("{alt", {0x80, 5, 0x01, 0x2C}), Value(Dictionary{{"SMCAmbientLightLuxThresholdLowGain", 0x8005},
                                                                     {"SMCAmbientLightLuxThresholdHighGain", 300}}));
}

TEST(SmcRecords, ReadTheLightValue) {
  EXPECT_EQ(decoded("{alv", {1, 0, 0x81, 0x23, 0x00, 0x45, 0xEE, 0xEE, 0xF0, 0x64, 0x80, 0x01}),
            Value(Dictionary{{"SMCAmbientLightIsValid", true},
                             {"SMCAmbientLightIsHighGain", false},
                             {"SMCAmbientLightChannel0", 0x8123},
                             {"SMCAmbientLightChannel1", 0x45},
                             {"SMCAmbientLightRoomLux", 0xF0648001U / 16384.0}}));
}

TEST(SmcRecords, ReadTheFan) {
  EXPECT_EQ(decoded("{fds", {0xFF, 200, 0x80, 0xEE, 'L', 'e', 'f', 't', ' ', 's', 'i', 'd', 'e', 0, 'x', 'y'}),
            Value(Dictionary{
                {"SMCFanType", -1}, {"SMCFanZone", 200}, {"SMCFanLocation", -128}, {"SMCFanFunction", "Left side"}}));
}

TEST(SmcRecords, ReadAFansNameThatFillsItsField) {
  const auto nameIn = [](const Data& bytes) {
    return *decoded("{fds", bytes)->asDictionary()->find("SMCFanFunction")->asString();
  };
  EXPECT_EQ(nameIn({0, 0, 0, 0, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'k', 'l'}), "abcdefghijkl");
  EXPECT_EQ(nameIn(Data(16)), "");
  EXPECT_EQ(nameIn({0, 0, 0, 0, 'a', 0xE9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "a\xC3\xA9") << "text in any case";
  EXPECT_EQ(smcRecordFields(smcCode("{fds"), Data(40, 'z'), 16)->find("SMCFanFunction")->asString()->size(), 13U);
}

TEST(SmcRecords, ReadThePowerLightsControl) {
  EXPECT_EQ(decoded("{lsc", {0x81, 0x00, 0x80, 4, 0x40, 0x01, 0xFF, 200, 1, 7}),
            Value(Dictionary{{"SMCPowerLightBreathePWM", 0x8100},
                             {"SMCPowerLightPWMChangePerTick", 0x8004},
                             {"SMCPowerLightScaling", 0x4001 / 32768.0},
                             {"SMCPowerLightScaleMode", -1},
                             {"SMCPowerLightRampDuration", 200},
                             {"SMCPowerLightIsSwitchOverridingBrightness", true},
                             {"SMCPowerLightMinimumTicksToTarget", 7}}));
}

TEST(SmcRecords, ReadThePowerLightsOtherSettings) {
  EXPECT_EQ(decoded("{lsd", {0x80, 1, 0, 2, 0, 3, 0xFF, 4}),
            Value(Dictionary{{"SMCPowerLightFadeConfigMidToStartRatio", 0x8001},
                             {"SMCPowerLightFadeConfigMidToEndRatio", 2},
                             {"SMCPowerLightFadeConfigStartTicks", 3},
                             {"SMCPowerLightFadeConfigEndTicks", 0xFF04}}));
  EXPECT_EQ(decoded("{lsf", {0x80, 5, 0, 6, 0xFF, 7}), Value(Dictionary{{"SMCPowerLightFlareConfigCeiling", 0x8005},
                                                                        {"SMCPowerLightFlareConfigMinChange", 6},
                                                                        {"SMCPowerLightFlareConfigAdjust", 0xFF07}}));
  EXPECT_EQ(decoded("{lso", {0xFE, 1}),
            Value(Dictionary{{"SMCPowerLightOverrideTargetBehavior", -2}, {"SMCPowerLightOverrideRamp", true}}));
}

TEST(SmcRecords, AreNothingAtAnotherSize) {
  const std::pair<const char*, std::size_t> kSizes[] = {{"{ala", 6}, {"{alc", 16}, {"{ali", 3},  {"{alr", 10},
                                                        {"{alt", 4}, {"{alv", 12}, {"{fds", 16}, {"{lsc", 10},
                                                        {"{lsd", 8}, {"{lsf", 6},  {"{lso", 2}};
  for (const auto& [type, size] : kSizes) {
    EXPECT_TRUE(isSmcRecordType(smcKeyFromString(type)));
    for (std::size_t tried = 0; tried <= 32; ++tried) {
      EXPECT_EQ(decoded(type, Data(tried)).has_value(), tried == size) << type << " " << tried;
    }
  }
  EXPECT_FALSE(isSmcRecordType(smcCode("{rev")));
}

}  // namespace
}  // namespace vantrell
