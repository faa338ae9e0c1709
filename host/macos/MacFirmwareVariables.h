// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "host/FirmwareVariables.h"

namespace vantrell::host {

/// The properties of the registry entry "IODeviceTree:/options", which are the firmware's variables. The codes are
/// those of the registry. Only root may set variables, and the system guards some of its own even against that.
///
/// Names are passed on as they are, but for the empty one and those with a zero byte, which the registry would cut:
/// there is no such variable, and setting it is a bad argument.
class MacFirmwareVariables final : public FirmwareVariables {
 public:
  DeviceReturnCode connect() override;
  std::unique_ptr<FirmwareOptions> options() override;
};

}  // namespace vantrell::host
