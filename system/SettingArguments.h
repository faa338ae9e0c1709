// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <string>

#include "foundation/Value.h"

namespace vantrell {

// Arguments by position; null where there is none or it is of another kind.

inline const std::string* textArgument(const Array& arguments, std::size_t index) {
  return index < arguments.size() ? arguments[index].asString() : nullptr;
}
inline const Number* numberArgument(const Array& arguments, std::size_t index) {
  return index < arguments.size() ? arguments[index].asNumber() : nullptr;
}

/// The same for texts that must not be empty.
inline const std::string* nameArgument(const Array& arguments, std::size_t index) {
  const auto* text = textArgument(arguments, index);
  return text && !text->empty() ? text : nullptr;
}

}  // namespace vantrell
