// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

struct Refusal {
  Error error;
  std::int64_t code;
  std::string description;
  std::string suggestionTemplate;
  Array parameters;
};

constexpr char kCommunication[] = "Communication with the security component failed.";

std::vector<Refusal> allRefusals() {
  using namespace privileged_tool_error;
  return {
      {invalidOperation(18446744073709551615u),
       1,
       kCommunication,
       "Internal error: The operation with code $1$ is invalid or the arguments are missing.",
       {"18446744073709551615"}},
      {authorizationProblem(103),
       2,
       kCommunication,
       "An authorization or trust issue of type $1$ was detected. The operation was rejected to avoid a security "
       "breach. "
       "Uninstall the security component and try again.",
       {"103"}},
      {wrongArgumentCount("nop", 0, 2),
       3,
       kCommunication,
       "Internal error: An invalid number of arguments has been sent for operation $1$ ($2$ expected, $3$ received).",
       {"nop", "0", "2"}},
      {badTypeCodes("nop"),
       4,
       kCommunication,
       "Internal error: A contradiction in the definition of type codes for operation $1$ has been detected.",
       {"nop"}},
      {invalidTypeCode('X', "nop"),
       5,
       kCommunication,
       "Internal error: An invalid type code '$1$' has been detected in the definition of operation $2$.",
       {"X", "nop"}},
      {wrongArgumentClass("inspect-fileobject", 0, "NSNumber", 'S'),
       6,
       kCommunication,
       "Internal error: The operation $1$ was rejected because argument $2$ has class $3$, but type '$4$' was "
       "expected.",
       {"inspect-fileobject", "0", "NSNumber", "S"}},
      {stringListExpected("delete-fileobjects", "NSData"),
       7,
       kCommunication,
       "Internal error: The operation $1$ was rejected because at least one argument has class $2$, but a string list "
       "was "
       "expected.",
       {"delete-fileobjects", "NSData"}},
      {unhandledException("nop", "NSRangeException", "out of bounds"),
       8,
       "An unhandled error occurred during a privileged operation.",
       "While trying to execute the operation $1$, the exception '$2$' was detected: $3$",
       {"nop", "NSRangeException", "out of bounds"}},
      {notImplemented("write-smcvalue"),
       9,
       kCommunication,
       "Internal error: The privileged operation $1$ could not be executed because it is not implemented (yet).",
       {"write-smcvalue"}},
      {busyWithOtherClient(10, "other", 20),
       10,
       "The security component is currently busy. It may be working for another user session.",
       "The request to remove the privileged helper was rejected (your process $1$). Process $2$ ($3$) is still using "
       "it.",
       {"10", "other", "20"}},
  };
}

TEST(ErrorModel, EveryRefusalHasItsCodeDescriptionTemplateAndParameters) {
  const auto refusals = allRefusals();
  ASSERT_EQ(refusals.size(), 10u);
  for (const auto& refusal : refusals) {
    SCOPED_TRACE(refusal.code);
    EXPECT_EQ(refusal.error.domain(), privilegedToolErrorDomain());
    EXPECT_EQ(refusal.error.code(), refusal.code);
    EXPECT_EQ(refusal.error.userInfo(),
              (Dictionary{{"NSLocalizedDescription", refusal.description},
                          {"QELLocalizedRecoverySuggestionTemplate", refusal.suggestionTemplate},
                          {"QELLocalizedRecoverySuggestionParameters", refusal.parameters}}));
  }
}

TEST(ErrorModel, UnsafeLaunchControlHasAPlainSuggestionAndThePath) {
  const auto error = privileged_tool_error::unsafeLaunchControl();
  EXPECT_EQ(error.domain(), privilegedToolErrorDomain());
  EXPECT_EQ(error.code(), 11);
  EXPECT_EQ(error.userInfo(),
            (Dictionary{
                {"NSLocalizedDescription",
                 "A security issue was detected with the launch control subsystem of this operating system."},
                {"NSLocalizedRecoverySuggestion",
                 "The request to remove the privileged helper was rejected to avoid a possible security breach. "
                 "Required permission settings in your system installation are unsafe and may have been manipulated."},
                {"NSFilePath", "/bin/launchctl"}}));
}

TEST(ErrorModel, AnExceptionWithoutNameOrReasonIsReportedAsNil) {
  const auto error = privileged_tool_error::unhandledException("nop", "", "");
  EXPECT_EQ(*error.userInfo().find("QELLocalizedRecoverySuggestionParameters")->asArray(),
            (Array{"nop", "<nil>", "<nil>"}));
}

TEST(ErrorModel, DomainsBeginWithTheVendorsPrefix) {
  EXPECT_EQ(vendorDomainPrefix(), VANTRELL_VENDOR_DOMAIN_PREFIX);
  EXPECT_EQ(privilegedToolErrorDomain(), VANTRELL_VENDOR_DOMAIN_PREFIX ".error.privileged-tool");
  EXPECT_EQ(privilegedOperationErrorDomain(), VANTRELL_VENDOR_DOMAIN_PREFIX ".error.privileged-operation");
}

}  // namespace
}  // namespace vantrell
