// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacPreferences.h"

#include <string_view>
#include <utility>
#include <vector>

#include "foundation/PropertyList.h"
#include "host/macos/CoreFoundationRef.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/PropertyListObjects.h"

namespace vantrell::host {
namespace {

/// A domain in the platform's terms: its own constants, or texts.
struct DomainNames {
  NSString* application;
  NSString* user;
  NSString* host;
};

/// Without a value, the key is removed.
struct StoredChange {
  CoreFoundationRef<CFStringRef> key;
  CoreFoundationRef<CFPropertyListRef> value;
};

NSString* nameFrom(const std::string& text) {
  return text.find('\0') == std::string::npos ? stringFrom(text) : nil;
}

NSString* applicationFrom(const decltype(PreferencesDomain::application)& application) {
  const auto* name = std::get_if<std::string>(&application);
  return name ? nameFrom(*name) : (__bridge NSString*)kCFPreferencesAnyApplication;
}

NSString* userFrom(const decltype(PreferencesDomain::user)& user) {
  if (const auto* name = std::get_if<std::string>(&user)) return nameFrom(*name);
  const bool isCurrent = std::holds_alternative<PreferencesDomain::Current>(user);
  return (__bridge NSString*)(isCurrent ? kCFPreferencesCurrentUser : kCFPreferencesAnyUser);
}

NSString* hostFrom(const decltype(PreferencesDomain::host)& host) {
  if (const auto* name = std::get_if<std::string>(&host)) return nameFrom(*name);
  const bool isCurrent = std::holds_alternative<PreferencesDomain::Current>(host);
  return (__bridge NSString*)(isCurrent ? kCFPreferencesCurrentHost : kCFPreferencesAnyHost);
}

std::optional<DomainNames> namesOf(const PreferencesDomain& domain) {
  const DomainNames names{applicationFrom(domain.application), userFrom(domain.user), hostFrom(domain.host)};
  if (!names.application || !names.user || !names.host) return std::nullopt;
  return names;
}

class CachedChanges final : public PreferencesChanges {
 public:
  explicit CachedChanges(PreferencesDomain domain) : domain_(std::move(domain)) {}

  void setValue(std::string key, std::optional<Value> value) override {
    changes_.emplace_back(std::move(key), std::move(value));
  }

  bool synchronize() override {
    @autoreleasepool {
      if (changes_.empty()) return true;
      const auto names = namesOf(domain_);
      const auto changes = storedChanges();
      if (!names || !changes || !store(*names, *changes)) return false;
      changes_.clear();
      return true;
    }
  }

 private:
  /// Nothing when one of them can't be stored.
  std::optional<std::vector<StoredChange>> storedChanges() const {
    std::vector<StoredChange> result;
    for (const auto& [key, value] : changes_) {
      StoredChange change{bridgedRef<CFStringRef>(stringFrom(key)), {}};
      if (value) change.value = objectFromPropertyList(binaryPropertyListFromValue(*value));
      if (!change.key || (value && !change.value)) return std::nullopt;
      result.push_back(std::move(change));
    }
    return result;
  }

  static bool store(const DomainNames& names, const std::vector<StoredChange>& changes) {
    const auto application = (__bridge CFStringRef)names.application;
    const auto user = (__bridge CFStringRef)names.user;
    const auto host = (__bridge CFStringRef)names.host;
    for (const auto& [key, value] : changes) CFPreferencesSetValue(key.get(), value.get(), application, user, host);
    return CFPreferencesSynchronize(application, user, host);
  }

  PreferencesDomain domain_;
  std::vector<std::pair<std::string, std::optional<Value>>> changes_;
};

}  // namespace

std::unique_ptr<PreferencesChanges> MacPreferences::changesOf(PreferencesDomain domain) {
  return std::make_unique<CachedChanges>(std::move(domain));
}

}  // namespace vantrell::host
