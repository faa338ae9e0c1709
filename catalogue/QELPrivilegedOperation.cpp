// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/QELPrivilegedOperation.h"

#include <algorithm>
#include <utility>

#include "catalogue/ErrorModel.h"

namespace vantrell {

namespace {

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The rule object as the platform's authorization database takes it; null for a value without meaning.
Value ruleForPolicy(std::uint64_t policy) {
  switch (policy) {
    case 0:
      return "allow";
    case 1:
      return Dictionary{{"rule", "default"}};
    case 2:
      return "authenticate-admin";
    default:
      return Null{};
  }
}

bool isUsableRule(const Value& rule) {
  if (const auto* text = rule.asString()) return !text->empty();
  if (const auto* dictionary = rule.asDictionary()) return !dictionary->empty();
  return false;
}

}  // namespace

std::string capitalized(std::string_view word) {
  std::string result(word);
  std::ranges::transform(result, result.begin(), lower);
  if (!result.empty()) result.front() = upper(result.front());
  return result;
}

std::shared_ptr<const QELPrivilegedOperation> QELPrivilegedOperation::initWithStaticDescription(
    const StaticOperationDescription& description, const Log& log) {
  if (!description.identifier || !description.presentationString) return nullptr;
  Value rule = ruleForPolicy(description.authorizationPolicy);
  if (rule.isNull()) return nullptr;

  std::optional<std::string> types;
  if (description.argumentTypeCodes) types = description.argumentTypeCodes;
  auto result =
      initWithIdentifier(description.identifier, std::move(rule), (description.feedbackCapability & 0xFF) != 0,
                         (description.feedbackCapability >> 8 & 0xFF) != 0, description.argumentCount, std::move(types),
                         description.presentationString);
  if (!result) {
    log.error(
        "{}: implementation error - static description with code {} contains inconsistent data and was not accepted.",
        "QELPrivilegedOperation", description.operationCode);
  }
  return result;
}

std::shared_ptr<const QELPrivilegedOperation> QELPrivilegedOperation::initWithIdentifier(
    std::string identifier, Value authenticationPolicy, bool progressCapability, bool outputCapability,
    std::uint64_t argumentCount, std::optional<std::string> argumentTypes, std::string userPresentation) {
  if (identifier.empty() || userPresentation.empty() || !isUsableRule(authenticationPolicy)) return nullptr;
  if (progressCapability && outputCapability) return nullptr;
  const bool typesFit = argumentCount == kVariableArgumentCount
                            ? !argumentTypes
                            : (argumentTypes ? argumentTypes->size() : 0) == argumentCount;
  if (!typesFit) return nullptr;

  struct Constructible : QELPrivilegedOperation {};
  auto result = std::make_shared<Constructible>();
  result->isSupportingProgressFeedback_ = progressCapability;
  result->isSupportingLiveOutput_ = outputCapability;
  result->identifier_ = std::move(identifier);
  result->authenticationPolicy_ = std::move(authenticationPolicy);
  result->argumentCount_ = argumentCount;
  result->argumentTypeCodes_ = std::move(argumentTypes);
  result->presentationString_ = std::move(userPresentation);
  return result;
}

std::optional<std::string_view> QELPrivilegedOperation::argumentTypeCodes() const noexcept {
  return argumentTypeCodes_;
}

std::optional<std::string> QELPrivilegedOperation::authorizationRightNameForImplementationIdentifier(
    std::string_view code) const {
  if (code.empty()) return std::nullopt;
  return vendorDomainPrefix() + "." + std::string(code) + "." + identifier_;
}

std::string QELPrivilegedOperation::operationIdentifierForExecutionSelector() const {
  std::string result;
  std::string_view rest = identifier_;
  for (;;) {
    const auto hyphen = rest.find('-');
    std::string letters;
    std::ranges::copy_if(rest.substr(0, hyphen), std::back_inserter(letters), isLetter);
    result += capitalized(letters);
    if (hyphen == std::string_view::npos) return result;
    rest.remove_prefix(hyphen + 1);
  }
}

}  // namespace vantrell
