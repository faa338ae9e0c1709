// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "foundation/Value.h"
#include "system/SettingErrors.h"

namespace vantrell {
namespace {

TEST(SettingErrors, TellTheFirmwaresCode) {
  const auto error = setting_error::nvramNotModified(static_cast<host::DeviceReturnCode>(0xE00002C1U));
  const Dictionary expected{
      {"NSLocalizedDescription", "It was not possible to modify a NVRAM setting."},
      {"QELLocalizedRecoverySuggestionTemplate",
       "The operating system could not change a value in the non-volatile memory of this computer. The error code is "
       "$1$."},
      {"QELLocalizedRecoverySuggestionParameters", Array{"-536870207"}}};
  EXPECT_EQ(error, Error(privilegedOperationErrorDomain(), 9, expected));
}

TEST(SettingErrors, TellOfPreferences) {
  const Dictionary expected{
      {"NSLocalizedDescription", "A preference setting could not be updated successfully."},
      {"NSLocalizedRecoverySuggestion",
       "The operating system was unable to change a preference setting. Please ensure to authenticate as "
       "administrator."}};
  EXPECT_EQ(setting_error::preferencesNotUpdated(), Error(privilegedOperationErrorDomain(), 10, expected));
}

TEST(SettingErrors, TellOfTheSystemConfiguration) {
  const Dictionary expected{
      {"NSLocalizedDescription", "The system configuration could not be updated successfully."},
      {"NSLocalizedRecoverySuggestion",
       "The operating system was unable to change a preference setting in the system configuration. The reason is "
       "unknown."}};
  EXPECT_EQ(setting_error::systemConfigurationNotUpdated(), Error(privilegedOperationErrorDomain(), 11, expected));
}

}  // namespace
}  // namespace vantrell
