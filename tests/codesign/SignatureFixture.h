// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/codesign/LinuxCodeSignatures.h"
#include "tests/codesign/TestAuthority.h"
#include "tests/codesign/TestBundle.h"
#include "tests/codesign/TestSigner.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

namespace code_signing_error = host::code_signing_error;

inline constexpr host::CodeValidityOptions kCheckEverything{true, true, true};

/// Files signed by an authority of the test's own, and a verifier that takes its root for the vendor's.
class SignatureFixture : public testing::Test {
 protected:
  static void SetUpTestSuite() { shared() = std::make_unique<TestAuthority>(); }
  static void TearDownTestSuite() { shared().reset(); }

  static TestAuthority& authority() { return *shared(); }
  static SigningOptions bySigner() { return SigningOptions::by(authority()); }

  host::codesign::Trust trust(std::int64_t secondsFromNow = 0) {
    return {authority().anchor(), [secondsFromNow] {
              Date date = Date::now();
              date.seconds += secondsFromNow;
              return date;
            }};
  }

  std::string place(DataView file, const std::string& name = "program") {
    writeFile(folder_.path(name), file);
    return folder_.path(name);
  }

  std::unique_ptr<host::StaticCode> codeAt(const std::string& path, std::int64_t secondsFromNow = 0) {
    host::LinuxCodeSignatures signatures(fileSystem_, trust(secondsFromNow));
    auto code = signatures.staticCodeAtPath(path);
    return code ? std::move(*code) : nullptr;
  }

  /// 0 where the check has nothing to say, 1 where there is no code at all.
  std::int64_t codeOfCheck(const std::string& path, const std::string& requirement = host::kAnchorAppleGeneric,
                           std::int64_t secondsFromNow = 0, host::CodeValidityOptions options = kCheckEverything) {
    const auto code = codeAt(path, secondsFromNow);
    if (!code) return 1;
    const auto error = code->checkValidity(options, requirement);
    findings_ = code->findings();
    error_ = error;
    EXPECT_EQ(error.has_value(), !findings_.empty());
    return error ? error->code() : 0;
  }
  std::int64_t codeOfFile(DataView file) { return codeOfCheck(place(file)); }

  /// The paths under one key of the last error, relative to `root`.
  std::vector<std::string> pathsUnder(const char* key, const std::string& root) const {
    std::vector<std::string> paths;
    const Value* list = error_ ? error_->userInfo().find(key) : nullptr;
    if (list == nullptr || list->asArray() == nullptr) return paths;
    for (const Value& path : *list->asArray()) {
      const std::string text = path.asString() != nullptr ? *path.asString() : "";
      paths.push_back(text.starts_with(root + "/") ? text.substr(root.size() + 1) : text);
    }
    return paths;
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  std::vector<std::string> findings_;
  ErrorOrNil error_;

 private:
  static std::unique_ptr<TestAuthority>& shared() {
    static std::unique_ptr<TestAuthority> authority;
    return authority;
  }
};

}  // namespace vantrell::tests
