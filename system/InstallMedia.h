// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/Value.h"
#include "host/Mounts.h"
#include "host/Transport.h"
#include "process/SystemProgramRunner.h"
#include "system/OSInstallAppValidator.h"

namespace vantrell {

/// Makes a volume bootable install media with the tool that an operating system's installer brings along. What it is
/// given must outlive it. One thread at a time.
class InstallMedia {
 public:
  InstallMedia(const OSInstallAppValidator::Environment& environment, host::Mounts& mounts, SystemProgramRunner& runner)
      : environment_(environment), mounts_(mounts), runner_(runner) {}

  /// Arguments: the installer application's path and the path of the destination, which must be a mount point's name
  /// letter by letter; anything but two texts is POSIX error 22. The tool's output goes to `feedback`, which may be
  /// null; cancellation interrupts the tool.
  ///
  /// Errors of the operation set's domain: 18 for an installer that isn't authentic, or whose tool was exchanged since
  /// that was found; 19 for a destination that isn't suitable; and the runner's own.
  ErrorOrNil createInstallmedia(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback);

  /// The tool's arguments, which changed with generation 13.
  static std::vector<std::string> mediaUtilityArguments(std::int8_t minorOSVersion, const std::string& installerPath,
                                                        const std::string& volumePath);

 private:
  bool isMountPoint(const std::string& volumePath);

  OSInstallAppValidator::Environment environment_;
  host::Mounts& mounts_;
  SystemProgramRunner& runner_;
};

}  // namespace vantrell
