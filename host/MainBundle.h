// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Data.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// The running executable and what is embedded in it.
class MainBundle {
 public:
  virtual ~MainBundle() = default;

  /// Absolute path of the running executable, links resolved.
  virtual Result<std::string> executablePath() = 0;

  /// The bytes of the information property list embedded in the executable. POSIX error 2 when there is none.
  virtual Result<Data> informationPropertyList() = 0;

  /// The bytes of the service manager's property list embedded in the executable. POSIX error 2 when there is none.
  virtual Result<Data> launchdPropertyList() = 0;
};

}  // namespace vantrell::host
