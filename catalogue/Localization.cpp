// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <utility>

#include "catalogue/ErrorModel.h"
#include "catalogue/QELPrivilegedToolOperationSet.h"

namespace vantrell {

namespace {

std::string translated(const std::string& english, const StringTable& table) {
  return table ? table(english) : english;
}

void replaceEvery(std::string& text, const std::string& placeholder, const std::string& replacement) {
  for (auto at = text.find(placeholder); at != std::string::npos;
       at = text.find(placeholder, at + replacement.size())) {
    text.replace(at, placeholder.size(), replacement);
  }
}

/// Puts the text for people under `plainKey`: the plain text translated, or the template filled in.
void localizeText(Dictionary& userInfo, const char* plainKey, const char* templateKey, const char* parametersKey,
                  const StringTable& table) {
  const auto textUnder = [&](const char* key) -> const std::string* {
    const auto* value = userInfo.find(key);
    const auto* text = value ? value->asString() : nullptr;
    return text && !text->empty() ? text : nullptr;
  };
  if (const auto* plain = textUnder(plainKey)) {
    userInfo.set(plainKey, translated(*plain, table));
    return;
  }
  const auto* text = textUnder(templateKey);
  const auto* value = userInfo.find(parametersKey);
  const auto* parameters = value ? value->asArray() : nullptr;
  if (!text || !parameters || parameters->empty()) return;
  userInfo.set(plainKey, QELPrivilegedToolOperationSet::localizedStringForTemplate(*text, *parameters, table));
}

}  // namespace

std::string QELPrivilegedToolOperationSet::localizedStringForTemplate(const std::string& text, const Array& parameters,
                                                                      const StringTable& table) {
  std::string result = translated(text, table);
  for (std::size_t n = 0; n < parameters.size(); ++n) {
    const auto* parameter = parameters[n].asString();
    if (parameter) replaceEvery(result, "$" + std::to_string(n + 1) + "$", *parameter);
  }
  return result;
}

ErrorOrNil QELPrivilegedToolOperationSet::localizedErrorForPrivilegedOperationError(const ErrorOrNil& error,
                                                                                    const StringTable& table) {
  if (!error || !error->hasUserInfo()) return error;
  Dictionary userInfo = error->userInfo();
  localizeText(userInfo, NSLocalizedDescriptionKey, QELLocalizedDescriptionTemplateKey,
               QELLocalizedDescriptionParametersKey, table);
  localizeText(userInfo, NSLocalizedRecoverySuggestionErrorKey, QELLocalizedRecoverySuggestionTemplateKey,
               QELLocalizedRecoverySuggestionParametersKey, table);
  if (const auto* value = userInfo.find(NSUnderlyingErrorKey); value && value->asError()) {
    if (auto underlying = localizedErrorForPrivilegedOperationError(*value->asError(), table)) {
      userInfo.set(NSUnderlyingErrorKey, std::move(*underlying));
    }
  }
  return Error(error->domain(), error->code(), std::move(userInfo));
}

}  // namespace vantrell
