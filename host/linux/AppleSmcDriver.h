// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "host/SmcDriver.h"
#include "host/linux/AppleSmcAttributes.h"
#include "host/linux/AppleSmcFans.h"
#include "host/linux/AppleSmcKeys.h"

namespace vantrell::host {

/// The controller of an Apple computer that runs Linux, through the files of the kernel's `applesmc` driver. Reading
/// everything takes root, since only root may choose the key that the files show; writing is limited to what
/// host/linux/AppleSmcFans.h says. Attributes of keys are not known here (0).
///
/// Written after the driver's source; it has been tried on folders that behave like the driver's, never on a computer
/// that has one.
class AppleSmcDriver final : public SmcDriver {
 public:
  static constexpr char kFolder[] = "/sys/devices/platform/applesmc.768";

  explicit AppleSmcDriver(const std::string& folder = kFolder);
  explicit AppleSmcDriver(std::unique_ptr<AppleSmcAttributes> attributes);

  /// kSmcGeneralError where there is no such driver.
  std::expected<std::unique_ptr<SmcConnection>, SmcReturnCode> connect() override;

 private:
  class Connection;

  SmcRefusal answer(const SmcRecord& request, SmcRecord& answer);
  SmcRefusal keyAtIndex(const SmcRecord& request, SmcRecord& answer);
  SmcRefusal keyInfo(const SmcRecord& request, SmcRecord& answer);
  SmcRefusal readValue(const SmcRecord& request, SmcRecord& answer);
  SmcRefusal writeValue(const SmcRecord& request);

  const std::unique_ptr<AppleSmcAttributes> attributes_;
  std::mutex lock_;  // held over each call: there is one window onto the keys
  AppleSmcKeys keys_;
  AppleSmcFans fans_;
};

}  // namespace vantrell::host
