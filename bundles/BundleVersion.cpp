// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/BundleVersion.h"

#include <charconv>
#include <limits>

#include <fmt/format.h>

#include "bundles/InformationFile.h"

namespace vantrell {
namespace {

constexpr std::string_view kDigitsAndDot = "0123456789.";

// The platform's way with a number that is out of range.
double beyondRange(std::string_view number) {
  const bool isLarge = number.find_first_not_of("0.") < number.find('.');
  return isLarge ? std::numeric_limits<double>::infinity() : 0.0;
}

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
  double result = 0.0;
  const auto [end, problem] = std::from_chars(number.data(), number.data() + number.size(), result);
  return problem == std::errc::result_out_of_range ? beyondRange(number) : result;
}

std::optional<std::string> versionTextFromInformation(const Dictionary& information) {
  auto shortVersion = textUnder(information, "CFBundleShortVersionString");
  const auto bundleVersion = textUnder(information, "CFBundleVersion");
  if (!shortVersion || !bundleVersion || shortVersion == bundleVersion) return shortVersion;
  return fmt::format("{} ({})", *shortVersion, *bundleVersion);
}

}  // namespace vantrell
