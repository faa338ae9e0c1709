// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/XmlPropertyListReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <expat.h>
#include <fmt/format.h>

#include "foundation/Base64.h"
#include "foundation/Iso8601.h"
#include "foundation/PropertyListBuilder.h"
#include "foundation/PropertyListErrors.h"
#include "foundation/XmlPropertyListNumbers.h"

namespace vantrell {

namespace {

enum class Element : std::uint8_t { Plist, Array, Dict, Key, String, Integer, Real, Date, Data, True, False };

constexpr std::array<std::pair<std::string_view, Element>, 11> kElements = {{
    {"string", Element::String},
    {"key", Element::Key},
    {"dict", Element::Dict},
    {"array", Element::Array},
    {"integer", Element::Integer},
    {"true", Element::True},
    {"false", Element::False},
    {"data", Element::Data},
    {"date", Element::Date},
    {"real", Element::Real},
    {"plist", Element::Plist},
}};

std::optional<Element> elementNamed(std::string_view name) {
  const auto* found = std::ranges::find(kElements, name, &std::pair<std::string_view, Element>::first);
  if (found == kElements.end()) return std::nullopt;
  return found->second;
}

bool isSpace(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == text.npos;
}

/// Expat says what comes, the builder keeps what is open; here is only which element's text is being gathered.
class XmlPropertyListReader {
 public:
  explicit XmlPropertyListReader(const PropertyListLimits& limits)
      : parser_(XML_ParserCreate(nullptr)), builder_(limits) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* self, const char* name, const char**) {
          guarded(self, [name](XmlPropertyListReader& reader) { return reader.begin(name); });
        },
        [](void* self, const char*) { guarded(self, [](XmlPropertyListReader& reader) { return reader.end(); }); });
    XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
      guarded(self, [text, length](XmlPropertyListReader& reader) {
        return reader.characters({text, static_cast<std::size_t>(length)});
      });
    });
    XML_SetEntityDeclHandler(parser_.get(), [](void* self, const char*, int, const char*, int, const char*, const char*,
                                               const char*, const char*) { refused(self, "it defines an entity"); });
    XML_SetAttlistDeclHandler(parser_.get(), [](void* self, const char*, const char*, const char*, const char*, int) {
      refused(self, "it defines attributes");
    });
    // With a document type that isn't fetched, an unknown entity is no error to Expat.
    XML_SetSkippedEntityHandler(parser_.get(),
                                [](void* self, const char*, int) { refused(self, "an unknown entity"); });
  }
  // Expat holds a pointer to this object.
  XmlPropertyListReader(const XmlPropertyListReader&) = delete;
  XmlPropertyListReader& operator=(const XmlPropertyListReader&) = delete;

  Result<Value> read(DataView data) {
    // In one piece: Expat goes over an unfinished token again with each piece, which would be quadratic.
    const auto text = textOf(data);
    const auto status = XML_Parse(parser_.get(), text.data(), static_cast<int>(text.size()), XML_TRUE);
    if (exception_) std::rethrow_exception(exception_);
    if (problem_ == nullptr && status != XML_STATUS_OK) problem_ = XML_ErrorString(XML_GetErrorCode(parser_.get()));
    if (problem_ != nullptr) {
      return failure(
          corruptPropertyList(fmt::format("line {}: {}", XML_GetCurrentLineNumber(parser_.get()), problem_)));
    }
    return builder_.takeRoot();
  }

 private:
  struct ParserDeleter {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
  };

  // No exception may pass through Expat, which is C. Expat may still call after it was stopped.
  template <class Step>
  static void guarded(void* self, Step step) noexcept {
    auto& reader = *static_cast<XmlPropertyListReader*>(self);
    if (reader.problem_ != nullptr || reader.exception_) return;
    try {
      if (step(reader)) return;
      if (reader.problem_ == nullptr) reader.problem_ = reader.builder_.problem();
    } catch (...) {
      reader.exception_ = std::current_exception();
    }
    XML_StopParser(reader.parser_.get(), XML_FALSE);
  }

  static void refused(void* self, const char* problem) noexcept {
    guarded(self, [problem](XmlPropertyListReader& reader) { return reader.refuse(problem); });
  }

  bool refuse(const char* problem) noexcept {
    problem_ = problem;
    return false;
  }

  bool begin(std::string_view name) {
    if (leaf_) return refuse("an element where only text can stand");
    const auto element = elementNamed(name);
    if (!element) return refuse("an unknown element");
    if ((*element == Element::Plist) == insidePlist_) return refuse("an element out of place");
    switch (*element) {
      case Element::Plist:
        insidePlist_ = true;
        return true;
      case Element::Array:
        return builder_.beginArray();
      case Element::Dict:
        return builder_.beginDictionary();
      default:
        leaf_ = *element;
        text_.clear();
        return true;
    }
  }

  bool end() {
    if (leaf_) return endLeaf(*std::exchange(leaf_, std::nullopt));
    if (builder_.insideContainer()) return builder_.end();
    return builder_.isComplete() || refuse("no root");
  }

  bool characters(std::string_view text) {
    if (!leaf_) return isSpace(text) || refuse("text where only elements can stand");
    text_.append(text);
    return true;
  }

  bool endLeaf(Element leaf) {
    switch (leaf) {
      case Element::Key:
        return builder_.addKey(std::move(text_));
      case Element::String:
        return builder_.addScalar(std::move(text_));
      case Element::Integer:
        return addScalar(integerFromXmlText(text_), "a malformed integer or one of more than 64 bits");
      case Element::Real:
        return addScalar(realFromXmlText(text_), "a malformed real");
      case Element::Date:
        return addScalar(dateFromIso8601(text_), "a malformed date");
      case Element::Data:
        return addScalar(dataFromBase64(text_), "malformed data");
      default:
        if (!isSpace(text_)) return refuse("text within a boolean");
        return builder_.addScalar(leaf == Element::True);
    }
  }

  template <class Scalar>
  bool addScalar(std::optional<Scalar> scalar, const char* problem) {
    return scalar ? builder_.addScalar(*std::move(scalar)) : refuse(problem);
  }

  std::unique_ptr<XML_ParserStruct, ParserDeleter> parser_;
  PropertyListBuilder builder_;
  bool insidePlist_ = false;
  std::optional<Element> leaf_;
  std::string text_;
  const char* problem_ = nullptr;
  std::exception_ptr exception_;
};

}  // namespace

Result<Value> valueFromXmlPropertyList(DataView data, const PropertyListLimits& limits) {
  if (data.size() > limits.maximumSize || data.size() > std::numeric_limits<int>::max()) {
    return failure(corruptPropertyList("larger than allowed"));
  }
  return XmlPropertyListReader(limits).read(data);
}

}  // namespace vantrell
