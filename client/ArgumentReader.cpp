// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/ArgumentReader.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>
#include <utility>

#include <fmt/core.h>

#include "client/ErrorText.h"
#include "foundation/DecimalText.h"
#include "foundation/Unicode.h"

namespace vantrell {

namespace {

using Reading = std::expected<Value, std::string>;
using Failure = std::unexpected<std::string>;

template <class T>
std::optional<T> wholeWord(std::string_view digits, int base) {
  T value{};
  const auto* end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, base);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return value;
}

std::optional<Number> realFromWord(std::string_view word) {
  const bool negative = word.starts_with('-');
  if (negative) word.remove_prefix(1);
  const auto magnitude = realFromDecimalText(word);
  if (!magnitude || !std::isfinite(*magnitude)) return std::nullopt;
  return Number(negative ? -*magnitude : *magnitude);
}

Reading textArgument(const std::string& word) {
  if (!isWellFormedUtf8(word)) return Failure("it is not text in UTF-8");
  return word;
}

Reading numberArgument(const std::string& word) {
  const auto number = numberFromWord(word);
  if (!number) return Failure(fmt::format("\"{}\" is not a number", word));
  return *number;
}

Reading hexadecimalData(std::string_view digits) {
  if (digits.size() % 2 != 0) return Failure("there is an odd number of hexadecimal digits");
  Data data;
  data.reserve(digits.size() / 2);
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const auto byte = wholeWord<std::uint8_t>(digits.substr(i, 2), 16);
    if (!byte) return Failure(fmt::format("\"{}\" is not a pair of hexadecimal digits", digits.substr(i, 2)));
    data.push_back(*byte);
  }
  return data;
}

Reading dataArgument(const std::string& word, host::FileSystem& fileSystem) {
  if (word.starts_with("hex:")) return hexadecimalData(std::string_view(word).substr(4));
  if (!word.starts_with("@")) return Failure("data is given as @FILE or hex:DIGITS");
  const auto path = word.substr(1);
  const auto contents = fileSystem.loadFile(path, kLongestDataArgument);
  if (!contents) {
    return Failure(fmt::format("\"{}\" can't be read: {}", path, textOfError(contents.error()).description));
  }
  const auto bytes = (*contents)->bytes();
  return Data(bytes.begin(), bytes.end());
}

Reading readArgument(char typeCode, const std::string& word, host::FileSystem& fileSystem) {
  switch (typeCode) {
    case 'N':
      return numberArgument(word);
    case 'D':
      return dataArgument(word, fileSystem);
    default:
      return textArgument(word);
  }
}

}  // namespace

std::optional<Number> numberFromWord(std::string_view word) {
  if (word.find('.') != std::string_view::npos) return realFromWord(word);
  if (word.starts_with("0x") || word.starts_with("0X")) {
    const auto value = wholeWord<std::uint64_t>(word.substr(2), 16);
    return value ? std::optional(Number(*value)) : std::nullopt;
  }
  if (const auto value = wholeWord<std::int64_t>(word, 10)) return Number(*value);
  if (const auto value = wholeWord<std::uint64_t>(word, 10)) return Number(*value);
  return std::nullopt;
}

std::expected<Array, std::string> readArguments(const QELPrivilegedOperation& operation,
                                                std::span<const std::string> words, host::FileSystem& fileSystem) {
  const auto codes = operation.argumentTypeCodes().value_or(std::string_view());
  if (!operation.hasVariableArgumentCount() && words.size() != operation.argumentCount()) {
    return Failure(fmt::format("{} takes {} argument{}, not {}", operation.identifier(), operation.argumentCount(),
                               operation.argumentCount() == 1 ? "" : "s", words.size()));
  }
  Array arguments;
  arguments.reserve(words.size());
  for (std::size_t i = 0; i < words.size(); ++i) {
    auto argument = readArgument(i < codes.size() ? codes[i] : 'S', words[i], fileSystem);
    if (!argument)
      return Failure(fmt::format("argument {} of {}: {}", i + 1, operation.identifier(), argument.error()));
    arguments.push_back(std::move(*argument));
  }
  return arguments;
}

}  // namespace vantrell
