// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cctype>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/Applications.h"

namespace vantrell::tests {

/// Knows what it was told, and nothing else.
class FakeApplications final : public host::Applications {
 public:
  void addApplication(const std::string& path, const std::string& identifier) {
    locations_[lowercase(identifier)].push_back(path);
  }
  void setLastUsedDate(const std::string& path, const Date& date) { lastUsed_.insert_or_assign(path, date); }

  std::vector<std::string> locationsOfApplicationsWithIdentifier(const std::string& identifier) override {
    const auto found = locations_.find(lowercase(identifier));
    return identifier.empty() || found == locations_.end() ? std::vector<std::string>() : found->second;
  }
  std::optional<Date> lastUsedDateOfItemAtPath(const std::string& path) override {
    const auto found = lastUsed_.find(path);
    return found == lastUsed_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  static std::string lowercase(std::string text) {
    for (auto& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
  }

  std::map<std::string, std::vector<std::string>> locations_;
  std::map<std::string, Date> lastUsed_;
};

}  // namespace vantrell::tests
