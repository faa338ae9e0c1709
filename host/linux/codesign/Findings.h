// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/CodeSignatures.h"

namespace vantrell::host::codesign {

/// Something that speaks against a signature: a code of code_signing_error and a sentence.
struct Finding {
  std::int64_t code;
  std::string text;
};

/// What a check has found so far. Lists of paths are cut at kMaximumPaths; that they were longer stays known.
class Findings {
 public:
  static constexpr std::size_t kMaximumPaths = 10'000;

  void add(std::int64_t code, std::string text) { general_.push_back({code, std::move(text)}); }
  void resourceAdded(std::string path) { keep(added_, std::move(path)); }
  void resourceAltered(std::string path) { keep(altered_, std::move(path)); }
  void resourceMissing(std::string path) { keep(missing_, std::move(path)); }

  bool empty() const noexcept { return general_.empty() && !hasResourceFindings(); }
  bool hasResourceFindings() const noexcept { return !added_.empty() || !altered_.empty() || !missing_.empty(); }

  /// What StaticCode::checkValidity answers: the first general finding, else one error with all resource findings.
  ErrorOrNil asError() const;
  /// In the order of importance.
  std::vector<std::string> sentences() const;

 private:
  static void keep(std::vector<std::string>& list, std::string path) {
    if (list.size() < kMaximumPaths) list.push_back(std::move(path));
  }

  std::vector<Finding> general_;
  std::vector<std::string> added_;
  std::vector<std::string> altered_;
  std::vector<std::string> missing_;
};

/// An error of the code-signing domain with its sentence as description.
Error codeSigningError(std::int64_t code, std::string text);
inline std::unexpected<Error> codeSigningFailure(std::int64_t code, std::string text) {
  return failure(codeSigningError(code, std::move(text)));
}

/// The sentence of such an error, or one made of domain and code.
std::string sentenceOf(const Error& error);

}  // namespace vantrell::host::codesign
