// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/MainBundle.h"

namespace vantrell::host {

/// The lists lie in the sections `__TEXT,__info_plist` and `__TEXT,__launchd_plist` of the running executable, as the
/// loader mapped it: what replaced its file since is not looked at.
class MacMainBundle final : public MainBundle {
 public:
  /// POSIX error 2 when the executable has been removed since it was started. A path that was given to the kernel as a
  /// relative one counts from the present working folder.
  Result<std::string> executablePath() override;
  Result<Data> informationPropertyList() override;
  Result<Data> launchdPropertyList() override;
};

}  // namespace vantrell::host
