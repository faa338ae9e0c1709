// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/PathUtilities.h"

#include <cstddef>

#include "foundation/Unicode.h"

namespace vantrell {

std::string_view pathWithoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

std::string stringByDeletingLastPathComponent(std::string_view path) {
  path = pathWithoutTrailingSlashes(path);
  const auto slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return std::string(pathWithoutTrailingSlashes(path.substr(0, slash + 1)));
}

std::string stringByAppendingPathComponent(std::string_view path, std::string_view component) {
  while (!component.empty() && component.front() == '/') component.remove_prefix(1);
  std::string result(pathWithoutTrailingSlashes(path));
  if (!result.empty() && result.back() != '/' && !component.empty()) result += '/';
  result += component;
  result.resize(pathWithoutTrailingSlashes(result).size());
  return result;
}

std::string_view lastPathComponent(std::string_view path) {
  path = pathWithoutTrailingSlashes(path);
  if (path == "/") return path;
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

namespace {

std::string_view::size_type dotOfExtension(std::string_view name) {
  const auto dot = name.rfind('.');
  return dot == 0 ? std::string_view::npos : dot;
}

}  // namespace

std::string_view pathExtension(std::string_view path) {
  const auto name = lastPathComponent(path);
  const auto dot = dotOfExtension(name);
  return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

std::string_view nameWithoutPathExtension(std::string_view path) {
  const auto name = lastPathComponent(path);
  return name == ".." ? name : name.substr(0, dotOfExtension(name));
}

std::string displayablePath(std::string_view path) {
  if (isWellFormedUtf8(path)) return std::string(path);
  std::string result;
  while (!path.empty()) {
    const auto character = decodeUtf8(path);
    appendUtf8(result, character.codePoint);
    path.remove_prefix(character.length);
  }
  return result;
}

}  // namespace vantrell
