// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

// The file systems that this system's contract suites run against, and what there is to know of them.
#ifdef __APPLE__
#include "tests/macos/MacFileSystemUnderTest.h"
#else
#include "tests/host/LinuxFileSystemUnderTest.h"
#endif
