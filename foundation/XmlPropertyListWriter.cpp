// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/Base64.h"
#include "foundation/Iso8601.h"
#include "foundation/PropertyList.h"
#include "foundation/PropertyListErrors.h"
#include "foundation/Unicode.h"
#include "foundation/XmlPropertyListNumbers.h"

namespace vantrell {

namespace {

constexpr std::string_view kPrologue =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

/// Every step answers false when the value can't be written; problem_ then says why.
class XmlPropertyListWriter {
 public:
  Result<Data> write(const Value& root) {
    out_ = kPrologue;
    if (!writeValue(root, 0)) return failure(unwritablePropertyList(problem_));
    out_ += "</plist>\n";
    const auto bytes = bytesOf(out_);
    return Data(bytes.begin(), bytes.end());
  }

 private:
  // Recursion is as deep as kDeepestPropertyList allows. `depth` is also the indentation.
  bool writeValue(const Value& value, std::size_t depth) {
    if (const auto* text = value.asString()) return writeText("string", *text, depth);
    if (const auto* number = value.asNumber()) return writeNumber(*number, depth);
    if (const auto* data = value.asData()) return writeData(*data, depth);
    if (const auto* date = value.asDate()) return writeDate(*date, depth);
    if (const auto* array = value.asArray()) return writeArray(*array, depth);
    if (const auto* dictionary = value.asDictionary()) return writeDictionary(*dictionary, depth);
    return refuse("a value that no property list can hold");
  }

  bool refuse(const char* problem) {
    problem_ = problem;
    return false;
  }

  void line(std::size_t depth, std::string_view text) {
    out_.append(depth, '\t');
    out_ += text;
    out_ += '\n';
  }

  void element(std::size_t depth, std::string_view name, std::string_view contents) {
    out_.append(depth, '\t');
    out_.append("<").append(name).append(">").append(contents).append("</").append(name).append(">\n");
  }

  bool writeNumber(const Number& number, std::size_t depth) {
    if (number.kind() == Number::Kind::Boolean) {
      line(depth, number.boolValue() ? "<true/>" : "<false/>");
    } else if (number.kind() == Number::Kind::Real) {
      element(depth, "real", xmlTextFromReal(number.doubleValue()));
    } else {
      element(depth, "integer", number.description());
    }
    return true;
  }

  bool writeDate(const Date& date, std::size_t depth) {
    const auto text = iso8601FromDate(date);
    if (!text) return refuse("a date too distant");
    element(depth, "date", *text);
    return true;
  }

  // Lines end before column 76, tabs counted as 8, and never get shorter than 12 characters.
  bool writeData(const Data& data, std::size_t depth) {
    const std::size_t width = 76 - 8 * std::min<std::size_t>(depth, 8);
    line(depth, "<data>");
    const std::string text = base64FromData(data);
    for (std::size_t at = 0; at < text.size(); at += width) line(depth, std::string_view(text).substr(at, width));
    line(depth, "</data>");
    return true;
  }

  bool writeArray(const Array& array, std::size_t depth) {
    if (depth == kDeepestPropertyList) return refuse("nested too deeply");
    if (array.empty()) {
      line(depth, "<array/>");
      return true;
    }
    line(depth, "<array>");
    for (const Value& item : array) {
      if (!writeValue(item, depth + 1)) return false;
    }
    line(depth, "</array>");
    return true;
  }

  bool writeDictionary(const Dictionary& dictionary, std::size_t depth) {
    if (depth == kDeepestPropertyList) return refuse("nested too deeply");
    if (dictionary.empty()) {
      line(depth, "<dict/>");
      return true;
    }
    line(depth, "<dict>");
    for (const auto& [key, value] : dictionary) {
      if (!writeText("key", key, depth + 1) || !writeValue(value, depth + 1)) return false;
    }
    line(depth, "</dict>");
    return true;
  }

  bool writeText(std::string_view name, std::string_view text, std::size_t depth) {
    out_.append(depth, '\t');
    out_.append("<").append(name).append(">");
    while (!text.empty()) {
      const auto character = decodeUtf8(text);
      if (!writeCharacter(character.codePoint)) return refuse("a character that XML can't write");
      text.remove_prefix(character.length);
    }
    out_.append("</").append(name).append(">\n");
    return true;
  }

  bool writeCharacter(char32_t character) {
    switch (character) {
      case '&':
        out_ += "&amp;";
        return true;
      case '<':
        out_ += "&lt;";
        return true;
      case '>':
        out_ += "&gt;";
        return true;
      case '\r':  // as it stands, a reader would take it for a line feed
        out_ += "&#13;";
        return true;
      case '\t':
      case '\n':
        break;
      default:
        if (character < 0x20 || character == 0xFFFE || character == 0xFFFF) return false;
    }
    appendUtf8(out_, character);
    return true;
  }

  std::string out_;
  const char* problem_ = "";
};

}  // namespace

Result<Data> xmlPropertyListFromValue(const Value& root) {
  return XmlPropertyListWriter().write(root);
}

}  // namespace vantrell
