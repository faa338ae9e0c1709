// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <optional>
#include <string>

#include "catalogue/OperationArguments.h"
#include "foundation/PosixCodes.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "system/ValueText.h"

namespace vantrell {
namespace {

/// A new variable has the first type, in this order, that its text can be read as. Any text is a string.
std::optional<Value> valueOfNewVariable(const std::string& text) {
  using enum CoreFoundationType;
  for (const auto type : {Data, String, Number, Boolean})
    if (auto value = copyCoreFoundationValueWithType(type, text)) return value;
  return std::nullopt;
}

}  // namespace

ErrorOrNil modifyNvram(const Array& arguments, host::FirmwareVariables& firmwareVariables) {
  const auto* name = nameAt(arguments, 0);
  const auto* text = textAt(arguments, 1);
  if (!name || !text) return Error::posix(posix::kInvalidArgument);
  if (const auto code = firmwareVariables.connect(); code != host::kDeviceSuccess)
    return setting_error::nvramNotModified(code);
  const auto options = firmwareVariables.options();
  if (!options) return std::nullopt;  // clients rely on this: what there is none of need not be changed

  const auto current = options->value(*name);
  const auto value =
      current ? copyCoreFoundationValueWithType(coreFoundationTypeOf(*current), *text) : valueOfNewVariable(*text);
  if (!value) return Error::posix(posix::kInvalidArgument);
  if (const auto code = options->setValue(*name, *value); code != host::kDeviceSuccess)
    return setting_error::nvramNotModified(code);
  return std::nullopt;
}

}  // namespace vantrell
