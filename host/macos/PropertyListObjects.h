// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/macos/CoreFoundationRef.h"

namespace vantrell::host {

/// The object that a property list stands for, immutable. Null for a failure, and for what the platform can't read.
/// For Objective-C++ sources only.
///
/// This is the way of values that a property list is to hold: what none can is a failure when the list is written,
/// and nothing else is, whatever a message may hold.
CoreFoundationRef<CFPropertyListRef> objectFromPropertyList(const Result<Data>& list);

}  // namespace vantrell::host
