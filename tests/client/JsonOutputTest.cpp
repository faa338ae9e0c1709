// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "catalogue/ErrorModel.h"
#include "client/JsonOutput.h"

namespace vantrell {
namespace {

std::string json(const Value& value) {
  return jsonLine(jsonFromValue(value));
}

TEST(JsonOutput, KeepsTheKindsOfNumbers) {
  EXPECT_EQ(json(true), "true");
  EXPECT_EQ(json(-5), "-5");
  EXPECT_EQ(json(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(json(~std::uint64_t{0}), "18446744073709551615");
  EXPECT_EQ(json(1.0), "1.0");
  EXPECT_EQ(json(0.1), "0.1");
  EXPECT_EQ(json(std::numeric_limits<double>::infinity()), "null");
}

TEST(JsonOutput, WritesDataInBase64AndDatesInIso8601) {
  EXPECT_EQ(json(Data{0xFF, 0x00, 0x10}), "\"/wAQ\"");
  EXPECT_EQ(json(Data()), "\"\"");
  EXPECT_EQ(json(Date{0, 500'000'000}), "\"1970-01-01T00:00:00.5Z\"");
}

TEST(JsonOutput, WritesTextAndContainers) {
  EXPECT_EQ(json("a\"b\n\xC3\xA4"), "\"a\\\"b\\n\xC3\xA4\"");
  EXPECT_EQ(json(Null{}), "null");
  EXPECT_EQ(json(Array{}), "[]");
  EXPECT_EQ(json(Dictionary{}), "{}");
  EXPECT_EQ(json(Array{1, Array{"x"}, Dictionary{{"b", 2}, {"a", false}}}), R"([1,["x"],{"a":false,"b":2}])");
}

TEST(JsonOutput, WritesErrorsWithTheirUserInfo) {
  const Error inner = Error::posix(66);
  const Error outer("D", -1, Dictionary{{"NSUnderlyingError", inner}});
  EXPECT_EQ(json(outer), R"({"domain":"D","code":-1,"userInfo":{"NSUnderlyingError":)"
                         R"({"domain":"NSPOSIXErrorDomain","code":66,"userInfo":{}}}})");
}

TEST(JsonOutput, ResultOfSuccessIsNull) {
  EXPECT_EQ(jsonLine(jsonFromResult(std::nullopt)), R"({"result":null})");
}

TEST(JsonOutput, ResultOfARefusalHasItsTextsFilledIn) {
  const auto line = jsonFromResult(privileged_tool_error::wrongArgumentCount("nop", 0, 2));
  const auto& result = line["result"];
  EXPECT_EQ(result["domain"], privilegedToolErrorDomain());
  EXPECT_EQ(result["code"], 3);
  EXPECT_EQ(result["description"], "Communication with the security component failed.");
  EXPECT_EQ(result["recoverySuggestion"],
            "Internal error: An invalid number of arguments has been sent for operation nop (0 expected, 2 received).");
  // The user info is what came over the wire.
  EXPECT_FALSE(result["userInfo"].contains("NSLocalizedRecoverySuggestion"));
  EXPECT_EQ(result["userInfo"]["QELLocalizedRecoverySuggestionParameters"], (Json{"nop", "0", "2"}));
}

TEST(JsonOutput, ResultWithCode0HasNoTexts) {
  const Error result(privilegedOperationErrorDomain(), 0, Dictionary{{"ObjectExistence", 1U}});
  EXPECT_EQ(jsonLine(jsonFromResult(result)), R"({"result":{"domain":")" + privilegedOperationErrorDomain() +
                                                  R"(","code":0,"userInfo":{"ObjectExistence":1},)"
                                                  R"("description":null,"recoverySuggestion":null}})");
}

TEST(JsonOutput, ResultOfASystemErrorIsDescribed) {
  const auto line = jsonFromResult(Error::posix(89));
  EXPECT_EQ(line["result"]["description"], "Operation canceled");
  EXPECT_TRUE(line["result"]["recoverySuggestion"].is_null());
}

TEST(JsonOutput, NeverFailsOnTextThatIsNotUtf8) {
  EXPECT_EQ(json("a\xFFz"), "\"a\xEF\xBF\xBDz\"");
}

}  // namespace
}  // namespace vantrell
