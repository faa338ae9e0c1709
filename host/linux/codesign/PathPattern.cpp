// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/PathPattern.h"

#include <cctype>
#include <string>
#include <utility>

namespace vantrell::host::codesign {

/// Expressions consist of branches, branches of repeated atoms. Code is relative to its own place, so that it can be
/// joined freely.
class PatternParser {
 public:
  explicit PatternParser(std::string_view text) : text_(text) {}

  std::optional<PathPattern> parse() {
    if (text_.size() > PathPattern::kMaximumLength || !expression(0) || place_ != text_.size()) return std::nullopt;
    pattern_.program_ = std::move(code_);
    pattern_.program_.push_back({PathPattern::Action::Found});
    return std::move(pattern_);
  }

 private:
  using Action = PathPattern::Action;
  using Code = std::vector<PathPattern::Instruction>;

  bool atEnd() const noexcept { return place_ == text_.size(); }
  char peek() const noexcept { return text_[place_]; }

  static std::int32_t distance(std::size_t size) noexcept { return static_cast<std::int32_t>(size); }
  static void append(Code& code, const Code& rest) { code.insert(code.end(), rest.begin(), rest.end()); }

  /// Leaves its result in code_, as the others do.
  bool expression(std::size_t depth) {
    if (depth > PathPattern::kMaximumDepth || !branch(depth)) return false;
    while (!atEnd() && peek() == '|') {
      ++place_;
      const Code left = std::move(code_);
      if (!branch(depth)) return false;
      const Code right = std::move(code_);
      code_ = {{Action::Split, 1, distance(left.size() + 2)}};
      append(code_, left);
      code_.push_back({Action::Jump, distance(right.size() + 1)});
      append(code_, right);
    }
    return true;
  }

  bool branch(std::size_t depth) {
    Code whole;
    bool any = false;
    while (!atEnd() && peek() != '|' && peek() != ')') {
      if (!atom(depth)) return false;
      while (!atEnd() && (peek() == '*' || peek() == '+' || peek() == '?')) repeat(text_[place_++]);
      if (code_.size() > 8 * PathPattern::kMaximumLength) return false;
      append(whole, code_);
      any = true;
    }
    code_ = std::move(whole);
    return any;
  }

  void repeat(char how) {
    const Code body = std::move(code_);
    code_.clear();
    if (how == '+') {
      code_ = body;
      code_.push_back({Action::Split, -distance(body.size()), 1});
      return;
    }
    code_.push_back({Action::Split, 1, distance(body.size() + (how == '*' ? 2 : 1))});
    append(code_, body);
    if (how == '*') code_.push_back({Action::Jump, -distance(body.size() + 1)});
  }

  bool atom(std::size_t depth) {
    const char character = text_[place_++];
    switch (character) {
      case '(':
        if (!expression(depth + 1) || atEnd() || peek() != ')') return false;
        ++place_;
        return true;
      case '[':
        return bracket();
      case '^':
        code_ = {{Action::AtStart}};
        return true;
      case '$':
        code_ = {{Action::AtEnd}};
        return true;
      case '.':
        take(std::bitset<256>().set());
        return true;
      case '\\':
        if (atEnd() || !std::ispunct(static_cast<unsigned char>(peek()))) return false;
        take(only(text_[place_++]));
        return true;
      case '*':
      case '+':
      case '?':
      case '{':
      case '}':
        return false;
      default:
        take(only(character));
        return true;
    }
  }

  bool bracket() {
    std::bitset<256> set;
    const bool isNegated = !atEnd() && peek() == '^';
    if (isNegated) ++place_;
    for (bool isFirst = true;; isFirst = false) {
      if (atEnd()) return false;
      const char from = text_[place_++];
      if (from == ']' && !isFirst) break;
      if (from == '[' && !atEnd() && (peek() == ':' || peek() == '.' || peek() == '=')) return false;
      char to = from;
      if (place_ + 1 < text_.size() && peek() == '-' && text_[place_ + 1] != ']') {
        to = text_[place_ + 1];
        place_ += 2;
        if (to == '[') return false;
      }
      const auto low = static_cast<unsigned char>(from);
      const auto high = static_cast<unsigned char>(to);
      if (low > high) return false;
      for (unsigned value = low; value <= high; ++value) set.set(value);
    }
    take(isNegated ? ~set : set);
    return true;
  }

  static std::bitset<256> only(char character) { return std::bitset<256>().set(static_cast<unsigned char>(character)); }

  void take(const std::bitset<256>& set) {
    code_ = {{Action::Take, distance(pattern_.sets_.size())}};
    pattern_.sets_.push_back(set);
  }

  std::string_view text_;
  std::size_t place_ = 0;
  Code code_;
  PathPattern pattern_;
};

std::optional<PathPattern> PathPattern::parse(std::string_view expression) {
  return PatternParser(expression).parse();
}

/// The instructions that wait for the next byte, each once.
struct PathPattern::Run {
  const PathPattern& pattern;
  std::string_view path;
  std::uint64_t& steps;
  std::vector<std::int32_t> waiting;
  std::vector<std::int32_t> pending;
  std::vector<std::size_t> seenAt;  // position + 1 at which an instruction was last reached
  bool found = false;

  Run(const PathPattern& pattern, std::string_view path, std::uint64_t& steps)
      : pattern(pattern), path(path), steps(steps), seenAt(pattern.program_.size()) {}

  /// Everything that can be reached from `start` without a byte; false when the steps run out.
  bool follow(std::int32_t start, std::size_t position) {
    pending.push_back(start);
    while (!pending.empty()) {
      const std::int32_t at = pending.back();
      pending.pop_back();
      if (seenAt[static_cast<std::size_t>(at)] == position + 1) continue;
      seenAt[static_cast<std::size_t>(at)] = position + 1;
      if (steps == 0) return false;
      --steps;
      const Instruction& instruction = pattern.program_[static_cast<std::size_t>(at)];
      switch (instruction.action) {
        case Action::Take:
          waiting.push_back(at);
          break;
        case Action::Split:
          pending.push_back(at + instruction.second);
          pending.push_back(at + instruction.first);
          break;
        case Action::Jump:
          pending.push_back(at + instruction.first);
          break;
        case Action::AtStart:
          if (position == 0) pending.push_back(at + 1);
          break;
        case Action::AtEnd:
          if (position == path.size()) pending.push_back(at + 1);
          break;
        case Action::Found:
          found = true;
          break;
      }
    }
    return true;
  }
};

std::optional<bool> PathPattern::isFoundIn(std::string_view path, std::uint64_t& steps) const {
  Run run(*this, path, steps);
  for (std::size_t position = 0;; ++position) {
    const bool canBegin = position == 0 || program_.front().action != Action::AtStart;
    if (canBegin && !run.follow(0, position)) return std::nullopt;
    if (run.found) return true;
    if (position == path.size() || (run.waiting.empty() && program_.front().action == Action::AtStart)) return false;
    const std::vector<std::int32_t> waiting = std::exchange(run.waiting, {});
    for (const std::int32_t at : waiting) {
      const Instruction& instruction = program_[static_cast<std::size_t>(at)];
      const bool fits = sets_[static_cast<std::size_t>(instruction.first)][static_cast<unsigned char>(path[position])];
      if (fits && !run.follow(at + 1, position + 1)) return std::nullopt;
    }
  }
}

}  // namespace vantrell::host::codesign
