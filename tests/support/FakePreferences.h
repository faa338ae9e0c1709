// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "host/Preferences.h"

namespace vantrell::tests {

/// Preferences in memory, of the users that it was made with.
class FakePreferences final : public host::Preferences {
 public:
  explicit FakePreferences(std::set<std::string> users) : users_(std::move(users)) {}

  std::unique_ptr<host::PreferencesChanges> changesOf(host::PreferencesDomain domain) override {
    return std::make_unique<Changes>(*this, std::move(domain));
  }

  /// Nothing for a domain without keys.
  std::optional<Dictionary> stored(const host::PreferencesDomain& domain) {
    const std::lock_guard lock(mutex_);
    for (const auto& [other, contents] : domains_)
      if (other == domain) return contents;
    return std::nullopt;
  }

  bool failsToSynchronize = false;

 private:
  class Changes final : public host::PreferencesChanges {
   public:
    Changes(FakePreferences& preferences, host::PreferencesDomain domain)
        : preferences_(preferences), domain_(std::move(domain)) {}

    void setValue(std::string key, std::optional<Value> value) override {
      changes_.emplace_back(std::move(key), std::move(value));
    }
    bool synchronize() override {
      const std::lock_guard lock(preferences_.mutex_);
      if (changes_.empty()) return true;
      if (!preferences_.hasDomain(domain_)) return false;
      auto& contents = preferences_.contentsOf(domain_);
      for (const auto& [key, value] : changes_) {
        if (value) contents.set(key, *value);
        if (!value) contents.remove(key);
      }
      std::erase_if(preferences_.domains_, [](const auto& domain) { return domain.second.empty(); });
      changes_.clear();
      return true;
    }

   private:
    FakePreferences& preferences_;
    host::PreferencesDomain domain_;
    std::vector<std::pair<std::string, std::optional<Value>>> changes_;
  };

  static bool isName(const std::string& text) {
    return !text.empty() && text.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
  }
  bool hasDomain(const host::PreferencesDomain& domain) const {
    const auto* application = std::get_if<std::string>(&domain.application);
    const auto* user = std::get_if<std::string>(&domain.user);
    const auto* host = std::get_if<std::string>(&domain.host);
    return !failsToSynchronize && (!application || isName(*application)) && (!user || users_.contains(*user)) &&
           (!host || isName(*host));
  }
  Dictionary& contentsOf(const host::PreferencesDomain& domain) {
    for (auto& [other, contents] : domains_)
      if (other == domain) return contents;
    return domains_.emplace_back(domain, Dictionary()).second;
  }

  std::mutex mutex_;
  std::set<std::string> users_;
  std::vector<std::pair<host::PreferencesDomain, Dictionary>> domains_;
};

}  // namespace vantrell::tests
