// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "host/linux/codesign/PathPattern.h"

namespace vantrell::host::codesign {

/// One object that a seal lists.
struct SealedEntry {
  enum class Kind : std::uint8_t { File, SymbolicLink, NestedCode };

  Kind kind = Kind::File;
  bool optional = false;
  Data sha1;  // File: one of these, or both; empty where there is none
  Data sha256;
  std::string target;            // SymbolicLink
  std::vector<Data> cdHashes{};  // NestedCode: hashes that its code directories may have; see ResourceSeal
};

/// Which objects a seal is about.
struct ResourceRule {
  PathPattern pattern;
  double weight = 1;
  bool omit = false;
  bool optional = false;
  bool nested = false;
};

/// The list of what is sealed in a bundle beside its executable, from the property list _CodeSignature/CodeResources.
/// Paths are relative to the folder that holds _CodeSignature.
///
/// The second version of the list counts where there is one. The first, which old signatures have alone, knows neither
/// links nor nested code and is, as a rule, about Resources only.
///
/// Nested code is bound by its hash, and by all hashes of its requirement where that is a mere choice of hashes; any
/// other requirement is not evaluated, as the hash says more.
class ResourceSeal {
 public:
  static constexpr std::size_t kMaximumSize = std::size_t{64} << 20;
  static constexpr std::size_t kMaximumRules = 256;

  /// kUnsupported for whatever isn't known, kBadObject for what is no such list.
  static Result<ResourceSeal> parse(DataView propertyList);

  bool isFirstVersion() const noexcept { return isFirstVersion_; }
  const std::map<std::string, SealedEntry, std::less<>>& entries() const noexcept { return entries_; }

  /// The rule that decides about a path: the weightiest that matches, of equals the one that leaves less out. Null
  /// where none matches; an error when `steps` run out, see PathPattern.
  Result<const ResourceRule*> ruleFor(std::string_view path, std::uint64_t& steps) const;

 private:
  ErrorOrNil readRules(const Dictionary& rules);
  ErrorOrNil readEntries(const Dictionary& files);

  bool isFirstVersion_ = false;
  std::vector<ResourceRule> rules_;
  std::map<std::string, SealedEntry, std::less<>> entries_;
};

}  // namespace vantrell::host::codesign
