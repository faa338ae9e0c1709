// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "foundation/Value.h"

namespace vantrell::host {

/// Whose preferences are meant. Named applications, users and hosts are not empty.
struct PreferencesDomain {
  struct Any {
    bool operator==(const Any&) const = default;
  };
  struct Current {
    bool operator==(const Current&) const = default;
  };

  std::variant<Any, std::string> application;    // Any: what holds for all applications
  std::variant<Any, Current, std::string> user;  // Current: the one that this process runs as
  std::variant<Any, Current, std::string> host;  // Current: this machine

  bool operator==(const PreferencesDomain&) const = default;
};

/// Changes to one domain, kept to themselves until they are synchronised; what was not is dropped with this object.
/// One thread at a time.
class PreferencesChanges {
 public:
  virtual ~PreferencesChanges() = default;

  /// Sets the key, or removes it where there is no value. Reports nothing.
  virtual void setValue(std::string key, std::optional<Value> value) = 0;

  /// Writes the changes to where applications find them; other keys of the domain stay as they are. False when that is
  /// not known to have worked: what is stored is whole then, and as before unless only the medium's confirmation
  /// failed. Changes of several writers of one domain all arrive, one after the other.
  [[nodiscard]] virtual bool synchronize() = 0;
};

/// The stored preferences of applications. Safe from any thread.
class Preferences {
 public:
  virtual ~Preferences() = default;

  /// Never null, also for a domain that turns out not to exist when it is synchronised.
  virtual std::unique_ptr<PreferencesChanges> changesOf(PreferencesDomain domain) = 0;
};

}  // namespace vantrell::host
