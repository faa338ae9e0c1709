// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "catalogue/RequestEnvelope.h"
#include "foundation/PropertyList.h"
#include "host/Host.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

const Uuid::Bytes kUuid{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
const Date kMade{1'790'000'000, 500'000'000};

Dictionary goodEnvelope() {
  return {{"Vrs", "2.0"},
          {"OpCode", 3},
          {"SetID", "lm4"},
          {"Parms", Array{"1", "0"}},
          {"PID", 4711},
          {"Time", kMade},
          {"OUUID", Data(kUuid.begin(), kUuid.end())}};
}

class Envelope : public testing::Test {
 protected:
  static std::optional<RequestEnvelope> read(const Dictionary& dictionary) {
    const auto binary = binaryPropertyListFromValue(dictionary);
    return RequestEnvelope::fromData(binary.value(), "lm4");
  }

  unsigned check(const Dictionary& dictionary, Date now = kMade, std::uint64_t pid = 4711, std::uint64_t code = 3) {
    return set_.checkPresentRequestFromPID(pid, code, Array{"a", "b"}, read(dictionary), now).code;
  }

  static Dictionary with(const char* key, Value value) {
    auto dictionary = goodEnvelope();
    dictionary.set(key, std::move(value));
    return dictionary;
  }
  static Dictionary without(const char* key) {
    auto dictionary = goodEnvelope();
    dictionary.remove(key);
    return dictionary;
  }
  static Date after(double seconds) {
    return Date::fromSecondsSinceReferenceDate(kMade.secondsSinceReferenceDate() + seconds);
  }

  tests::RecordingLog log_;
  QELPrivilegedToolOperationSetLM4 set_{log_};
};

TEST_F(Envelope, IsReadWhole) {
  const auto envelope = read(goodEnvelope());
  ASSERT_TRUE(envelope);
  EXPECT_EQ(envelope->processIdentifier, Number(4711));
  EXPECT_EQ(envelope->operationCode, Number(3));
  EXPECT_EQ(envelope->parameterCount, 2u);
  EXPECT_NEAR(envelope->time->secondsSince(kMade), 0, 1e-6);
  EXPECT_EQ(envelope->operationUUID, kUuid);
}

TEST_F(Envelope, IsReadInEveryFormat) {
  const auto xml = xmlPropertyListFromValue(with("Time", Date{1'790'000'000, 0}));
  const auto envelope = RequestEnvelope::fromData(xml.value(), "lm4");
  ASSERT_TRUE(envelope);
  EXPECT_EQ(set_.checkPresentRequestFromPID(4711, 3, Array{"a", "b"}, envelope, kMade).code, 0u);
  EXPECT_FALSE(RequestEnvelope::fromData(bytesOf("{ Vrs = \"3.0\"; SetID = lm4; }"), "lm4"));
  const auto text = RequestEnvelope::fromData(bytesOf("{ Vrs = \"2.0\"; SetID = lm4; PID = 4711; }"), "lm4");
  ASSERT_TRUE(text);
  EXPECT_FALSE(text->processIdentifier) << "the older text form has no numbers";
}

TEST_F(Envelope, OtherVersionsAndSetsAreNotRead) {
  EXPECT_TRUE(read(with("Vrs", "1.0")));
  EXPECT_FALSE(read(with("Vrs", "3.0")));
  EXPECT_FALSE(read(with("Vrs", 2.0)));
  EXPECT_FALSE(read(without("Vrs")));
  EXPECT_FALSE(read(with("SetID", "lm5")));
  EXPECT_FALSE(read(with("SetID", 4)));
  EXPECT_FALSE(read(without("SetID")));
}

TEST_F(Envelope, WhatIsNoDictionaryIsNotRead) {
  EXPECT_FALSE(RequestEnvelope::fromData(binaryPropertyListFromValue(Array{"2.0", "lm4"}).value(), "lm4"));
  EXPECT_FALSE(RequestEnvelope::fromData({}, "lm4"));
  EXPECT_FALSE(RequestEnvelope::fromData(bytesOf("bplist00"), "lm4"));
  EXPECT_FALSE(RequestEnvelope::fromData(bytesOf("\x01\x02garbage"), "lm4"));
}

TEST_F(Envelope, CheckSucceedsWithTheUuid) {
  const auto result = set_.checkPresentRequestFromPID(4711, 3, Array{"x", 5}, read(goodEnvelope()), kMade);
  EXPECT_EQ(result.code, 0u);
  EXPECT_EQ(result.uuid, Uuid(kUuid));
}

TEST_F(Envelope, Check1MissingParametersOrEnvelope) {
  EXPECT_EQ(set_.checkPresentRequestFromPID(4711, 3, std::nullopt, read(goodEnvelope()), kMade).code, 1u);
  EXPECT_EQ(set_.checkPresentRequestFromPID(4711, 3, Array{"a", "b"}, std::nullopt, kMade).code, 1u);
  EXPECT_EQ(check(with("Vrs", "3.0")), 1u);
}

TEST_F(Envelope, Check2ProcessIdentifier) {
  EXPECT_EQ(check(goodEnvelope(), kMade, 4712), 2u);
  EXPECT_EQ(check(without("PID")), 2u);
  EXPECT_EQ(check(with("PID", "4711")), 2u);
}

TEST_F(Envelope, Check3OperationCode) {
  EXPECT_EQ(check(goodEnvelope(), kMade, 4711, 4), 3u);
  EXPECT_EQ(check(without("OpCode")), 3u);
  EXPECT_EQ(check(with("OpCode", "3")), 3u);
}

TEST_F(Envelope, Check4ParameterCount) {
  EXPECT_EQ(check(with("Parms", Array{"1"})), 4u);
  EXPECT_EQ(check(with("Parms", "12")), 4u);
  EXPECT_EQ(check(without("Parms")), 4u);
  EXPECT_EQ(check(with("Parms", Dictionary{{"a", 1}, {"b", 2}})), 4u) << "a dictionary of two is no array of two";
}

TEST_F(Envelope, ContentsOfParametersAreNotCompared) {
  EXPECT_EQ(check(with("Parms", Array{Data{1}, 2})), 0u);
}

TEST_F(Envelope, Check5Time) {
  EXPECT_EQ(check(without("Time")), 5u);
  EXPECT_EQ(check(with("Time", 1'790'000'000)), 5u);
}

TEST_F(Envelope, Check6AgeAndFuture) {
  EXPECT_EQ(check(goodEnvelope(), after(29.9)), 0u);
  EXPECT_EQ(check(goodEnvelope(), after(30.1)), 6u);
  EXPECT_EQ(check(goodEnvelope(), after(31)), 6u);
  EXPECT_EQ(check(goodEnvelope(), after(-1)), 6u);
  EXPECT_EQ(check(with("Time", Date::fromSecondsSinceReferenceDate(-1e300))), 6u);
  EXPECT_EQ(check(with("Time", Date::fromSecondsSinceReferenceDate(1e300))), 6u);
}

TEST_F(Envelope, Check7OperationUuid) {
  EXPECT_EQ(check(without("OUUID")), 7u);
  EXPECT_EQ(check(with("OUUID", Data(15))), 7u);
  EXPECT_EQ(check(with("OUUID", Data(17))), 7u);
  EXPECT_EQ(check(with("OUUID", "0123456789abcdef")), 7u);
}

TEST_F(Envelope, Check8NoUuidFromTheBytes) {
  class Unable final : public QELPrivilegedToolOperationSet {
   protected:
    std::optional<Uuid> uuidWithBytes(const Uuid::Bytes&) const override { return std::nullopt; }
  };
  EXPECT_EQ(Unable().checkPresentRequestFromPID(4711, 3, Array{"a", "b"}, read(goodEnvelope()), kMade).code, 8u);
}

TEST_F(Envelope, TheFirstCheckThatFailsDecides) {
  auto wrong = goodEnvelope();
  std::vector<std::pair<const char*, unsigned>> faults{
      {"OUUID", 7}, {"Time", 5}, {"Parms", 4}, {"OpCode", 3}, {"PID", 2}};
  for (const auto& [key, code] : faults) {
    wrong.remove(key);
    EXPECT_EQ(check(wrong), code);
  }
}

TEST_F(Envelope, MadeByTheRequestingSidePassesTheCheck) {
  auto host = host::makeHost();
  const Array parameters{"path", 7, Data{1, 2}};
  const auto data = set_.standaloneDataForConcretePrivilegedOperation(3, parameters, host);
  ASSERT_TRUE(data);
  const auto list = propertyListFromData(*data);
  ASSERT_TRUE(list);
  EXPECT_EQ(list->format, PropertyListFormat::Binary);
  const auto& root = *list->root.asDictionary();
  EXPECT_EQ(root.size(), 7u);
  EXPECT_EQ(*root.find("Vrs"), Value("2.0"));
  EXPECT_EQ(*root.find("Parms"), Value(parameters));
  const auto pid = static_cast<std::uint64_t>(host.currentProcess->identifier());
  EXPECT_EQ(set_.checkPresentRequestFromPID(pid, 3, parameters, set_.operationDescriptionFromStandaloneData(*data),
                                            Date::now())
                .code,
            0u);
}

TEST_F(Envelope, EachHasAUuidOfItsOwn) {
  auto host = host::makeHost();
  const auto uuid = [&] {
    const auto data = set_.standaloneDataForConcretePrivilegedOperation(9998, Array{}, host);
    return set_.operationDescriptionFromStandaloneData(data.value())->operationUUID;
  };
  EXPECT_NE(uuid(), uuid());
}

TEST_F(Envelope, IsNotMadeWithoutParametersForUnknownCodesOrOfForeignValues) {
  auto host = host::makeHost();
  EXPECT_FALSE(set_.standaloneDataForConcretePrivilegedOperation(3, std::nullopt, host));
  EXPECT_FALSE(set_.standaloneDataForConcretePrivilegedOperation(4711, Array{}, host));
  EXPECT_FALSE(set_.standaloneDataForConcretePrivilegedOperation(3, Array{Null{}}, host));
}

TEST_F(Envelope, KeysArePrefixAndSaltOfExactLengths) {
  const Data prefix(20, 0xAB);
  const Data salt{1, 2, 3, 4};
  const auto key = set_.keyForPrefix(prefix, salt);
  ASSERT_TRUE(key);
  EXPECT_EQ(key->size(), 24u);
  EXPECT_TRUE(std::equal(prefix.begin(), prefix.end(), key->begin()));
  EXPECT_TRUE(std::equal(salt.begin(), salt.end(), key->begin() + 20));
  EXPECT_FALSE(set_.keyForPrefix(Data(19), salt));
  EXPECT_FALSE(set_.keyForPrefix(Data(21), salt));
  EXPECT_FALSE(set_.keyForPrefix(prefix, Data(3)));
  EXPECT_FALSE(set_.keyForPrefix(prefix, Data(5)));
}

TEST_F(Envelope, KeyPrefixesAreReadFromLowerCaseDigits) {
  const auto prefix =
      QELPrivilegedToolOperationSet::keyPrefixFromDescriptor("00ff10a95bcdef0123456789abcdef9876543210");
  EXPECT_EQ(prefix, (Data{0x00, 0xff, 0x10, 0xa9, 0x5b, 0xcd, 0xef, 0x01, 0x23, 0x45,
                          0x67, 0x89, 0xab, 0xcd, 0xef, 0x98, 0x76, 0x54, 0x32, 0x10}));
  EXPECT_FALSE(QELPrivilegedToolOperationSet::keyPrefixFromDescriptor("00ff"));
  EXPECT_FALSE(QELPrivilegedToolOperationSet::keyPrefixFromDescriptor(std::string(41, '0')));
}

TEST_F(Envelope, UpperCaseDigitsAreRightInTheHighNibbleOnly) {
  const auto prefix = QELPrivilegedToolOperationSet::keyPrefixFromDescriptor(
      "A0"
      "0A" +
      std::string(36, '0'));
  ASSERT_TRUE(prefix);
  EXPECT_EQ((*prefix)[0], 0xA0);
  EXPECT_EQ((*prefix)[1], static_cast<std::uint8_t>('A' - 87));
}

TEST_F(Envelope, NoKeyPrefixWithoutAnExecutable) {
  auto host = host::makeHost();
  EXPECT_FALSE(set_.keyPrefixBasedOnPath("", host));
  EXPECT_FALSE(set_.keyPrefixBasedOnPath("/no/such/file", host));
  EXPECT_FALSE(set_.keyPrefixBasedOnPath(VANTRELL_SOURCE_DIR "/CMakeLists.txt", host));
  EXPECT_FALSE(set_.keyPrefixBasedOnPath("/", host));
}

TEST_F(Envelope, TheKeyPrefixOfThisExecutableIsItsDescriptor) {
  auto host = host::makeHost();
  const auto path = host.mainBundle->executablePath().value();
  const auto prefix = set_.keyPrefixBasedOnPath(path, host);
  ASSERT_TRUE(prefix);
  EXPECT_EQ(prefix->size(), 20u);
  const auto descriptors = host.executableDescriptor->descriptorsForFileAtPath(path);
  EXPECT_EQ(prefix, QELPrivilegedToolOperationSet::keyPrefixFromDescriptor(descriptors.value().at(0)));
}

}  // namespace
}  // namespace vantrell
