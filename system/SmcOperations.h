// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Error.h"
#include "foundation/Value.h"
#include "system/SmcSharedController.h"

namespace vantrell {

/// The operation on the System Management Controller that clients ask for. Safe from any thread; `controller` must
/// outlive it.
class SmcOperations {
 public:
  explicit SmcOperations(SmcSharedController& controller) : controller_(controller) {}

  /// Arguments: the key as text, the value as bytes; POSIX error 22 for anything else. Errors of the operation set's
  /// domain: 20 when there is no controller, 21 when the value is not accepted.
  ErrorOrNil writeSmcvalue(const Array& arguments);

 private:
  SmcSharedController& controller_;
};

}  // namespace vantrell
