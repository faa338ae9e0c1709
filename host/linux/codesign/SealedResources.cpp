// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/SealedResources.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/linux/codesign/CodeDigest.h"

namespace vantrell::host::codesign {
namespace {

constexpr std::size_t kReadStep = std::size_t{256} << 10;

}  // namespace

SealedResources::SealedResources(const ResourceSeal& seal, std::string root,
                                 std::set<std::string, std::less<>> exclusions, CheckingBudget& budget,
                                 Findings& findings, NestedCodeHandler onNestedCode)
    : seal_(seal),
      root_(std::move(root)),
      exclusions_(std::move(exclusions)),
      budget_(budget),
      findings_(findings),
      onNestedCode_(std::move(onNestedCode)) {}

void SealedResources::check(DirectoryHandle& folder) {
  if (walk(folder, "", 0)) reportMissing();
}

bool SealedResources::giveUp(const char* reason) {
  findings_.add(code_signing_error::kUnsupported, reason);
  return false;
}

// Each of the next is false once the check was given up.

bool SealedResources::walk(DirectoryHandle& folder, const std::string& prefix, std::size_t depth) {
  if (depth > CheckingBudget::kMaximumFolderDepth) return giveUp("The bundle's folders are nested too deeply.");
  for (;;) {
    const auto entry = folder.next();
    if (!entry) {
      findings_.resourceAltered(fullPath(prefix));
      return true;
    }
    if (!*entry) return true;
    if (!CheckingBudget::take(budget_.objects)) return giveUp("The bundle has too many files.");
    const std::string name((*entry)->name);
    const std::string path = prefix + name;
    if (exclusions_.contains(path)) continue;
    FileType type = (*entry)->type;
    if (type == FileType::Unknown) {
      const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
      if (status) type = status->type;
    }
    if (!visit(folder, name.c_str(), type, path, depth)) return false;
  }
}

bool SealedResources::visit(DirectoryHandle& folder, const char* name, FileType type, const std::string& path,
                            std::size_t depth) {
  const auto listed = seal_.entries().find(path);
  if (listed != seal_.entries().end()) {
    // The first version knows no links: what became one is missing.
    if (seal_.isFirstVersion() && type == FileType::SymbolicLink) return true;
    met_.insert(listed->first);
    compare(folder, name, type, path, listed->second);
    return true;
  }
  if (type == FileType::Directory) return visitFolder(folder, name, path, depth);
  if (type == FileType::SymbolicLink && seal_.isFirstVersion()) return true;
  return visitUnlisted(path);
}

bool SealedResources::visitFolder(DirectoryHandle& folder, const char* name, const std::string& path,
                                  std::size_t depth) {
  // A bundle of code that the seal doesn't know at all is one addition, not as many as it has files.
  if (std::string_view(name).find('.') != std::string_view::npos && !listsBelow(path)) {
    const auto rule = seal_.ruleFor(path, budget_.patternSteps);
    if (!rule) return giveUp("The rules for sealed resources take too long.");
    if (*rule != nullptr && (*rule)->nested && !(*rule)->omit) {
      findings_.resourceAdded(fullPath(path));
      return true;
    }
  }
  const auto inner = folder.openDirectory(name, MountPoints::Refuse);
  if (!inner) {
    findings_.resourceAltered(fullPath(path));
    return true;
  }
  return walk(**inner, path + "/", depth + 1);
}

bool SealedResources::visitUnlisted(const std::string& path) {
  const auto rule = seal_.ruleFor(path, budget_.patternSteps);
  if (!rule) return giveUp("The rules for sealed resources take too long.");
  if (*rule != nullptr && !(*rule)->omit) findings_.resourceAdded(fullPath(path));
  return true;
}

void SealedResources::compare(DirectoryHandle& folder, const char* name, FileType type, const std::string& path,
                              const SealedEntry& entry) {
  bool same = false;
  switch (entry.kind) {
    case SealedEntry::Kind::File:
      same = type == FileType::Regular && hasContent(folder, name, entry);
      break;
    case SealedEntry::Kind::SymbolicLink: {
      const auto target = folder.readLinkOf(name);
      same = type == FileType::SymbolicLink && target && *target == entry.target;
      break;
    }
    case SealedEntry::Kind::NestedCode:
      same = type == FileType::Regular || type == FileType::Directory;
      if (same) onNestedCode_(fullPath(path), entry);
      break;
  }
  if (!same) findings_.resourceAltered(fullPath(path));
}

bool SealedResources::hasContent(DirectoryHandle& folder, const char* name, const SealedEntry& entry) {
  const auto file = folder.openFile(name);
  if (!file) return false;
  CodeDigest sha1("SHA1");
  CodeDigest sha256("SHA256");
  buffer_.resize(kReadStep);
  if (!entry.sha1.empty()) sha1.begin();
  if (!entry.sha256.empty()) sha256.begin();
  for (;;) {
    const auto count = (*file)->read(buffer_);
    if (!count) return false;
    if (*count == 0) break;
    if (!CheckingBudget::take(budget_.bytes, *count)) {
      giveUp("The bundle's resources are too large.");
      return false;
    }
    const DataView piece(buffer_.data(), *count);
    if (!entry.sha1.empty()) sha1.update(piece);
    if (!entry.sha256.empty()) sha256.update(piece);
  }
  return (entry.sha1.empty() || std::ranges::equal(sha1.finish(), entry.sha1)) &&
         (entry.sha256.empty() || std::ranges::equal(sha256.finish(), entry.sha256));
}

bool SealedResources::listsBelow(const std::string& path) const {
  const std::string prefix = path + "/";
  const auto found = seal_.entries().lower_bound(prefix);
  return found != seal_.entries().end() && found->first.starts_with(prefix);
}

void SealedResources::reportMissing() {
  for (const auto& [path, entry] : seal_.entries()) {
    if (!entry.optional && !met_.contains(path)) findings_.resourceMissing(fullPath(path));
  }
}

}  // namespace vantrell::host::codesign
