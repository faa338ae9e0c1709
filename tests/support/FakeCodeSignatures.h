// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/PosixCodes.h"
#include "host/CodeSignatures.h"

namespace vantrell::tests {

/// One thing that a test says is signed, and how a check of it ends.
struct FakeSignedCode {
  Result<host::CodeSigningInformation> information =
      failure(Error(host::kCodeSigningErrorDomain, host::code_signing_error::kUnsigned));
  ErrorOrNil validity = std::nullopt;
  std::vector<std::string> findings;
};

/// What was asked of a fake.
struct ValidityQuestion {
  std::string path;
  host::CodeValidityOptions options;
  std::string requirement;
};

/// Signatures as a test wants them: what is at a path that it names, and nothing anywhere else.
class FakeCodeSignatures final : public host::CodeSignatures {
 public:
  std::map<std::string, FakeSignedCode> code;  // by path
  std::vector<ValidityQuestion> questions;     // in the order asked

  Result<std::unique_ptr<host::StaticCode>> staticCodeAtPath(const std::string& path) override {
    const auto found = code.find(path);
    if (found == code.end()) return posixFailure(posix::kNoEntry);
    return std::make_unique<Code>(*this, path, found->second);
  }

 private:
  class Code final : public host::StaticCode {
   public:
    Code(FakeCodeSignatures& owner, std::string path, FakeSignedCode code)
        : owner_(owner), path_(std::move(path)), code_(std::move(code)) {}

    Result<host::CodeSigningInformation> signingInformation() override { return code_.information; }
    ErrorOrNil checkValidity(const host::CodeValidityOptions& options, const std::string& requirement) override {
      owner_.questions.push_back({path_, options, requirement});
      if (!code_.information) return code_.information.error();
      return code_.validity;
    }
    std::vector<std::string> findings() const override { return code_.findings; }

   private:
    FakeCodeSignatures& owner_;
    std::string path_;
    FakeSignedCode code_;
  };
};

}  // namespace vantrell::tests
