// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacCodeSignatures.h"

#include <expected>
#include <utility>

#import <Foundation/Foundation.h>
#import <Security/Security.h>
#include <sys/stat.h>

#include "foundation/PosixCodes.h"
#include "host/macos/CodeSigningObjection.h"
#include "host/macos/CoreFoundationRef.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/ResolvedPath.h"

namespace vantrell::host {
namespace {

using Code = CoreFoundationRef<SecStaticCodeRef>;
using Requirement = CoreFoundationRef<SecRequirementRef>;

std::expected<Code, OSStatus> codeAt(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return std::unexpected(errSecCSStaticCodeNotFound);
  // Whatever else there is would be opened, too, and a pipe waited for.
  if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) return std::unexpected(errSecCSBadObjectFormat);
  NSURL* const url = [NSURL fileURLWithFileSystemRepresentation:path.c_str()
                                                    isDirectory:S_ISDIR(status.st_mode)
                                                  relativeToURL:nil];
  Code code;
  const OSStatus outcome = SecStaticCodeCreateWithPath((__bridge CFURLRef)url, kSecCSDefaultFlags, code.out());
  if (outcome != errSecSuccess) return std::unexpected(outcome);
  return code;
}

/// Why there is no code to ask about.
Error creationError(OSStatus outcome) {
  if (outcome == errSecCSStaticCodeNotFound) return Error::posix(posix::kNoEntry);
  return Error(kCodeSigningErrorDomain, code_signing_error::kBadObject, codeSigningError(outcome).userInfo());
}

/// Null for the empty text.
std::expected<Requirement, CodeSigningObjection> requirementFrom(const std::string& text) {
  Requirement requirement;
  if (text.empty()) return requirement;
  CoreFoundationRef<CFErrorRef> details;
  const OSStatus outcome = SecRequirementCreateWithStringAndErrors(
      (__bridge CFStringRef)stringFrom(text), kSecCSDefaultFlags, details.out(), requirement.out());
  if (outcome != errSecSuccess) return std::unexpected(objectionFrom(outcome, (__bridge NSError*)details.get()));
  return requirement;
}

SecCSFlags flagsFrom(const CodeValidityOptions& options) {
  SecCSFlags flags = kSecCSDefaultFlags;
  if (options.checkAllArchitectures) flags |= kSecCSCheckAllArchitectures;
  if (options.checkNestedCode) flags |= kSecCSCheckNestedCode;
  if (options.enforceRevocationChecks) flags |= kSecCSEnforceRevocationChecks;
  return flags;
}

std::string commonNameOf(SecCertificateRef certificate) {
  CoreFoundationRef<CFStringRef> name;
  if (SecCertificateCopyCommonName(certificate, name.out()) != errSecSuccess || !name) return {};
  return textFrom((__bridge NSString*)name.get());
}

CodeSigningInformation informationFrom(NSDictionary* information) {
  CodeSigningInformation result;
  result.identifier = textFrom(information[(__bridge NSString*)kSecCodeInfoIdentifier]);
  const id team = information[(__bridge NSString*)kSecCodeInfoTeamIdentifier];
  if ([team isKindOfClass:NSString.class]) result.teamIdentifier = textFrom(team);
  NSNumber* const flags = information[(__bridge NSString*)kSecCodeInfoFlags];
  result.isAdHoc = (flags.unsignedIntValue & kSecCodeSignatureAdhoc) != 0;
  NSArray* const certificates = information[(__bridge NSString*)kSecCodeInfoCertificates];
  for (id certificate in certificates) {
    result.authorities.push_back(commonNameOf((__bridge SecCertificateRef)certificate));
  }
  return result;
}

class MacStaticCode final : public StaticCode {
 public:
  MacStaticCode(std::string path, Code code) : path_(std::move(path)), code_(std::move(code)) {}

  Result<CodeSigningInformation> signingInformation() override {
    @autoreleasepool {
      CoreFoundationRef<CFDictionaryRef> information;
      const OSStatus outcome = SecCodeCopySigningInformation(code_.get(), kSecCSSigningInformation, information.out());
      if (outcome != errSecSuccess) return failure(codeSigningError(outcome));
      NSDictionary* const dictionary = (__bridge NSDictionary*)information.get();
      if (dictionary[(__bridge NSString*)kSecCodeInfoIdentifier] == nil) {
        return failure(codeSigningError(errSecCSUnsigned));
      }
      return informationFrom(dictionary);
    }
  }

  ErrorOrNil checkValidity(const CodeValidityOptions& options, const std::string& requirement) override {
    @autoreleasepool {
      findings_.clear();
      // The platform's object remembers what it has found, and what a file contained. For a first answer that is
      // right: it is about the very signature that signingInformation told of. A later one is about the code as it is
      // then.
      if (std::exchange(isChecked_, true)) {
        auto code = codeAt(path_);
        if (!code) return refuse(objectionFrom(code.error(), nil));
        code_ = *std::move(code);
      }
      const auto compiled = requirementFrom(effectiveRequirement(requirement));
      if (!compiled) return refuse(compiled.error());
      CoreFoundationRef<CFErrorRef> details;
      const OSStatus outcome =
          SecStaticCodeCheckValidityWithErrors(code_.get(), flagsFrom(options), compiled->get(), details.out());
      if (outcome == errSecSuccess) return std::nullopt;
      return refuse(objectionFrom(outcome, (__bridge NSError*)details.get()));
    }
  }

  std::vector<std::string> findings() const override { return findings_; }

 private:
  ErrorOrNil refuse(CodeSigningObjection objection) {
    findings_ = std::move(objection.findings);
    return std::move(objection.error);
  }

  // Without a requirement the platform believes every signer whose certificate signed itself.
  std::string effectiveRequirement(const std::string& requirement) {
    if (!requirement.empty()) return requirement;
    const auto information = signingInformation();
    return information && information->isAdHoc ? std::string() : kAnchorAppleGeneric;
  }

  std::string path_;  // without links
  Code code_;
  bool isChecked_ = false;
  std::vector<std::string> findings_;
};

}  // namespace

Result<std::unique_ptr<StaticCode>> MacCodeSignatures::staticCodeAtPath(const std::string& path) {
  @autoreleasepool {
    // As the platform asks for: it might take a bundle for something else.
    auto resolved = resolvedPath(path);
    if (!resolved) return failure(resolved.error());
    auto code = codeAt(*resolved);
    if (!code) return failure(creationError(code.error()));
    return std::make_unique<MacStaticCode>(*std::move(resolved), *std::move(code));
  }
}

}  // namespace vantrell::host
