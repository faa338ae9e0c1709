// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string_view>

namespace vantrell {

/// The usual text for an error number of the POSIX domain, which is Darwin's numbering on every host: the host's own
/// texts would be those of other errors. Empty for a number without meaning.
std::string_view posixMessage(std::int64_t code);

}  // namespace vantrell
