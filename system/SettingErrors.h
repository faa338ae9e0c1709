// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Error.h"
#include "host/FirmwareVariables.h"

// Failures of the operations on system settings, in the operation set's error domain.
namespace vantrell::setting_error {

Error nvramNotModified(host::DeviceReturnCode code);  // 9
Error preferencesNotUpdated();                        // 10
Error systemConfigurationNotUpdated();                // 11

}  // namespace vantrell::setting_error
