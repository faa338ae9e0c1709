// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <string>

#include "foundation/Value.h"

namespace vantrell {

// Arguments by place; null where there is none of that kind. The catalogue has been there before: null is a mistake of
// its own.

inline const std::string* textAt(const Array& arguments, std::size_t index) {
  return index < arguments.size() ? arguments[index].asString() : nullptr;
}
inline const Number* numberAt(const Array& arguments, std::size_t index) {
  return index < arguments.size() ? arguments[index].asNumber() : nullptr;
}
/// Nothing for an empty text, too.
inline const std::string* nameAt(const Array& arguments, std::size_t index) {
  const auto* text = textAt(arguments, index);
  return text && !text->empty() ? text : nullptr;
}
inline const Data* dataAt(const Array& arguments, std::size_t index) {
  return index < arguments.size() ? arguments[index].asData() : nullptr;
}

}  // namespace vantrell
