// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "core/ClassRegistry.h"
#include "core/QELPrivilegedOperationSetImplementorLm4.h"
#include "core/QELPrivilegedTool.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/ServiceUnderTest.h"

namespace vantrell {
namespace {

TEST(Implementor, AnswersToTheSelectorsOfTheCatalogueAndNoOthers) {
  tests::RecordingLog log;
  const QELPrivilegedToolOperationSetLM4 set(log);
  std::set<std::string> selectors;
  for (const auto& [code, identifier] : set.opIdentifiersByCode()) {
    const bool feedback = set.operationWithCode(code)->isSupportingFeedback();
    constexpr std::uint64_t kFirstBuiltInCode = 9994;
    if (code >= kFirstBuiltInCode) continue;  // the service's own
    selectors.insert(*set.selectorForExecutionOfPrivilegedOperationWithCode(code, feedback));
  }
  const auto implemented = QELPrivilegedOperationSetImplementorLm4::implementedSelectors();
  EXPECT_EQ(implemented.size(), 28U);
  EXPECT_EQ(std::set<std::string>(implemented.begin(), implemented.end()), selectors);
}

TEST(Implementor, IsFoundByTheNameThatTheOperationSetGives) {
  tests::RecordingLog log;
  const QELPrivilegedToolOperationSetLM4 set(log);
  const auto registry = ClassRegistry::standard();
  EXPECT_TRUE(registry.implementorClass(set.nameOfImplementationClass()));
  EXPECT_TRUE(registry.principalClass("QELPrivilegedToolOperationSetLM4"));
  EXPECT_FALSE(registry.implementorClass("QELPrivilegedOperationSetImplementorLm5"));
  EXPECT_FALSE(registry.principalClass("(null)"));
}

TEST(Implementor, IsNotMadeWithoutOperationSetOrTool) {
  tests::ServiceUnderTest service;
  const auto registry = ClassRegistry::standard();
  const auto& make = *registry.implementorClass("QELPrivilegedOperationSetImplementorLm4");
  EXPECT_FALSE(make(nullptr, &service.tool()));
  EXPECT_FALSE(make(&service.operationSet(), nullptr));
  const auto implementor = make(&service.operationSet(), &service.tool());
  ASSERT_TRUE(implementor);
  EXPECT_TRUE(implementor->incomingOutputData().empty());
  EXPECT_TRUE(implementor->incomingErrorData().empty());
  EXPECT_EQ(implementor->concreteOperation(), nullptr);
  EXPECT_EQ(&implementor->operationSet(), &service.operationSet());
  EXPECT_EQ(&implementor->privilegedTool(), &service.tool());
  EXPECT_FALSE(implementor->methodForSelector("performOperationNoSuchWithArguments:"));
  EXPECT_FALSE(implementor->methodForSelector("performOperationInspectFileobjectWithArguments:feedbackConnection:"));
  EXPECT_TRUE(implementor->methodForSelector("performOperationInspectFileobjectWithArguments:"));
}

TEST(Implementor, CollectsOutputByStream) {
  tests::ServiceUnderTest service;
  tests::TestImplementor implementor(service.operationSet(), service.tool(), service.gate);
  implementor.receiveTaskOutput(bytesOf("out"), false);
  implementor.receiveTaskOutput(bytesOf("err"), true);
  implementor.receiveTaskOutput(bytesOf("put"), false);
  implementor.receiveTaskOutput(std::nullopt, true);
  implementor.receiveTaskOutput(bytesOf("lost"), std::nullopt);
  EXPECT_EQ(textOf(implementor.incomingOutputData()), "output");
  EXPECT_EQ(textOf(implementor.incomingErrorData()), "err");
}

}  // namespace
}  // namespace vantrell
