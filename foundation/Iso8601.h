// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"

namespace vantrell {

/// A date in the one form that property lists know, "2026-01-31T23:59:59Z": UTC, whole seconds (fractions are dropped).
/// Years have at least four digits and at most eight, and a minus sign before year 0. Nothing for dates beyond those
/// years.
std::optional<std::string> iso8601FromDate(const Date& date);

/// Nothing unless `text` has exactly that form and names a date that exists.
std::optional<Date> dateFromIso8601(std::string_view text);

}  // namespace vantrell
