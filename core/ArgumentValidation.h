// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "catalogue/QELPrivilegedOperation.h"
#include "foundation/Error.h"
#include "foundation/Log.h"
#include "foundation/Value.h"

namespace vantrell {

/// Whether number and classes of the arguments are those of the catalogue; else the refusal, which is logged too. What
/// the arguments say is the operation's own matter.
ErrorOrNil validateArguments(const QELPrivilegedOperation& operation, const Array& arguments, const Log& log);

}  // namespace vantrell
