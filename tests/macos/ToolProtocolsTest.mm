// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <map>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <objc/runtime.h>

#include "host/macos/ToolProtocols.h"

// Clients of other makers are compiled against these selectors and types.

namespace vantrell::tests {
namespace {

using testing::ElementsAre;
using testing::Pair;

/// Each selector with the encoded types of its arguments.
std::map<std::string, std::string> methodsOf(Protocol* protocol, bool required) {
  unsigned count = 0;
  const std::unique_ptr<objc_method_description, decltype(&std::free)> methods(
      protocol_copyMethodDescriptionList(protocol, required, YES, &count), std::free);
  std::map<std::string, std::string> result;
  for (unsigned i = 0; i < count; ++i) {
    const objc_method_description& method = methods.get()[i];
    NSMethodSignature* const signature = [NSMethodSignature signatureWithObjCTypes:method.types];
    EXPECT_STREQ(signature.methodReturnType, "v");
    std::string types;
    for (NSUInteger argument = 2; argument < signature.numberOfArguments; ++argument) {
      types += std::string(types.empty() ? "" : " ") + [signature getArgumentTypeAtIndex:argument];
    }
    result[sel_getName(method.name)] = types;
  }
  return result;
}

TEST(ToolProtocols, TheServiceOffersTheAgreedSelectors) {
  EXPECT_THAT(
      methodsOf(@protocol(QELPrivilegedToolProtocol), true),
      ElementsAre(Pair("cancelPrivilegedOperation:previouslyAuthorizedWithToken:arguments:", "Q @ @"),
                  Pair("getVersionStringUsingReply:", "@?"),
                  Pair("performPrivilegedOperation:withToken:feedbackEndpoint:arguments:usingReply:", "Q @ @ @ @?"),
                  Pair("registerClientWithPID:usingSaltReply:", "i @?"), Pair("unregisterClientWithPID:", "i")));
  EXPECT_THAT(methodsOf(@protocol(QELPrivilegedToolProtocol), false), ElementsAre());
}

TEST(ToolProtocols, AClientOffersTheAgreedSelector) {
  EXPECT_THAT(methodsOf(@protocol(QELPrivilegedOperationFeedbackProtocol), true),
              ElementsAre(Pair("processPrivilegedOperationFeedback:", "@")));
  EXPECT_THAT(methodsOf(@protocol(QELPrivilegedOperationFeedbackProtocol), false), ElementsAre());
}

TEST(ToolProtocols, InterfacesAreMadeFromTheProtocols) {
  EXPECT_TRUE(protocol_isEqual(host::interfaceForToolProtocol().protocol, @protocol(QELPrivilegedToolProtocol)));
  EXPECT_TRUE(protocol_isEqual(host::interfaceForFeedbackProtocol().protocol,
                               @protocol(QELPrivilegedOperationFeedbackProtocol)));
}

}  // namespace
}  // namespace vantrell::tests
