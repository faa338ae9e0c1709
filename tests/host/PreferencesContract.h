// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/Preferences.h"

/// The suites of tests/host/PreferencesTest.cpp, which all Preferences must pass. Each file that has some to offer
/// instantiates them.
namespace vantrell::tests {

/// Preferences, and a look at what is stored.
struct PreferencesCandidate {
  virtual ~PreferencesCandidate() = default;
  virtual host::Preferences& preferences() = 0;
  /// Domains that are apart from each other, hold nothing yet and may be written.
  virtual std::vector<host::PreferencesDomain> domains() = 0;
  virtual std::vector<host::PreferencesDomain> impossibleDomains() = 0;
  /// Nothing for a domain without keys.
  virtual std::optional<Dictionary> stored(const host::PreferencesDomain& domain) = 0;
};

struct PreferencesImplementation {
  const char* name;
  std::function<std::unique_ptr<PreferencesCandidate>()> make;
  friend void PrintTo(const PreferencesImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

struct PreferencesContract : testing::TestWithParam<PreferencesImplementation> {
  static std::string nameOf(const testing::TestParamInfo<PreferencesImplementation>& info) { return info.param.name; }

  std::unique_ptr<PreferencesCandidate> candidate = GetParam().make();

  bool set(const host::PreferencesDomain& domain, const std::string& key, std::optional<Value> value) {
    const auto changes = candidate->preferences().changesOf(domain);
    changes->setValue(key, std::move(value));
    return changes->synchronize();
  }
};

struct PreferencesContractConcurrent : PreferencesContract {};

/// The domains of three applications, the users "alice", the current one and any, and the hosts "elsewhere", the
/// current one and any.
inline std::vector<host::PreferencesDomain> allKindsOfPreferencesDomains() {
  using Domain = host::PreferencesDomain;
  std::vector<Domain> domains;
  for (const decltype(Domain::application)& application :
       {decltype(Domain::application)(Domain::Any()), {"app"}, {"com.other"}})
    for (const decltype(Domain::user)& user : {decltype(Domain::user)(Domain::Any()), {Domain::Current()}, {"alice"}})
      for (const decltype(Domain::host)& host :
           {decltype(Domain::host)(Domain::Any()), {Domain::Current()}, {"elsewhere"}})
        domains.push_back({application, user, host});
  return domains;
}

/// What is no domain where names are parts of files' names and "alice" is the only other user.
inline std::vector<host::PreferencesDomain> preferencesDomainsWithImpossibleNames() {
  using Domain = host::PreferencesDomain;
  using Any = Domain::Any;
  using namespace std::string_literals;
  return {Domain{"app", "nobody-of-that-name", Any()},
          Domain{"a/b", Any(), Any()},
          Domain{"../../x", Any(), Domain::Current()},
          Domain{"a\0b"s, Any(), Any()},
          Domain{"app", Any(), "a/b"},
          Domain{"app", "alice", "../x"},
          Domain{"app", "al\0ice"s, Any()}};
}

}  // namespace vantrell::tests
