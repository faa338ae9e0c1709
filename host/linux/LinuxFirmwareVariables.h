// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "host/FirmwareVariables.h"

namespace vantrell::host {

/// The identifier under which this vendor's own variables stand in the firmware.
inline constexpr std::string_view kVendorVariableGuid = "26c7bd9c-3af5-487b-98fe-e9da2bed073b";

/// UEFI variables as efivarfs shows them: files named NAME-GUID, whose first four bytes are attributes. The variable
/// NAME is the vendor's own; NAME-GUID says whose it is.
///
/// Firmware keeps no types. A new text is stored with a zero byte behind it, as UEFI's own texts are, and new data as
/// it is; what such a variable holds later on tells which of the two it is:
///
///     bytes                                              vendor's own    others'
///     printable UTF-8 and one zero byte                  text, from 2    text, from 3 bytes on
///     printable UTF-8 alone                              data            text, from 4 bytes on
///     anything else                                      data            data
///
/// Others' variables of 1, 2 and 4 bytes are numbers as a rule, and small numbers can look like texts; a text alone is
/// what some firmware stores ("boot-args"). One zero byte is a flag rather than the text without characters, which is
/// stored so and is data from then on. A text that is replaced keeps its way of ending. Booleans and numbers do not
/// occur: set as such, they are written as texts.
///
/// An existing variable keeps its attributes; a new one is non-volatile and there for boot and run time.
class LinuxFirmwareVariables final : public FirmwareVariables {
 public:
  explicit LinuxFirmwareVariables(std::string folder = "/sys/firmware/efi/efivars") : folder_(std::move(folder)) {}

  DeviceReturnCode connect() override { return kDeviceSuccess; }
  /// Null on a machine without UEFI, or where efivarfs is not mounted.
  std::unique_ptr<FirmwareOptions> options() override;

 private:
  std::string folder_;
};

}  // namespace vantrell::host
