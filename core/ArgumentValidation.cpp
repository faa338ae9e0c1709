// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/ArgumentValidation.h"

#include <string_view>

#include "catalogue/ErrorModel.h"

namespace vantrell {

namespace {

bool isKnownTypeCode(char code) {
  return code == 'S' || code == 'N' || code == 'D';
}

bool isOfType(const Value& value, char code) {
  switch (code) {
    case 'S':
      return value.asString();
    case 'N':
      return value.asNumber();
    default:
      return value.asData();
  }
}

ErrorOrNil validateStringList(const QELPrivilegedOperation& operation, const Array& arguments, const Log& log) {
  for (const auto& argument : arguments) {
    if (argument.asString()) continue;
    log.error("Operation {} was rejected because at least one argument has class {} (string expected).",
              operation.identifier(), argument.className());
    return privileged_tool_error::stringListExpected(operation.identifier(), argument.className());
  }
  return std::nullopt;
}

}  // namespace

ErrorOrNil validateArguments(const QELPrivilegedOperation& operation, const Array& arguments, const Log& log) {
  if (operation.hasVariableArgumentCount()) return validateStringList(operation, arguments, log);

  const auto& identifier = operation.identifier();
  if (arguments.size() != operation.argumentCount()) {
    log.error("Operation {} was rejected because an invalid number of arguments was specified ({} expected, {} sent).",
              identifier, operation.argumentCount(), arguments.size());
    return privileged_tool_error::wrongArgumentCount(identifier, operation.argumentCount(), arguments.size());
  }
  const std::string_view codes = operation.argumentTypeCodes().value_or("");
  if (codes.size() != operation.argumentCount()) {
    log.error("Operation {} was rejected because a contradiction in its definition has been detected (bad type codes).",
              identifier);
    return privileged_tool_error::badTypeCodes(identifier);
  }
  // Both tests alternate: a bad code behind a mistyped argument is not reported.
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (!isKnownTypeCode(codes[i])) {
      log.error(
          "Operation {} was rejected because a contradiction in its definition has been detected (invalid type code "
          "'{}').",
          identifier, codes[i]);
      return privileged_tool_error::invalidTypeCode(codes[i], identifier);
    }
    if (!isOfType(arguments[i], codes[i])) {
      log.error("Operation {} was rejected because argument {} has class {} (expected type '{}').", identifier, i,
                arguments[i].className(), codes[i]);
      return privileged_tool_error::wrongArgumentClass(identifier, i, arguments[i].className(), codes[i]);
    }
  }
  return std::nullopt;
}

}  // namespace vantrell
