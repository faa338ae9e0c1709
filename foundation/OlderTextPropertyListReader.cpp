// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/OlderTextPropertyListReader.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "foundation/OlderTextScanner.h"
#include "foundation/PropertyListBuilder.h"
#include "foundation/PropertyListErrors.h"
#include "foundation/Unicode.h"

namespace vantrell {

namespace {

/// The structure of the form. What is open is kept by the builder, so nothing here recurs. Every step answers false
/// when it is refused; problem() then says why.
class OlderTextPropertyListReader {
 public:
  OlderTextPropertyListReader(std::string_view text, const PropertyListLimits& limits)
      : scanner_(text), builder_(limits) {}

  Result<Value> read() {
    if (!readAll()) {
      return failure(corruptPropertyList(fmt::format("line {}: {}", scanner_.line(), problem())));
    }
    return builder_.takeRoot();
  }

 private:
  bool readAll() {
    if (!scanner_.skipSpace() || !readStart()) return false;
    while (builder_.insideContainer()) {
      if (!scanner_.skipSpace() || !step()) return false;
    }
    return scanner_.skipSpace() && (scanner_.atEnd() || refuse("something behind the root"));
  }

  // A string with something behind it is the first key of a strings file.
  bool readStart() {
    if (scanner_.atEnd()) return builder_.beginDictionary() && builder_.end();
    if (!scanner_.atString()) return readValue();
    auto string = scanner_.string();
    if (!string || !scanner_.skipSpace()) return false;
    if (scanner_.atEnd()) return builder_.addScalar(*std::move(string));
    inStringsFile_ = true;
    return builder_.beginDictionary() && readBehindKey(*std::move(string));
  }

  bool step() {
    if (std::exchange(behindValue_, false)) return readBehindValue();
    if (!builder_.insideDictionary()) return scanner_.take(')') ? endContainer() : readValue();
    if (scanner_.take('}')) return endContainer();
    if (inStringsFile_ && scanner_.atEnd()) {
      inStringsFile_ = false;
      return endContainer();
    }
    if (!scanner_.atString()) return refuse("a key or the end of the dictionary is missing");
    auto key = scanner_.string();
    return key && scanner_.skipSpace() && readBehindKey(*std::move(key));
  }

  bool readBehindKey(std::string key) {
    if (!builder_.addKey(key)) return false;
    if (scanner_.take('=')) return scanner_.skipSpace() && readValue();
    behindValue_ = true;
    return builder_.addScalar(std::move(key));
  }

  bool readBehindValue() {
    if (builder_.insideDictionary()) return scanner_.take(';') || refuse("';' is missing");
    if (scanner_.take(',')) return true;
    return scanner_.take(')') ? endContainer() : refuse("',' or ')' is missing");
  }

  bool readValue() {
    if (scanner_.take('{')) return builder_.beginDictionary();
    if (scanner_.take('(')) return builder_.beginArray();
    behindValue_ = true;
    if (scanner_.atString()) return addScalar(scanner_.string());
    if (!scanner_.atEnd() && scanner_.peek() == '<') return addScalar(scanner_.data());
    return refuse("a value is missing");
  }

  template <class Scalar>
  bool addScalar(std::optional<Scalar> scalar) {
    return scalar && builder_.addScalar(*std::move(scalar));
  }

  // A '}' must not end the dictionary that a strings file is.
  bool endContainer() {
    behindValue_ = true;
    if (!builder_.end()) return false;
    return !inStringsFile_ || builder_.insideContainer() || refuse("'}' without '{'");
  }

  bool refuse(const char* problem) noexcept {
    problem_ = problem;
    return false;
  }

  std::string_view problem() const {
    for (const char* problem : {problem_, scanner_.problem()}) {
      if (*problem != '\0') return problem;
    }
    return builder_.problem();
  }

  OlderTextScanner scanner_;
  PropertyListBuilder builder_;
  bool inStringsFile_ = false;
  bool behindValue_ = false;
  const char* problem_ = "";
};

/// The text as UTF-8, without byte-order mark, converted into `storage` where need be. Nothing when it is ill-formed.
std::optional<std::string_view> utf8From(DataView data, std::string& storage) {
  const auto text = textOf(data);
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    const auto order = text.front() == '\xFE' ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
    if (!isWellFormedUtf16(data, order)) return std::nullopt;
    storage = utf8FromUtf16(data.subspan(2), order);
    return storage;
  }
  if (!isWellFormedUtf8(text)) return std::nullopt;
  return text.starts_with("\uFEFF") ? text.substr(3) : text;
}

}  // namespace

Result<Value> valueFromOlderTextPropertyList(DataView data, const PropertyListLimits& limits) {
  if (data.empty()) return failure(corruptPropertyList("no bytes"));
  if (data.size() > limits.maximumSize) return failure(corruptPropertyList("larger than allowed"));
  std::string storage;
  const auto text = utf8From(data, storage);
  if (!text) return failure(corruptPropertyList("neither well-formed UTF-8 nor UTF-16 with a byte-order mark"));
  return OlderTextPropertyListReader(*text, limits).read();
}

}  // namespace vantrell
