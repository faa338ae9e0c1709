// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/SignatureCommand.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeTerminal.h"
#include "tests/support/FakeCodeSignatures.h"

namespace vantrell::tests {

using testing::ElementsAre;
using testing::HasSubstr;

class SignatureCommand : public testing::Test {
 protected:
  SignatureCommand() {
    auto signatures = std::make_unique<FakeCodeSignatures>();
    signatures_ = signatures.get();
    client_.host.codeSignatures = std::move(signatures);
  }

  ExitStatus describe(bool json = false) {
    const CommandContext context{client_.host, terminal_, operations_, out_, err_, json, false};
    return describeSignature(context, "/a");
  }

  ClientHost client_;
  FakeTerminal terminal_;
  QELPrivilegedToolOperationSetLM4 operations_{*client_.host.systemLog};
  std::ostringstream out_;
  std::ostringstream err_;
  FakeCodeSignatures* signatures_;
};

TEST_F(SignatureCommand, TellsWhoSigned) {
  signatures_->code["/a"].information =
      host::CodeSigningInformation{"com.example", "TEAM", {"Signer", "Intermediate", "Root"}, false};
  EXPECT_EQ(describe(), ExitStatus::Success);
  EXPECT_EQ(out_.str(),
            "Identifier: com.example\nTeam: TEAM\nAuthority: Signer\nAuthority: Intermediate\nAuthority: Root\n"
            "The signature is valid.\n");
  ASSERT_EQ(signatures_->questions.size(), 1U);
  const auto& question = signatures_->questions[0];
  EXPECT_EQ(question.requirement, "anchor apple generic");
  EXPECT_TRUE(question.options.checkAllArchitectures && question.options.checkNestedCode &&
              question.options.enforceRevocationChecks);
}

TEST_F(SignatureCommand, TellsEveryFindingAndFails) {
  auto& code = signatures_->code["/a"];
  code.information = host::CodeSigningInformation{"com.\x1b[2Jexample", std::nullopt, {}, false};
  code.validity = Error(host::kCodeSigningErrorDomain, host::code_signing_error::kBadResource);
  code.findings = {"Not sealed, but there: /a/b", "Sealed, but missing: /a/c"};
  EXPECT_EQ(describe(), ExitStatus::Failure);
  EXPECT_EQ(out_.str(),
            "Identifier: com.\\x1b[2Jexample\nTeam: none\nFinding: Not sealed, but there: /a/b\n"
            "Finding: Sealed, but missing: /a/c\nThe signature is not valid.\n");
}

TEST_F(SignatureCommand, LooksIntoAdHocSignaturesWithoutRequirement) {
  auto& code = signatures_->code["/a"];
  code.information = host::CodeSigningInformation{"tool", std::nullopt, {}, true};
  code.validity = Error(host::kCodeSigningErrorDomain, host::code_signing_error::kRequirementFailed);
  code.findings = {"nobody"};
  EXPECT_EQ(describe(), ExitStatus::Failure);
  EXPECT_THAT(out_.str(), HasSubstr("Authority: none (ad-hoc signature)\n"));
  ASSERT_EQ(signatures_->questions.size(), 2U);
  EXPECT_EQ(signatures_->questions[1].requirement, "");
}

TEST_F(SignatureCommand, PrintsOneJsonObject) {
  auto& code = signatures_->code["/a"];
  code.information = host::CodeSigningInformation{"com.example", std::nullopt, {"Signer"}, false};
  code.validity = Error(host::kCodeSigningErrorDomain, host::code_signing_error::kSignatureFailed);
  code.findings = {"altered"};
  EXPECT_EQ(describe(true), ExitStatus::Failure);
  EXPECT_EQ(nlohmann::json::parse(out_.str()),
            nlohmann::json::parse(R"({"path": "/a", "valid": false, "code": -67061, "identifier": "com.example",
                                      "team": null, "adHoc": false, "authorities": ["Signer"],
                                      "findings": ["altered"]})"));
}

TEST_F(SignatureCommand, UnsignedCodeHasFindingsOnly) {
  auto& code = signatures_->code["/a"];
  code.findings = {"The code isn't signed."};
  EXPECT_EQ(describe(), ExitStatus::Failure);
  EXPECT_EQ(out_.str(), "Finding: The code isn't signed.\nThe signature is not valid.\n");
}

TEST_F(SignatureCommand, FailsWithAWordWhereNothingIs) {
  EXPECT_EQ(describe(), ExitStatus::Failure);
  EXPECT_EQ(out_.str(), "");
  EXPECT_THAT(err_.str(), HasSubstr("vantrellctl: "));
}

}  // namespace vantrell::tests
