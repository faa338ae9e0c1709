// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "foundation/Value.h"

namespace vantrell::host {

/// The platform's return code for firmware and drivers: 0 is success; failures are those of IOKit's IOReturn.h, whose
/// upper bits make them negative, on every host.
using DeviceReturnCode = std::int32_t;

inline constexpr DeviceReturnCode kDeviceSuccess = 0;

/// The variables of the firmware's non-volatile memory. Safe from any thread.
class FirmwareOptions {
 public:
  virtual ~FirmwareOptions() = default;

  /// The variable's value, or nothing where there is no such variable or none that can be read. Its kind is the
  /// variable's type: boolean (a number made from one), number, text, data; another kind where the firmware has such.
  virtual std::optional<Value> value(std::string_view name) = 0;

  /// Sets the variable, or makes it. `value` is a boolean, a number, a text or data.
  virtual DeviceReturnCode setValue(std::string_view name, const Value& value) = 0;
};

/// The way to the firmware's variables. Safe from any thread.
class FirmwareVariables {
 public:
  virtual ~FirmwareVariables() = default;

  /// Gets hold of the platform's device service, which must have succeeded before `options` is asked.
  virtual DeviceReturnCode connect() = 0;

  /// Null where this machine's firmware has no variables.
  virtual std::unique_ptr<FirmwareOptions> options() = 0;
};

}  // namespace vantrell::host
