// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/BundleVersion.h"

#include <fmt/format.h>

#include "bundles/InformationFile.h"
#include "foundation/DecimalText.h"

namespace vantrell {
namespace {

constexpr std::string_view kDigitsAndDot = "0123456789.";

}  // namespace

double versionNumberFromString(std::string_view text) {
  const auto start = text.find_first_of(kDigitsAndDot);
  if (start == std::string_view::npos) return 0.0;
  text.remove_prefix(start);
  text = text.substr(0, text.find_first_not_of(kDigitsAndDot));

  std::string number;
  bool hasDot = false;
  for (const char c : text) {
    if (c == '.' && hasDot) continue;
    hasDot = hasDot || c == '.';
    number += c;
  }
  return realFromDecimalText(number).value_or(0.0);
}

std::optional<std::string> versionTextFromInformation(const Dictionary& information) {
  auto shortVersion = textUnder(information, "CFBundleShortVersionString");
  const auto bundleVersion = textUnder(information, "CFBundleVersion");
  if (!shortVersion || !bundleVersion || shortVersion == bundleVersion) return shortVersion;
  return fmt::format("{} ({})", *shortVersion, *bundleVersion);
}

}  // namespace vantrell
