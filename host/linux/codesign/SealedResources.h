// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "host/FileSystem.h"
#include "host/linux/codesign/CheckingBudget.h"
#include "host/linux/codesign/Findings.h"
#include "host/linux/codesign/ResourceSeal.h"

namespace vantrell::host::codesign {

/// Compares a folder with its seal: what was altered, what is missing and what was added. Links are never followed and
/// mounts never entered; an object that can't be read counts as altered, one of a kind that no seal knows as added.
class SealedResources {
 public:
  /// Told of each piece of nested code that the seal lists and that is there.
  using NestedCodeHandler = std::function<void(const std::string& path, const SealedEntry& entry)>;

  /// `root` is the sealed folder's path, for messages. `exclusions` are relative paths (of folders with all below them)
  /// that no seal is about.
  SealedResources(const ResourceSeal& seal, std::string root, std::set<std::string, std::less<>> exclusions,
                  CheckingBudget& budget, Findings& findings, NestedCodeHandler onNestedCode);

  void check(DirectoryHandle& folder);

 private:
  bool walk(DirectoryHandle& folder, const std::string& prefix, std::size_t depth);
  bool visit(DirectoryHandle& folder, const char* name, FileType type, const std::string& path, std::size_t depth);
  bool visitFolder(DirectoryHandle& folder, const char* name, const std::string& path, std::size_t depth);
  bool visitUnlisted(const std::string& path);
  void compare(DirectoryHandle& folder, const char* name, FileType type, const std::string& path,
               const SealedEntry& entry);
  bool hasContent(DirectoryHandle& folder, const char* name, const SealedEntry& entry);
  bool listsBelow(const std::string& path) const;
  bool giveUp(const char* reason);
  void reportMissing();
  std::string fullPath(std::string_view path) const { return root_ + "/" + std::string(path); }

  const ResourceSeal& seal_;
  std::string root_;
  std::set<std::string, std::less<>> exclusions_;
  CheckingBudget& budget_;
  Findings& findings_;
  NestedCodeHandler onNestedCode_;
  std::set<std::string_view> met_;  // paths that the seal lists
  Data buffer_;
};

}  // namespace vantrell::host::codesign
