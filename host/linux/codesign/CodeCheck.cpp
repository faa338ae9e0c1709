// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/CodeCheck.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "host/linux/codesign/DirectorySignature.h"
#include "host/linux/codesign/PageHashes.h"
#include "host/linux/codesign/SealedResources.h"

namespace vantrell::host::codesign {
namespace {

void add(Findings& findings, const Error& error) {
  // What the file system has to say about code that can't be read has no code of its own here.
  const bool isOurs = error.domain() == kCodeSigningErrorDomain;
  findings.add(isOurs ? error.code() : code_signing_error::kBadObject, sentenceOf(error));
}

/// What a special slot is about; nothing where the code has no such part.
std::optional<DataView> partFor(std::uint32_t number, const CodeLocation& location,
                                const ArchitectureSignature& signature) {
  const auto viewOf = [](const std::optional<Data>& data) {
    return data ? std::optional<DataView>(*data) : std::nullopt;
  };
  if (number == slot::kInformationList) {
    return location.isBundle ? viewOf(location.informationList) : signature.slice().informationList;
  }
  if (number == slot::kResources) return viewOf(location.codeResources);
  const SignatureBlob* blob = signature.blobs().find(number);
  return blob == nullptr ? std::nullopt : std::optional<DataView>(blob->bytes);
}

std::string nameOf(std::uint32_t number) {
  switch (number) {
    case slot::kInformationList:
      return "information list";
    case slot::kRequirements:
      return "set of requirements";
    case slot::kResources:
      return "list of sealed resources";
    case slot::kEntitlements:
    case slot::kDerEntitlements:
      return "set of entitlements";
    default:
      return fmt::format("part in slot {}", number);
  }
}

/// The architectures of one file are one program: what binds or vouches for one must do so for all.
bool agree(const ArchitectureSignature& left, const ArchitectureSignature& right) {
  const CodeDirectory& first = left.directories().front();
  const CodeDirectory& second = right.directories().front();
  if (first.identifier() != second.identifier() || first.teamIdentifier() != second.teamIdentifier()) return false;
  if (left.message() == nullptr || right.message() == nullptr) return left.message() == right.message();
  return X509_cmp(left.message()->signer(), right.message()->signer()) == 0;
}

bool isBoundBy(const SealedEntry& entry, const ArchitectureSignature& signature) {
  return std::ranges::any_of(signature.directories(), [&entry](const CodeDirectory& directory) {
    return std::ranges::any_of(entry.cdHashes,
                               [&directory](const Data& hash) { return std::ranges::equal(hash, directory.cdHash()); });
  });
}

/// One architecture's hash is enough where the same signer vouches for the others; nobody does for ad-hoc ones.
bool isBoundBy(const SealedEntry& entry, const SignedExecutable& executable) {
  const auto isBound = [&entry](const ArchitectureSignature& signature) { return isBoundBy(entry, signature); };
  return executable.architectures.front().message() == nullptr ? std::ranges::all_of(executable.architectures, isBound)
                                                               : std::ranges::any_of(executable.architectures, isBound);
}

}  // namespace

void CodeCheck::check(const CodeLocation& location, bool anchored, Findings& findings) {
  const auto executable = SignedExecutable::load(fileSystem_, location.executable, options_.checkAllArchitectures);
  if (!executable) return add(findings, executable.error());
  checkSignatures(*executable, anchored, findings);
  if (findings.empty()) checkContents(location, *executable, 0, findings);
}

void CodeCheck::checkSignatures(const SignedExecutable& executable, bool anchored, Findings& findings) {
  for (const ArchitectureSignature& signature : executable.architectures) {
    const std::string& architecture = signature.slice().architecture;
    if (!agree(executable.architectures.front(), signature)) {
      findings.add(code_signing_error::kSignatureFailed,
                   fmt::format("The architectures are signed differently ({}).", architecture));
    }
    if (signature.message() != nullptr) {
      if (auto error = verifySignature(*signature.message(), signature.directories(), trust_)) add(findings, *error);
    } else if (anchored) {
      findings.add(code_signing_error::kRequirementFailed,
                   fmt::format("The signature is ad-hoc: nobody vouches for the code ({}).", architecture));
    }
  }
}

void CodeCheck::checkContents(const CodeLocation& location, const SignedExecutable& executable, std::size_t depth,
                              Findings& findings) {
  for (const ArchitectureSignature& signature : executable.architectures) {
    for (const CodeDirectory& directory : signature.directories()) {
      checkDirectory(location, signature, directory, findings);
    }
  }
  if (location.isBundle) checkResources(location, depth, findings);
}

void CodeCheck::checkDirectory(const CodeLocation& location, const ArchitectureSignature& signature,
                               const CodeDirectory& directory, Findings& findings) {
  const std::string& architecture = signature.slice().architecture;
  CodeDigest digest(digestName(directory.hashType()));
  for (std::uint32_t number = 1; number <= slot::kLastLaunchConstraint; ++number) {
    const DataView hash = directory.specialHash(number);
    const auto part = partFor(number, location, signature);
    // In a single file the pages cover the information list, whether it has a slot or not.
    const bool mayGoWithout = number == slot::kInformationList && !location.isBundle;
    if (hash.empty() ? part && !mayGoWithout : !part || !digest.matches(*part, hash)) {
      const char* what = hash.empty() ? "isn't sealed" : part ? "isn't as it was sealed" : "is missing";
      findings.add(code_signing_error::kSignatureFailed,
                   fmt::format("The {} {} ({}).", nameOf(number), what, architecture));
    }
  }
  for (std::uint32_t number = slot::kLastLaunchConstraint + 1; number <= directory.specialSlots(); ++number) {
    if (directory.specialHash(number).empty()) continue;
    findings.add(code_signing_error::kUnsupported, "The signature seals something that isn't known.");
    break;
  }
  const DataView code = signature.slice().bytes.first(static_cast<std::size_t>(directory.codeLimit()));
  if (const auto page = firstAlteredPage(directory, code)) {
    findings.add(code_signing_error::kSignatureFailed,
                 fmt::format("The code isn't as it was signed (page {}, {}).", *page, architecture));
  }
}

void CodeCheck::checkResources(const CodeLocation& location, std::size_t depth, Findings& findings) {
  if (!location.codeResources) {
    return findings.add(code_signing_error::kSignatureFailed, "The bundle's resources aren't sealed.");
  }
  for (const std::string& path : location.unsealed) findings.resourceAdded(path);
  const auto seal = ResourceSeal::parse(*location.codeResources);
  if (!seal) return add(findings, seal.error());
  const auto folder = fileSystem_.openDirectory(location.sealedFolder, FollowLinks::Yes);
  if (!folder) return add(findings, folder.error());
  SealedResources resources(*seal, location.sealedFolder, location.exclusions, budget_, findings,
                            [&](const std::string& path, const SealedEntry& entry) {
                              if (options_.checkNestedCode) checkNested(path, entry, depth, findings);
                            });
  resources.check(**folder);
}

void CodeCheck::checkNested(const std::string& path, const SealedEntry& entry, std::size_t depth, Findings& findings) {
  const Findings nested = nestedFindings(path, entry, depth + 1);
  for (const std::string& sentence : nested.sentences()) {
    findings.add(code_signing_error::kBadNestedCode, fmt::format("In {}: {}", path, sentence));
  }
}

Findings CodeCheck::nestedFindings(const std::string& path, const SealedEntry& entry, std::size_t depth) {
  Findings findings;
  if (depth > CheckingBudget::kMaximumCodeDepth || !CheckingBudget::take(budget_.nestedCode)) {
    findings.add(code_signing_error::kUnsupported, "There is too much nested code.");
    return findings;
  }
  const auto location = locateCode(fileSystem_, path);
  if (!location) {
    add(findings, location.error());
    return findings;
  }
  // All architectures, whatever was asked for: the seal's hash is that of any of them.
  const auto executable = SignedExecutable::load(fileSystem_, location->executable, true);
  if (!executable) {
    add(findings, executable.error());
    return findings;
  }
  if (!isBoundBy(entry, *executable)) {
    findings.add(code_signing_error::kSignatureFailed, "This isn't the code that was sealed.");
  }
  checkSignatures(*executable, false, findings);
  if (findings.empty()) checkContents(*location, *executable, depth, findings);
  return findings;
}

}  // namespace vantrell::host::codesign
