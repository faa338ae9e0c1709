// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PreferencesLocation.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string_view>

#include <unistd.h>

#include "foundation/Uuid.h"

namespace vantrell::host {
namespace {

using Any = PreferencesDomain::Any;
using Current = PreferencesDomain::Current;

constexpr char kGlobalPreferences[] = ".GlobalPreferences";

std::optional<unsigned> digitFrom(char character) {
  if (character >= '0' && character <= '9') return static_cast<unsigned>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<unsigned>(character - 'a' + 10);
  return std::nullopt;
}

/// systemd's machine-id(5): 32 lower-case hexadecimal digits and a line feed.
std::optional<std::string> machineUuid(const std::string& root) {
  std::ifstream file(root + "/etc/machine-id", std::ios::binary);
  std::array<char, 2 * Uuid::kSize> text;
  if (!file.read(text.data(), text.size())) return std::nullopt;
  const int next = file.get();
  if (next != '\n' && next != std::ifstream::traits_type::eof()) return std::nullopt;
  Uuid::Bytes bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto high = digitFrom(text[2 * i]);
    const auto low = digitFrom(text[2 * i + 1]);
    if (!high || !low) return std::nullopt;
    bytes[i] = static_cast<std::uint8_t>(*high << 4U | *low);
  }
  return Uuid(bytes).string();
}

bool canBePartOfName(std::string_view text) {
  return !text.empty() && text.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

/// Fills in whose home folder it is, or the root.
bool findStart(PreferencesLocation& location, const PreferencesDomain& domain, const std::string& root,
               const UserDatabase& users) {
  location.start = root + "/";
  if (std::holds_alternative<Any>(domain.user)) return true;
  const auto* name = std::get_if<std::string>(&domain.user);
  location.user = name ? users.userNamed(*name) : users.userWithIdentifier(geteuid());
  if (!location.user || !location.user->homeFolder.starts_with('/')) return false;
  location.start = root + location.user->homeFolder;
  return true;
}

}  // namespace

FolderChain PreferencesLocation::folders() const {
  // A home folder is its user's to put links into, which would lead elsewhere.
  return {start, std::span(components).first(componentCount), !user, user ? 0700U : 0755U};
}

std::optional<PreferencesLocation> preferencesLocationOf(const PreferencesDomain& domain, const std::string& root,
                                                         const UserDatabase& users) {
  PreferencesLocation location;
  if (!findStart(location, domain, root, users)) return std::nullopt;
  const auto* application = std::get_if<std::string>(&domain.application);
  location.fileName = application ? *application : kGlobalPreferences;
  if (!canBePartOfName(location.fileName)) return std::nullopt;

  const bool isForAllUsers = !location.user;
  const auto* host = std::get_if<std::string>(&domain.host);
  const auto thisMachine = machineUuid(root);
  const bool isThisMachine =
      std::holds_alternative<Current>(domain.host) || (host && thisMachine && *host == *thisMachine);
  location.components = {"Library", "Preferences"};
  location.componentCount = 2;
  if (std::holds_alternative<Any>(domain.host)) {
    if (isForAllUsers) location.components[location.componentCount++] = "Network";
  } else if (!isThisMachine || !isForAllUsers) {
    location.components[location.componentCount++] = "ByHost";
    if (isThisMachine && !thisMachine) return std::nullopt;
    const auto& text = isThisMachine ? *thisMachine : *host;
    if (!canBePartOfName(text)) return std::nullopt;
    location.fileName += "." + text;
  }
  location.fileName += ".plist";
  return location;
}

}  // namespace vantrell::host
