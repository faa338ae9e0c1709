// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/FileUrl.h"

#include <algorithm>
#include <cstddef>

#include "foundation/PathUtilities.h"

namespace vantrell {
namespace {

constexpr std::string_view kScheme = "file:";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kUnescaped = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";

char uppercase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
bool isSameLetters(std::string_view one, std::string_view other) {
  return std::ranges::equal(one, other, {}, uppercase, uppercase);
}

std::optional<std::string> unescaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const auto high = kHexDigits.find(uppercase(text[i + 1]));
    const auto low = kHexDigits.find(uppercase(text[i + 2]));
    if (high == kHexDigits.npos || low == kHexDigits.npos) return std::nullopt;
    result += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return result;
}

}  // namespace

std::string fileURLWithPath(std::string_view path) {
  if (!path.starts_with('/')) return "file://";
  std::string url = "file://";
  for (const char c : path) {
    if (kUnescaped.contains(c)) {
      url += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      url += {'%', kHexDigits[byte >> 4], kHexDigits[byte & 15]};
    }
  }
  return url;
}

bool isFileURL(std::string_view url) {
  return isSameLetters(url.substr(0, kScheme.size()), kScheme);
}

std::optional<std::string> pathOfFileURL(std::string_view url) {
  if (!isFileURL(url)) return std::nullopt;
  url.remove_prefix(kScheme.size());
  if (url.starts_with("//")) {
    url.remove_prefix(2);
    const auto host = url.substr(0, url.find('/'));
    if (!host.empty() && !isSameLetters(host, "localhost")) return std::nullopt;
    url.remove_prefix(host.size());
  }
  if (!url.starts_with('/')) return std::nullopt;
  const auto path = unescaped(url.substr(0, url.find_first_of("?#")));
  return path ? std::optional(std::string(pathWithoutTrailingSlashes(*path))) : std::nullopt;
}

}  // namespace vantrell
