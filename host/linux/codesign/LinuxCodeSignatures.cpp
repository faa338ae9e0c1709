// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/LinuxCodeSignatures.h"

#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/err.h>

#include "host/linux/codesign/CodeCheck.h"
#include "host/linux/codesign/CodeLocation.h"
#include "host/linux/codesign/SignedExecutable.h"

namespace vantrell::host {
namespace {

using namespace codesign;

enum class Requirement : bool { None, Anchored };

/// Nothing for a requirement that isn't understood.
std::optional<Requirement> requirementFrom(const std::string& text) {
  std::istringstream words(text);
  std::string joined;
  for (std::string word; words >> word;) joined += joined.empty() ? word : " " + word;
  if (joined.empty()) return Requirement::None;
  if (joined == kAnchorAppleGeneric) return Requirement::Anchored;
  return std::nullopt;
}

class LinuxStaticCode final : public StaticCode {
 public:
  LinuxStaticCode(FileSystem& fileSystem, const Trust& trust, std::string path)
      : fileSystem_(fileSystem), trust_(trust), path_(std::move(path)) {}

  Result<CodeSigningInformation> signingInformation() override {
    const auto location = locateCode(fileSystem_, path_);
    if (!location) return failure(location.error());
    const auto executable = SignedExecutable::load(fileSystem_, location->executable, false);
    if (!executable) return failure(executable.error());
    return executable->architectures.front().information();
  }

  ErrorOrNil checkValidity(const CodeValidityOptions& options, const std::string& requirement) override {
    findings_ = {};
    run(options, requirement);
    ERR_clear_error();
    return findings_.asError();
  }

  std::vector<std::string> findings() const override { return findings_.sentences(); }

 private:
  void run(const CodeValidityOptions& options, const std::string& requirement) {
    const auto understood = requirementFrom(requirement);
    if (!understood) {
      return findings_.add(code_signing_error::kBadRequirementSyntax, "The requirement isn't understood.");
    }
    // Read anew each time: an answer is about the code as it is now.
    const auto location = locateCode(fileSystem_, path_);
    if (!location) {
      const bool isOurs = location.error().domain() == kCodeSigningErrorDomain;
      return findings_.add(isOurs ? location.error().code() : code_signing_error::kBadObject,
                           sentenceOf(location.error()));
    }
    CheckingBudget budget;
    CodeCheck(fileSystem_, trust_, budget, options).check(*location, *understood == Requirement::Anchored, findings_);
  }

  FileSystem& fileSystem_;
  Trust trust_;
  std::string path_;
  Findings findings_;
};

}  // namespace

LinuxCodeSignatures::LinuxCodeSignatures(FileSystem& fileSystem, Trust trust)
    : fileSystem_(fileSystem), trust_(std::move(trust)) {
  // What stands in a configuration file mustn't decide about a signature.
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
}

Result<std::unique_ptr<StaticCode>> LinuxCodeSignatures::staticCodeAtPath(const std::string& path) {
  const auto location = locateCode(fileSystem_, path);
  if (!location) return failure(location.error());
  return std::make_unique<LinuxStaticCode>(fileSystem_, trust_, path);
}

}  // namespace vantrell::host
