// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>
#include <utility>

#include "catalogue/OperationArguments.h"
#include "foundation/PosixCodes.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "system/ValueText.h"

namespace vantrell {
namespace {

using host::PreferencesDomain;

// The texts of the platform's constants, which clients send in place of a name.
constexpr char kGlobalDomain[] = "NSGlobalDomain";
constexpr char kAnyUser[] = "kCFPreferencesAnyUser";
constexpr char kCurrentUser[] = "kCFPreferencesCurrentUser";
constexpr char kAnyHost[] = "kCFPreferencesAnyHost";
constexpr char kCurrentHost[] = "kCFPreferencesCurrentHost";

PreferencesDomain domainOf(const std::string& application, const std::string& user, const std::string& host) {
  using Any = PreferencesDomain::Any;
  using Current = PreferencesDomain::Current;
  PreferencesDomain domain{application, user, host};
  if (application == kGlobalDomain) domain.application = Any();
  if (user == kAnyUser) domain.user = Any();
  if (user == kCurrentUser) domain.user = Current();
  if (host == kAnyHost) domain.host = Any();
  if (host == kCurrentHost) domain.host = Current();
  return domain;
}

}  // namespace

ErrorOrNil modifyPreferences(const Array& arguments, host::Preferences& preferences) {
  const auto* key = nameAt(arguments, 0);
  const auto* application = nameAt(arguments, 1);
  const auto* user = nameAt(arguments, 2);
  const auto* host = nameAt(arguments, 3);
  const auto* text = textAt(arguments, 4);
  if (!key || !application || !user || !host || !text) return Error::posix(posix::kInvalidArgument);
  auto value = propertyListValueFromText(*text);
  if (!value) return value.error();

  const auto changes = preferences.changesOf(domainOf(*application, *user, *host));
  changes->setValue(*key, *std::move(value));
  if (!changes->synchronize()) return setting_error::preferencesNotUpdated();
  return std::nullopt;
}

}  // namespace vantrell
