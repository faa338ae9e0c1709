// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "host/CodeSignatures.h"
#include "host/FileSystem.h"
#include "host/linux/codesign/CertificateChain.h"
#include "host/linux/codesign/CheckingBudget.h"
#include "host/linux/codesign/CodeLocation.h"
#include "host/linux/codesign/Findings.h"
#include "host/linux/codesign/ResourceSeal.h"
#include "host/linux/codesign/SignedExecutable.h"

namespace vantrell::host::codesign {

/// One check of a piece of code and, where asked for, of the code nested in it.
///
///   executable ── super blob ── code directories ── pages of the executable
///                     │                ├── information list, requirements, entitlements …
///                     │                └── CodeResources ── resources
///                     │                                └── nested code: the same again
///                     └── CMS message over the code directories ── certificates ── anchor
///
/// The cheap end comes first: nothing large is hashed for a signature that the anchor doesn't vouch for.
class CodeCheck {
 public:
  CodeCheck(FileSystem& fileSystem, const Trust& trust, CheckingBudget& budget, const CodeValidityOptions& options)
      : fileSystem_(fileSystem), trust_(trust), budget_(budget), options_(options) {}

  /// With `anchored`, an ad-hoc signature is a finding.
  void check(const CodeLocation& location, bool anchored, Findings& findings);

 private:
  void checkContents(const CodeLocation& location, const SignedExecutable& executable, std::size_t depth,
                     Findings& findings);
  void checkSignatures(const SignedExecutable& executable, bool anchored, Findings& findings);
  void checkDirectory(const CodeLocation& location, const ArchitectureSignature& signature,
                      const CodeDirectory& directory, Findings& findings);
  void checkResources(const CodeLocation& location, std::size_t depth, Findings& findings);
  void checkNested(const std::string& path, const SealedEntry& entry, std::size_t depth, Findings& findings);
  Findings nestedFindings(const std::string& path, const SealedEntry& entry, std::size_t depth);

  FileSystem& fileSystem_;
  const Trust& trust_;
  CheckingBudget& budget_;
  CodeValidityOptions options_;
};

}  // namespace vantrell::host::codesign
