// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// What a signature says of the code that it seals. Read, not yet believed: see StaticCode::checkValidity.
struct CodeSigningInformation {
  std::string identifier;
  std::optional<std::string> teamIdentifier;
  /// Common names of the certificates, the signer's first, the root's last; empty for an ad-hoc signature.
  std::vector<std::string> authorities;
  bool isAdHoc = false;
};

struct CodeValidityOptions {
  bool checkAllArchitectures = false;
  bool checkNestedCode = false;
  /// Where revocation can't be asked for, it is left out.
  bool enforceRevocationChecks = false;
};

/// Domain of the failures below, whose codes are the platform's (Security framework, CSCommon.h).
inline constexpr char kCodeSigningErrorDomain[] = "NSOSStatusErrorDomain";

namespace code_signing_error {
inline constexpr std::int64_t kUnsigned = -67062;              // errSecCSUnsigned
inline constexpr std::int64_t kSignatureFailed = -67061;       // errSecCSSignatureFailed: code or signature modified
inline constexpr std::int64_t kUnsupported = -67059;           // errSecCSSignatureUnsupported
inline constexpr std::int64_t kBadRequirementSyntax = -67052;  // errSecCSReqInvalid
inline constexpr std::int64_t kRequirementFailed = -67050;     // errSecCSReqFailed
inline constexpr std::int64_t kBadObject = -67049;             // errSecCSBadObjectFormat
inline constexpr std::int64_t kBadResource = -67054;    // errSecCSBadResource: a sealed resource is missing or invalid
inline constexpr std::int64_t kBadNestedCode = -67021;  // errSecCSBadNestedCode
}  // namespace code_signing_error

/// Keys of a validity failure's user info; each holds an array of paths (texts).
inline constexpr char SecCSResourceAdded[] = "SecCSResourceAdded";
inline constexpr char SecCSResourceAltered[] = "SecCSResourceAltered";
inline constexpr char SecCSResourceMissing[] = "SecCSResourceMissing";

/// The requirement that the signer's certificate chain ends in the vendor's root.
inline constexpr char kAnchorAppleGeneric[] = "anchor apple generic";

/// A bundle, or a single file, on disk as something that was signed. Never loaded, never run. One thread at a time.
class StaticCode {
 public:
  virtual ~StaticCode() = default;

  /// kUnsigned where there is no signature, kBadObject and others where it can't be read.
  virtual Result<CodeSigningInformation> signingInformation() = 0;

  /// Nothing when the code is whole, as its signer left it, and the signer meets `requirement` in the platform's
  /// requirement language; kBadRequirementSyntax for one that isn't understood. The empty text requires nothing: an
  /// ad-hoc signature will do, but a signer whose certificates can't be traced to the root is refused as ever.
  /// When nothing else is wrong, all findings about sealed resources come back in one kBadResource error whose user
  /// info holds nothing but the lists that aren't empty. Any other finding goes first, and has its sentence under
  /// NSLocalizedDescription.
  virtual ErrorOrNil checkValidity(const CodeValidityOptions& options, const std::string& requirement) = 0;

  /// Everything that the last checkValidity had to say against the code, one sentence each, the one that its error
  /// tells first; empty when it had nothing to say.
  virtual std::vector<std::string> findings() const { return {}; }
};

/// Code signatures. Safe from any thread.
class CodeSignatures {
 public:
  virtual ~CodeSignatures() = default;

  /// POSIX error 2 where nothing is, kBadObject for what can't be code.
  virtual Result<std::unique_ptr<StaticCode>> staticCodeAtPath(const std::string& path) = 0;
};

}  // namespace vantrell::host
