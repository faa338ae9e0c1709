// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Requests over a real socket to the real service: every refusal, in the order of the checks.

#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "tests/support/ServiceUnderTest.h"

namespace vantrell {
namespace {

using namespace tests::operation_code;
namespace refusal = privileged_tool_error;

class Requests : public testing::Test {
 protected:
  void SetUp() override { client_.registerClient(); }

  /// The result code of a refusal by the token check, 0 for none.
  static unsigned tokenResult(const ErrorOrNil& answer) {
    if (!answer) return 0;
    EXPECT_EQ(answer->code(), 2);
    const auto* parameters = answer->userInfo().find("QELLocalizedRecoverySuggestionParameters");
    if (!parameters) return 999;
    const auto result = static_cast<unsigned>(std::stoul(*parameters->asArray()->at(0).asString()));
    EXPECT_EQ(answer, refusal::authorizationProblem(result));
    return result;
  }

  unsigned resultWith(const char* key, std::optional<Value> value) {
    auto envelope = client_.envelope(kNop, {});
    envelope.remove(key);
    if (value) envelope.set(key, *value);
    return tokenResult(client_.perform(kNop, client_.tokenForEnvelope(envelope), {}));
  }

  static Date secondsFromNow(double seconds) {
    return Date::fromSecondsSinceReferenceDate(Date::now().secondsSinceReferenceDate() + seconds);
  }

  tests::ServiceUnderTest service_;
  tests::HandMadeClient client_{service_};
};

TEST_F(Requests, AnAuthenticOneIsCarriedOut) {
  EXPECT_EQ(client_.perform(kNop, {}), std::nullopt);
  const auto& log = service_.log();
  using host::LogLevel;
  EXPECT_TRUE(log.contains(LogLevel::Info, "About to perform privileged operation 'nop' with 0 arguments."));
  EXPECT_EQ(log.countContaining("Operation nop enqueued for execution, registered as "), 1u);
  EXPECT_TRUE(log.contains(LogLevel::Info, "Operation nop is about to be executed with feedback option disabled."));
  EXPECT_TRUE(log.contains(LogLevel::Info, "Operation nop was completed with return code 0."));
  EXPECT_TRUE(service_.log().waitForMessageContaining(" have been sent."));
}

TEST_F(Requests, LogEntriesBearTheServicesSubsystem) {
  client_.perform(kNop, {});
  for (const auto& entry : service_.log().entries()) {
    EXPECT_EQ(entry.subsystem, "test") << entry.message;
    EXPECT_EQ(entry.category, "standard") << entry.message;
  }
}

TEST_F(Requests, AnUnknownCodeIsError1BeforeTheTokenIsLookedAt) {
  EXPECT_EQ(client_.perform(4711, Data{}, {}), refusal::invalidOperation(4711));
  EXPECT_TRUE(service_.log().contains(host::LogLevel::Error,
                                      "Received invalid operation with code 4711 or arguments are missing."));
  EXPECT_EQ(service_.log().countContaining("Authorization problem"), 0u);
}

TEST_F(Requests, MissingArgumentsAreError1) {
  std::optional<ErrorOrNil> answer;
  service_.tool().performPrivilegedOperation(kNop, client_.token(kNop, {}), nullptr, std::nullopt,
                                             [&](ErrorOrNil error) { answer = error; });
  ASSERT_TRUE(answer);
  EXPECT_EQ(*answer, refusal::invalidOperation(kNop));
}

TEST_F(Requests, TokenResult101ForMissingArgumentsOfACancellationOrAShortToken) {
  for (const std::size_t length : {0u, 1u, 19u}) {
    EXPECT_EQ(tokenResult(client_.perform(kNop, Data(length), {})), 101u);
  }
  EXPECT_TRUE(service_.log().contains(
      host::LogLevel::Error,
      "Authorization problem code 101 detected. There may be a trust failure for the application requesting the "
      "privileged operation. Refusing connection, operation rejected."));
}

TEST_F(Requests, TokenResult102WhenNoDigestCanBeComputed) {
  const auto token = client_.token(kNop, {});
  service_.cryptography().failDigests = true;
  EXPECT_EQ(tokenResult(client_.perform(kNop, token, {})), 102u);
}

TEST_F(Requests, TokenResult103ForADamagedToken) {
  const auto token = client_.token(kNop, {});
  for (std::size_t i = 0; i < token.size(); ++i) {
    auto damaged = token;
    damaged[i] ^= 0x01;
    ASSERT_EQ(tokenResult(client_.perform(kNop, damaged, {})), 103u) << "byte " << i;
  }
  EXPECT_EQ(tokenResult(client_.perform(kNop, Data(20), {})), 103u);
}

TEST_F(Requests, ABodyTooShortForAnIdentifierIsRefusedWithoutHarm) {
  for (std::size_t length = 0; length < 8; ++length) {
    const Data body(length, 0x55);
    const auto digest = service_.host().cryptography->sha1(body).value();
    Data token(digest.begin(), digest.end());
    token.insert(token.end(), body.begin(), body.end());
    EXPECT_EQ(tokenResult(client_.perform(kNop, token, {})), 104u) << length;
  }
  EXPECT_EQ(client_.perform(kNop, {}), std::nullopt);
}

TEST_F(Requests, TokenResult104ForAClientThatIsNotRegistered) {
  tests::HandMadeClient stranger(service_, 4712);
  stranger.key() = Data(24);
  EXPECT_EQ(tokenResult(client_.perform(kNop, stranger.tokenForEnvelope(client_.envelope(kNop, {})), {})), 104u);
}

TEST_F(Requests, TokenResult104ForAClientThatHasUnregistered) {
  tests::HandMadeClient other(service_, 4712);
  other.registerClient();
  EXPECT_EQ(other.perform(kNop, {}), std::nullopt);
  EXPECT_EQ(other.connection().unregisterClientWithPID(4712), std::nullopt);
  EXPECT_EQ(tokenResult(other.perform(kNop, {})), 104u);
}

TEST_F(Requests, TokenResult104ForIdentifiersThatNoProcessHas) {
  const auto envelope = binaryPropertyListFromValue(client_.envelope(kNop, {})).value();
  for (const auto pid : std::initializer_list<std::uint64_t>{0xFFFFFFFFFFFFFFFF, 0x100000000 + 4711, 0x80000000}) {
    const auto token = makeRequestToken(pid, client_.key(), envelope, *service_.host().cryptography).value();
    EXPECT_EQ(tokenResult(client_.perform(kNop, token, {})), 104u);
  }
}

TEST_F(Requests, TokenResult105WhenThereIsNothingToDecipher) {
  EXPECT_EQ(tokenResult(client_.perform(kNop, client_.tokenForEnvelope(Data{}), {})), 105u);
}

TEST_F(Requests, TokenResult105WhenTheCipherFails) {
  const auto token = client_.token(kNop, {});
  service_.cryptography().failCiphers = true;
  EXPECT_EQ(tokenResult(client_.perform(kNop, token, {})), 105u);
}

TEST_F(Requests, TokenResult1ForWhatIsNoEnvelope) {
  EXPECT_EQ(tokenResult(client_.perform(kNop, client_.tokenForEnvelope(bytesOf("no envelope")), {})), 1u);
  EXPECT_EQ(resultWith("Vrs", "3.0"), 1u);
  EXPECT_EQ(resultWith("SetID", "lm4"), 1u);
}

TEST_F(Requests, TokenResult1ForAKeyThatIsNotTheClients) {
  client_.key()[0] ^= 1;
  EXPECT_EQ(tokenResult(client_.perform(kNop, {})), 1u);
}

TEST_F(Requests, AnOlderEnvelopeVersionIsAccepted) {
  EXPECT_EQ(resultWith("Vrs", "1.0"), 0u);
}

TEST_F(Requests, TokenResult2ForAnotherProcess) {
  EXPECT_EQ(resultWith("PID", 4712), 2u);
  EXPECT_EQ(resultWith("PID", "4711"), 2u);
  EXPECT_EQ(resultWith("PID", std::nullopt), 2u);
}

TEST_F(Requests, TokenResult3ForAnotherOperation) {
  EXPECT_EQ(tokenResult(client_.perform(kWaitForGate, client_.token(kNop, {}), {})), 3u);
  EXPECT_EQ(resultWith("OpCode", std::nullopt), 3u);
}

TEST_F(Requests, TokenResult4ForAnotherNumberOfArguments) {
  EXPECT_EQ(tokenResult(client_.perform(kNop, client_.token(kNop, {}), {"more"})), 4u);
  EXPECT_EQ(resultWith("Parms", std::nullopt), 4u);
}

TEST_F(Requests, ContentsOfArgumentsAreNotCompared) {
  EXPECT_EQ(client_.perform(kThreeArguments, client_.token(kThreeArguments, {"a", "b", "c"}), {"x", 5, Data{1}}),
            std::nullopt);
}

TEST_F(Requests, TokenResult5WithoutATime) {
  EXPECT_EQ(resultWith("Time", std::nullopt), 5u);
  EXPECT_EQ(resultWith("Time", "now"), 5u);
}

TEST_F(Requests, TokenResult6ForOldOrFutureTokens) {
  EXPECT_EQ(resultWith("Time", secondsFromNow(-31)), 6u);
  EXPECT_EQ(resultWith("Time", secondsFromNow(1)), 6u);
  EXPECT_EQ(resultWith("Time", secondsFromNow(-29)), 0u);
}

TEST_F(Requests, TokenResult7WithoutAnOperationUuid) {
  EXPECT_EQ(resultWith("OUUID", std::nullopt), 7u);
  EXPECT_EQ(resultWith("OUUID", Data(15)), 7u);
  EXPECT_EQ(resultWith("OUUID", "0123456789abcdef"), 7u);
}

TEST_F(Requests, TokenResult8WhenNoUuidCanBeMade) {
  service_.operationSet().makeNoUuids = true;
  EXPECT_EQ(tokenResult(client_.perform(kNop, {})), 8u);
}

TEST_F(Requests, ATokenMayBeUsedAgain) {
  const auto token = client_.token(kNop, {});
  EXPECT_EQ(client_.perform(kNop, token, {}), std::nullopt);
  EXPECT_EQ(client_.perform(kNop, token, {}), std::nullopt);
}

TEST_F(Requests, OneArgumentTooManyIsError3) {
  EXPECT_EQ(client_.perform(kNop, {"more"}), refusal::wrongArgumentCount("nop", 0, 1));
}

TEST_F(Requests, AnUnknownTypeCodeIsError5) {
  EXPECT_EQ(client_.perform(kUnknownTypeCode, {"x"}), refusal::invalidTypeCode('X', "unknown-type"));
}

TEST_F(Requests, AnArgumentOfAnotherClassIsError6) {
  EXPECT_EQ(client_.perform(kThreeArguments, {"a", "b", Data{}}),
            refusal::wrongArgumentClass("three-arguments", 1, "NSString", 'N'));
  EXPECT_EQ(client_.perform(kThreeArguments, {5, 5, Data{}}),
            refusal::wrongArgumentClass("three-arguments", 0, "NSNumber", 'S'));
}

TEST_F(Requests, SomethingElseInAStringListIsError7) {
  EXPECT_EQ(client_.perform(kWaitForGate, {"a", Date{}}), refusal::stringListExpected("wait-gate", "NSDate"));
}

TEST_F(Requests, AnEmptyStringListIsAccepted) {
  service_.gate.open();
  EXPECT_EQ(client_.perform(kWaitForGate, {}), std::nullopt);
}

TEST_F(Requests, ArgumentsAreCheckedAfterTheToken) {
  EXPECT_EQ(tokenResult(client_.perform(kNop, client_.token(kNop, {}), {"more"})), 4u);
}

TEST_F(Requests, ARaisedExceptionIsError8) {
  EXPECT_EQ(client_.perform(kRaise, {"SomeException", "some reason"}),
            refusal::unhandledException("raise", "SomeException", "some reason"));
  EXPECT_TRUE(service_.log().contains(
      host::LogLevel::Error,
      "The exception 'SomeException' occurred while trying to execute the privileged operation: some reason"));
  EXPECT_TRUE(service_.log().contains("Operation raise was completed with return code 8."));
}

TEST_F(Requests, AnExceptionWithoutNameAndReasonIsReportedAsNil) {
  EXPECT_EQ(client_.perform(kRaise, {"", ""}), refusal::unhandledException("raise", "", ""));
  EXPECT_TRUE(service_.log().contains(
      "The exception '<nil>' occurred while trying to execute the privileged operation: <nil>"));
}

TEST_F(Requests, AStandardExceptionIsError8Too) {
  EXPECT_EQ(client_.perform(kRaiseStandard, {"too far"}),
            refusal::unhandledException("raise-standard", "NSRangeException", "too far"));
}

TEST_F(Requests, AnOperationWithoutImplementationIsError9) {
  EXPECT_EQ(client_.perform(kNotImplemented, {}), refusal::notImplemented("not-implemented"));
  EXPECT_TRUE(service_.log().contains(
      host::LogLevel::Error,
      "Privileged operation not-implemented could not be executed because no implementation found."));
}

TEST_F(Requests, TheAnswerCarriesValuesOfEveryKind) {
  const auto answer = client_.perform(kAnswerError, {"äöü"});
  ASSERT_TRUE(answer);
  EXPECT_EQ(*answer, Error("test", -5,
                           {{"text", "äöü"},
                            {"number", -7},
                            {"unsigned", 18446744073709551615u},
                            {"real", 0.25},
                            {"boolean", true},
                            {"data", Data{0, 1, 255}},
                            {"date", Date{1'700'000'000, 5}},
                            {"array", Array{1, "two", Array{}}},
                            {"dictionary", Dictionary{{"key", "value"}}},
                            {"NSUnderlyingError", Error::posix(13)}}));
}

}  // namespace
}  // namespace vantrell
