// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/CatalogueTable.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <vector>

#include <nlohmann/json.hpp>

namespace vantrell {

namespace {

constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;

const char* feedbackName(const QELPrivilegedOperation& operation) {
  if (operation.isSupportingProgressFeedback()) return "progress";
  return operation.isSupportingLiveOutput() ? "output" : nullptr;
}

std::string argumentsText(const QELPrivilegedOperation& operation) {
  if (operation.hasVariableArgumentCount()) return "S...";
  const auto codes = operation.argumentTypeCodes().value_or(std::string_view());
  return codes.empty() ? "-" : std::string(codes);
}

Row rowOf(std::uint64_t code, const QELPrivilegedOperation& operation) {
  const auto* feedback = feedbackName(operation);
  return {std::to_string(code),      operation.identifier(),   ruleName(operation),
          feedback ? feedback : "-", argumentsText(operation), operation.presentationString()};
}

Json jsonOf(std::uint64_t code, const QELPrivilegedOperation& operation) {
  const auto* feedback = feedbackName(operation);
  auto object = Json::object();
  object["code"] = code;
  object["identifier"] = operation.identifier();
  object["rule"] = ruleName(operation);
  object["feedback"] = feedback ? Json(feedback) : Json(nullptr);
  object["arguments"] = operation.hasVariableArgumentCount()
                            ? Json(nullptr)
                            : Json(std::string(operation.argumentTypeCodes().value_or(std::string_view())));
  object["presentation"] = operation.presentationString();
  return object;
}

void printRow(std::ostream& out, const Row& row, const std::array<std::size_t, kColumns>& widths) {
  std::string line;
  for (std::size_t i = 0; i < kColumns; ++i) {
    const std::string padding(widths[i] - row[i].size(), ' ');
    if (i == 0) {
      line += padding + row[i];  // numbers stand to the right
    } else if (i + 1 == kColumns) {
      line += row[i];
    } else {
      line += row[i] + padding;
    }
    if (i + 1 < kColumns) line += "  ";
  }
  out << line << '\n';
}

}  // namespace

std::string ruleName(const QELPrivilegedOperation& operation) {
  const auto& rule = operation.authenticationPolicy();
  if (const auto* name = rule.asString()) return *name;
  const auto* dictionary = rule.asDictionary();
  const auto* value = dictionary ? dictionary->find("rule") : nullptr;
  const auto* name = value ? value->asString() : nullptr;
  return name ? *name : std::string();
}

void printCatalogueTable(std::ostream& out, const QELPrivilegedToolOperationSet& operations) {
  std::vector<Row> rows{{"Code", "Identifier", "Rule", "Feedback", "Arguments", "Presentation"}};
  for (const auto& [code, identifier] : operations.opIdentifiersByCode()) {
    if (const auto operation = operations.operationWithCode(code)) rows.push_back(rowOf(code, *operation));
  }
  std::array<std::size_t, kColumns> widths{};
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  for (const auto& row : rows) printRow(out, row, widths);
}

void printCatalogueJson(std::ostream& out, const QELPrivilegedToolOperationSet& operations) {
  for (const auto& [code, identifier] : operations.opIdentifiersByCode()) {
    if (const auto operation = operations.operationWithCode(code)) out << jsonLine(jsonOf(code, *operation)) << '\n';
  }
}

}  // namespace vantrell
