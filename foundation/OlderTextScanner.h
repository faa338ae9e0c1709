// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"

namespace vantrell {

/// The characters and words of the older text form. Works on well-formed UTF-8, which it borrows. What answers false or
/// nothing has met something malformed, and problem() says what.
class OlderTextScanner {
 public:
  explicit OlderTextScanner(std::string_view text) noexcept : text_(text) {}

  /// Goes past white space and comments.
  bool skipSpace();

  bool atEnd() const noexcept { return at_ == text_.size(); }
  /// Not at the end.
  char peek() const noexcept { return text_[at_]; }
  /// Goes past `character` if it comes next.
  bool take(char character) noexcept;
  bool atString() const noexcept;

  /// A quoted or unquoted string; atString() holds.
  std::optional<std::string> string();
  /// "<0fbd77 1c2735ae>", from the opening bracket on.
  std::optional<Data> data();

  const char* problem() const noexcept { return problem_; }
  /// The line that has been reached, from 1.
  std::size_t line() const noexcept;

 private:
  std::string_view rest() const noexcept { return text_.substr(at_); }
  std::size_t spaceLength() const noexcept;
  bool skipComment();
  std::string unquotedString();
  std::optional<std::string> quotedString();
  bool escape(std::string& string);
  bool unicodeEscape(std::string& string);
  std::optional<char32_t> utf16Unit();
  bool refuse(const char* problem) noexcept;

  std::string_view text_;
  std::size_t at_ = 0;
  const char* problem_ = "";
};

}  // namespace vantrell
