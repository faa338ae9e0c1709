// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/JsonOutput.h"

#include <nlohmann/json.hpp>

#include "client/DateText.h"
#include "client/ErrorText.h"
#include "foundation/Base64.h"

namespace vantrell {

namespace {

struct Converter {
  Json operator()(Null) const { return nullptr; }
  Json operator()(const std::string& text) const { return text; }
  Json operator()(const Data& data) const { return base64FromData(data); }
  Json operator()(const Date& date) const { return textOfDate(date); }
  Json operator()(const Dictionary& dictionary) const { return jsonFromDictionary(dictionary); }
  Json operator()(const Error& error) const { return jsonFromError(error); }

  Json operator()(const Number& number) const {
    switch (number.kind()) {
      case Number::Kind::Boolean:
        return number.boolValue();
      case Number::Kind::Signed:
        return number.signedValue();
      case Number::Kind::Unsigned:
        return number.unsignedValue();
      default:
        return number.doubleValue();
    }
  }

  Json operator()(const Array& array) const {
    auto result = Json::array();
    for (const auto& element : array) result.push_back(jsonFromValue(element));
    return result;
  }
};

Json textOrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

}  // namespace

Json jsonFromValue(const Value& value) {
  return std::visit(Converter{}, value.storage());
}

Json jsonFromDictionary(const Dictionary& dictionary) {
  auto result = Json::object();
  for (const auto& [key, value] : dictionary) result[key] = jsonFromValue(value);
  return result;
}

Json jsonFromError(const Error& error) {
  auto result = Json::object();
  result["domain"] = error.domain();
  result["code"] = error.code();
  result["userInfo"] = jsonFromDictionary(error.userInfo());
  return result;
}

Json jsonFromResult(const ErrorOrNil& result) {
  auto line = Json::object();
  if (!result) {
    line["result"] = nullptr;
    return line;
  }
  const auto text = textOfError(*result);
  auto& object = line["result"] = jsonFromError(*result);
  object["description"] = textOrNull(text.description);
  object["recoverySuggestion"] = textOrNull(text.recoverySuggestion);
  return line;
}

std::string jsonLine(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace vantrell
