// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "core/ArgumentValidation.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

// What the catalogue can't hold: a descriptor whose type codes contradict its count.
class Contradictory final : public QELPrivilegedOperation {
 public:
  std::optional<std::string_view> argumentTypeCodes() const noexcept override { return "S"; }
};

class ArgumentValidation : public testing::Test {
 protected:
  ErrorOrNil validate(std::uint64_t count, std::optional<std::string> types, const Array& arguments) {
    const auto operation =
        QELPrivilegedOperation::initWithIdentifier("an-operation", "allow", false, false, count, std::move(types), "x");
    return validateArguments(*operation, arguments, Log(log_, "subsystem", "standard"));
  }

  void expectLogged(const std::string& message) {
    ASSERT_EQ(log_.entries().size(), 1u);
    EXPECT_EQ(log_.entries().front(),
              (tests::RecordingLog::Entry{host::LogLevel::Error, "subsystem", "standard", message}));
  }

  tests::RecordingLog log_;
};

TEST_F(ArgumentValidation, EachTypeCodeTakesItsClass) {
  EXPECT_EQ(validate(3, "SND", {"text", 5, Data{1}}), std::nullopt);
  EXPECT_EQ(validate(1, "N", {true}), std::nullopt) << "booleans are numbers";
  EXPECT_EQ(validate(0, std::nullopt, {}), std::nullopt);
  EXPECT_EQ(validate(0, "", {}), std::nullopt);
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(ArgumentValidation, AVariableCountTakesAnyNumberOfStringsIncludingNone) {
  EXPECT_EQ(validate(kVariableArgumentCount, std::nullopt, {}), std::nullopt);
  EXPECT_EQ(validate(kVariableArgumentCount, std::nullopt, Array(1000, "x")), std::nullopt);
}

TEST_F(ArgumentValidation, AVariableCountNamesTheFirstOffendersClass) {
  EXPECT_EQ(validate(kVariableArgumentCount, std::nullopt, {"a", Date{}, 5}),
            privileged_tool_error::stringListExpected("an-operation", "NSDate"));
  expectLogged("Operation an-operation was rejected because at least one argument has class NSDate (string expected).");
}

TEST_F(ArgumentValidation, AWrongCountIsReportedWithBothCounts) {
  EXPECT_EQ(validate(1, "S", {"a", "b"}), privileged_tool_error::wrongArgumentCount("an-operation", 1, 2));
  expectLogged(
      "Operation an-operation was rejected because an invalid number of arguments was specified (1 expected, 2 sent).");
}

TEST_F(ArgumentValidation, TypeCodesOfAnotherLengthAreAContradiction) {
  const auto operation = std::make_shared<Contradictory>();
  EXPECT_EQ(validateArguments(*operation, {}, Log(log_, "subsystem", "standard")),
            privileged_tool_error::badTypeCodes(""));
  expectLogged("Operation  was rejected because a contradiction in its definition has been detected (bad type codes).");
}

TEST_F(ArgumentValidation, AnUnknownTypeCodeIsAContradiction) {
  EXPECT_EQ(validate(2, "SX", {"a", "b"}), privileged_tool_error::invalidTypeCode('X', "an-operation"));
  expectLogged(
      "Operation an-operation was rejected because a contradiction in its definition has been detected (invalid type "
      "code 'X').");
}

TEST_F(ArgumentValidation, AnArgumentOfAnotherClassIsReportedWithItsIndex) {
  EXPECT_EQ(validate(2, "SS", {"a", 5}), privileged_tool_error::wrongArgumentClass("an-operation", 1, "NSNumber", 'S'));
  expectLogged("Operation an-operation was rejected because argument 1 has class NSNumber (expected type 'S').");
}

TEST_F(ArgumentValidation, ABadTypeCodeBehindAMistypedArgumentIsNotReported) {
  EXPECT_EQ(validate(2, "SX", {5, "b"}), privileged_tool_error::wrongArgumentClass("an-operation", 0, "NSNumber", 'S'));
}

TEST_F(ArgumentValidation, ABadTypeCodeIsReportedBeforeItsOwnArgument) {
  EXPECT_EQ(validate(1, "X", {5}), privileged_tool_error::invalidTypeCode('X', "an-operation"));
}

TEST_F(ArgumentValidation, EveryClassIsNamed) {
  const std::pair<Value, const char*> classes[] = {
      {Data{}, "NSData"}, {Date{}, "NSDate"},           {Array{}, "NSArray"}, {Dictionary{}, "NSDictionary"},
      {Null{}, "NSNull"}, {Error::posix(1), "NSError"}, {true, "NSNumber"}};
  for (const auto& [value, name] : classes) {
    EXPECT_EQ(validate(1, "S", {value}), privileged_tool_error::wrongArgumentClass("an-operation", 0, name, 'S'));
  }
}

}  // namespace
}  // namespace vantrell
