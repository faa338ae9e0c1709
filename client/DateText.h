// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Date.h"

namespace vantrell {

/// ISO 8601 in UTC: "2026-03-01T12:00:00Z", with as many digits of a second's fraction as it takes. A date more than 90
/// million years away, which no file system can mean, is "@" and its seconds since 1970.
std::string textOfDate(const Date& date);

}  // namespace vantrell
