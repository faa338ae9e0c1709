// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/ResultPrinter.h"

#include <array>
#include <ostream>
#include <span>
#include <string_view>

#include <nlohmann/json.hpp>

#include "catalogue/ErrorModel.h"
#include "client/JsonOutput.h"

namespace vantrell {

namespace {

constexpr std::int64_t kAuthorizationProblem = 2;

constexpr std::array<std::string_view, 3> kExistence = {"nothing", "folder", "no folder"};
constexpr std::array<std::string_view, 3> kSecurityPolicy = {"unknown", "access denied", "access allowed"};

std::span<const std::string_view> meaningsOf(const std::string& key) {
  if (key == "ObjectExistence") return kExistence;
  if (key == QELSecurityPolicyCheckResultKey) return kSecurityPolicy;
  return {};
}

}  // namespace

ExitStatus exitStatusForResult(const ErrorOrNil& result) {
  if (!result || result->code() == 0) return ExitStatus::Success;
  const bool refused = result->domain() == privilegedToolErrorDomain() && result->code() == kAuthorizationProblem;
  return refused ? ExitStatus::NoConnection : ExitStatus::Failure;
}

ExitStatus printResult(const CommandContext& context, const ErrorOrNil& result) {
  if (context.json) {
    context.out << jsonLine(jsonFromResult(result)) << '\n' << std::flush;
  } else if (result && result->code() == 0) {
    for (const auto& [key, value] : result->userInfo()) {
      context.out << key << ": " << resultValueText(key, value) << '\n';
    }
    context.out << std::flush;
  } else if (result) {
    context.complain(*result);
  }
  return exitStatusForResult(result);
}

std::string resultValueText(const std::string& key, const Value& value) {
  if (const auto* text = value.asString()) return *text;
  const auto* number = value.asNumber();
  if (!number) return jsonLine(jsonFromValue(value));
  auto text = number->description();
  const auto meanings = meaningsOf(key);
  if (const auto index = number->unsignedValue(); index < meanings.size()) {
    text.append(" (").append(meanings[index]).append(")");
  }
  return text;
}

}  // namespace vantrell
