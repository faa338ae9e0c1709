// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>

#include "foundation/Data.h"
#include "foundation/Value.h"

namespace vantrell::host {

enum class FirmwareVariableOwner : bool { Vendor, Other };

/// What the bytes of a variable mean, by LinuxFirmwareVariables' rule: a text or data.
Value valueFromFirmwareBytes(DataView bytes, FirmwareVariableOwner owner);

/// The bytes to be stored for a value in the place of `before`, which is nothing for a new variable.
Data firmwareBytesFromValue(const Value& value, const std::optional<Data>& before, FirmwareVariableOwner owner);

}  // namespace vantrell::host
