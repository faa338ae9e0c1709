// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SettingErrors.h"

#include <string>

#include "catalogue/ErrorModel.h"
#include "foundation/Value.h"

namespace vantrell::setting_error {
namespace {

Error plainError(std::int64_t code, const char* description, const char* suggestion) {
  return {privilegedOperationErrorDomain(), code,
          Dictionary{{NSLocalizedDescriptionKey, description}, {NSLocalizedRecoverySuggestionErrorKey, suggestion}}};
}

}  // namespace

// A daemon runs in the locale of no user, which writes numbers without grouping.
Error nvramNotModified(host::DeviceReturnCode code) {
  return privilegedOperationError(9, "It was not possible to modify a NVRAM setting.",
                                  "The operating system could not change a value in the non-volatile memory of this "
                                  "computer. The error code is $1$.",
                                  {std::to_string(code)});
}

Error preferencesNotUpdated() {
  return plainError(10, "A preference setting could not be updated successfully.",
                    "The operating system was unable to change a preference setting. Please ensure to authenticate as "
                    "administrator.");
}

Error systemConfigurationNotUpdated() {
  return plainError(11, "The system configuration could not be updated successfully.",
                    "The operating system was unable to change a preference setting in the system configuration. The "
                    "reason is unknown.");
}

}  // namespace vantrell::setting_error
