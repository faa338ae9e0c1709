// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantrell {

/// The second of the numbers at the start of a version's text: "10.15.7" gives 15, "11.2.3" gives 2. Read as the
/// platform's scanner does: blanks before numbers and dot are skipped, numbers may bear a sign, and one beyond 64 bits
/// is the largest or smallest that there is. Only its low eight bits are kept, as a signed number. Nothing where there
/// are no two numbers.
std::optional<std::int8_t> generationFromVersion(std::string_view version);

}  // namespace vantrell
