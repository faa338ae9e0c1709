// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The operation "write-smcvalue", and the controller that all its requests share.

#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "foundation/PosixCodes.h"
#include "host/linux/AppleSmcDriver.h"
#include "system/SmcOperations.h"
#include "tests/support/RecordingLog.h"
#include "tests/system/SmcScriptedDriver.h"

namespace vantrell {
namespace {

using tests::ScriptedSmc;

class WriteSmcvalue : public testing::Test {
 protected:
  tests::RecordingLog log_;
  ScriptedSmc driver_;
  SmcSharedController shared_{driver_, log_};
  SmcOperations operations_{shared_};
};

TEST_F(WriteSmcvalue, WritesTheBytesToTheKey) {
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{0x12, 0x34}}), std::nullopt);
  EXPECT_EQ(driver_.smc.valueOfKey("F1Mn"), (Data{0x12, 0x34}));
}

TEST_F(WriteSmcvalue, TakesExactlyTwoArguments) {
  for (const Array& arguments : {Array{}, Array{"F1Mn"}, Array{"F1Mn", Data{1, 2}, Data{1, 2}}}) {
    EXPECT_EQ(operations_.writeSmcvalue(arguments), Error::posix(posix::kInvalidArgument));
  }
  EXPECT_EQ(operations_.writeSmcvalue({Data{1, 2}, "F1Mn"}), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", 5}), Error::posix(posix::kInvalidArgument));
  EXPECT_TRUE(driver_.steps.empty());
}

TEST_F(WriteSmcvalue, FailsWith20WithoutAController) {
  const Error expected(
      privilegedOperationErrorDomain(), 20,
      Dictionary{{NSLocalizedDescriptionKey, "The System Management Controller could not be accessed."},
                 {NSLocalizedRecoverySuggestionErrorKey,
                  "This is either not an Apple-branded computer or a technical problem occurred while trying to find "
                  "the SMC."}});
  driver_.connectCode = host::kSmcGeneralError;
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2}}), expected);
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{}}), expected) << "whatever the arguments";

  host::AppleSmcDriver none("/nonexistent/applesmc");
  SmcSharedController shared(none, log_);
  EXPECT_EQ(SmcOperations(shared).writeSmcvalue({"F1Mn", Data{1, 2}}), expected);
}

TEST_F(WriteSmcvalue, FailsWith21WhenTheValueIsNotAccepted) {
  const Error expected(
      privilegedOperationErrorDomain(), 21,
      Dictionary{{NSLocalizedDescriptionKey, "Write access to the System Management Controller failed."},
                 {NSLocalizedRecoverySuggestionErrorKey,
                  "An unknown problem occurred while trying to update a value of the SMC."}});
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2, 3}}), expected) << "another size";
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{}}), expected);
  EXPECT_EQ(operations_.writeSmcvalue({"F1M", Data{1, 2}}), expected) << "no key";
  EXPECT_EQ(operations_.writeSmcvalue({"none", Data{1, 2}}), expected);
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mx", Data{1, 2}}), expected) << "read-only";
  driver_.connectCode = host::kSmcGeneralError;
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2}}), expected) << "the service has gone since";
}

TEST_F(WriteSmcvalue, TriesAgainToFindTheControllerOnTheNextRequest) {
  driver_.connectCode = host::kSmcGeneralError;
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2}})->code(), 20);
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2}})->code(), 20);
  EXPECT_EQ(driver_.steps.size(), 2U) << "tried each time";
  driver_.connectCode = host::kSmcSuccess;
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2}}), std::nullopt);
}

TEST_F(WriteSmcvalue, FindsTheControllerOnce) {
  EXPECT_TRUE(driver_.steps.empty()) << "not before it is needed";
  EXPECT_EQ(operations_.writeSmcvalue({"F1Mn", Data{1, 2}}), std::nullopt);
  const auto first = shared_.controller();
  const auto questions = driver_.callsWith(host::smc_command::kKeyAtIndex);
  EXPECT_GT(questions, 0U);
  EXPECT_EQ(operations_.writeSmcvalue({"F0Mn", Data{1, 2}}), std::nullopt);
  EXPECT_EQ(driver_.callsWith(host::smc_command::kKeyAtIndex), questions);
  EXPECT_EQ(shared_.controller(), first);
}

}  // namespace
}  // namespace vantrell
