// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/ResourceSeal.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "foundation/PropertyList.h"
#include "host/linux/codesign/CodeDigest.h"
#include "host/linux/codesign/Findings.h"

namespace vantrell::host::codesign {
namespace {

constexpr std::size_t kSha1Size = 20;
constexpr std::size_t kSha256Size = 32;

Error malformed(std::string text) {
  return codeSigningError(code_signing_error::kBadObject, std::move(text));
}
Error unsupported(std::string text) {
  return codeSigningError(code_signing_error::kUnsupported, std::move(text));
}

/// "cdhash H"…"", once or several times with "or" between; nothing for any other requirement.
std::optional<std::vector<Data>> hashesInRequirement(std::string_view text) {
  std::vector<Data> hashes;
  const auto skip = [&text](std::string_view token) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    if (!text.starts_with(token)) return false;
    text.remove_prefix(token.size());
    return true;
  };
  const auto digit = [](char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
  };
  do {
    if (!skip("cdhash ") || !skip("H\"") || text.size() < 2 * kCdHashSize + 1) return std::nullopt;
    Data hash;
    for (std::size_t index = 0; index < kCdHashSize; ++index) {
      const int high = digit(text[2 * index]);
      const int low = digit(text[2 * index + 1]);
      if (high < 0 || low < 0) return std::nullopt;
      hash.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    text.remove_prefix(2 * kCdHashSize);
    if (!skip("\"")) return std::nullopt;
    hashes.push_back(std::move(hash));
  } while (skip("or "));
  if (text.find_first_not_of(' ') != std::string_view::npos) return std::nullopt;
  return hashes;
}

std::optional<SealedEntry> fileWithSha1(const Data& hash) {
  if (hash.size() != kSha1Size) return std::nullopt;
  SealedEntry entry;
  entry.sha1 = hash;
  return entry;
}

/// The entry that a dictionary describes; nothing where there is a key, or a combination, that isn't known.
std::optional<SealedEntry> entryFrom(const Dictionary& dictionary) {
  SealedEntry entry;
  std::optional<std::string> requirement;
  bool hasHash = false;
  bool isLink = false;
  for (const auto& [key, value] : dictionary) {
    if (key == "optional" && value.asNumber() != nullptr) {
      entry.optional = value.asNumber()->boolValue();
    } else if (key == "hash" && value.asData() != nullptr && value.asData()->size() == kSha1Size) {
      entry.sha1 = *value.asData();
      hasHash = true;
    } else if (key == "hash2" && value.asData() != nullptr && value.asData()->size() == kSha256Size) {
      entry.sha256 = *value.asData();
      hasHash = true;
    } else if (key == "symlink" && value.asString() != nullptr) {
      entry.target = *value.asString();
      isLink = true;
    } else if (key == "cdhash" && value.asData() != nullptr && value.asData()->size() == kCdHashSize) {
      entry.cdHashes.push_back(*value.asData());
    } else if (key == "requirement" && value.asString() != nullptr) {
      requirement = *value.asString();
    } else {
      return std::nullopt;
    }
  }
  if (int{hasHash} + int{isLink} + int{!entry.cdHashes.empty()} != 1) return std::nullopt;
  if (requirement && entry.cdHashes.empty()) return std::nullopt;
  if (!entry.cdHashes.empty()) {
    entry.kind = SealedEntry::Kind::NestedCode;
    if (auto more = hashesInRequirement(requirement.value_or(""))) {
      entry.cdHashes.insert(entry.cdHashes.end(), more->begin(), more->end());
    }
  } else if (isLink) {
    entry.kind = SealedEntry::Kind::SymbolicLink;
  }
  return entry;
}

std::optional<SealedEntry> entryFrom(const Value& value, bool isFirstVersion) {
  if (value.asData() != nullptr) return fileWithSha1(*value.asData());
  if (value.asDictionary() == nullptr) return std::nullopt;
  auto entry = entryFrom(*value.asDictionary());
  if (entry && isFirstVersion && entry->kind != SealedEntry::Kind::File) return std::nullopt;
  return entry;
}

/// What a rule says apart from its pattern; false for what isn't known.
bool readRule(const Value& value, ResourceRule& rule) {
  if (const Number* number = value.asNumber()) {
    rule.omit = !number->boolValue();
    return number->kind() == Number::Kind::Boolean;
  }
  if (value.asDictionary() == nullptr) return false;
  for (const auto& [key, content] : *value.asDictionary()) {
    const Number* number = content.asNumber();
    if (number == nullptr) return false;
    if (key == "weight") {
      rule.weight = number->doubleValue();
      if (!std::isfinite(rule.weight)) return false;
    } else if (key == "omit") {
      rule.omit = number->boolValue();
    } else if (key == "optional") {
      rule.optional = number->boolValue();
    } else if (key == "nested") {
      rule.nested = number->boolValue();
    } else {
      return false;
    }
  }
  return true;
}

const Dictionary* dictionaryIn(const Dictionary& list, std::string_view key) {
  const Value* value = list.find(key);
  return value == nullptr ? nullptr : value->asDictionary();
}

}  // namespace

Result<ResourceSeal> ResourceSeal::parse(DataView propertyList) {
  const auto parsed = propertyListFromData(propertyList, {.maximumSize = kMaximumSize, .maximumDepth = 8});
  const Dictionary* list = parsed ? parsed->root.asDictionary() : nullptr;
  if (list == nullptr) return failure(malformed("The list of sealed resources can't be read."));
  for (const auto& [key, value] : *list) {
    if (key != "files" && key != "files2" && key != "rules" && key != "rules2") {
      return failure(unsupported("The list of sealed resources has a part that isn't known."));
    }
  }
  ResourceSeal seal;
  seal.isFirstVersion_ = !list->contains("files2") && !list->contains("rules2");
  const Dictionary* files = dictionaryIn(*list, seal.isFirstVersion_ ? "files" : "files2");
  const Dictionary* rules = dictionaryIn(*list, seal.isFirstVersion_ ? "rules" : "rules2");
  if (files == nullptr || rules == nullptr) {
    return failure(malformed("The list of sealed resources lacks its files or its rules."));
  }
  if (auto error = seal.readRules(*rules)) return failure(*std::move(error));
  if (auto error = seal.readEntries(*files)) return failure(*std::move(error));
  return seal;
}

ErrorOrNil ResourceSeal::readRules(const Dictionary& rules) {
  if (rules.size() > kMaximumRules) return unsupported("There are too many rules for sealed resources.");
  for (const auto& [expression, value] : rules) {
    auto pattern = PathPattern::parse(expression);
    if (!pattern) return unsupported(fmt::format("The rule \"{}\" for sealed resources isn't understood.", expression));
    ResourceRule rule{*std::move(pattern)};
    if (!readRule(value, rule) || (isFirstVersion_ && rule.nested)) {
      return unsupported(fmt::format("The rule \"{}\" for sealed resources isn't understood.", expression));
    }
    rules_.push_back(std::move(rule));
  }
  return std::nullopt;
}

ErrorOrNil ResourceSeal::readEntries(const Dictionary& files) {
  for (const auto& [path, value] : files) {
    auto entry = entryFrom(value, isFirstVersion_);
    if (!entry) return unsupported(fmt::format("The seal of \"{}\" isn't understood.", path));
    entries_.emplace_hint(entries_.end(), path, *std::move(entry));
  }
  return std::nullopt;
}

Result<const ResourceRule*> ResourceSeal::ruleFor(std::string_view path, std::uint64_t& steps) const {
  const ResourceRule* best = nullptr;
  for (const ResourceRule& rule : rules_) {
    const bool isWeightier =
        best == nullptr || rule.weight > best->weight || (rule.weight == best->weight && best->omit && !rule.omit);
    if (!isWeightier) continue;
    const auto found = rule.pattern.isFoundIn(path, steps);
    if (!found) return failure(unsupported("The rules for sealed resources take too long."));
    if (*found) best = &rule;
  }
  return best;
}

}  // namespace vantrell::host::codesign
