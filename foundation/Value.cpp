// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Value.h"

#include <array>

namespace vantrell {

std::string_view Value::className() const noexcept {
  static constexpr std::array<std::string_view, std::variant_size_v<Storage>> kNames = {
      "NSNull", "NSString", "NSNumber", "NSData", "NSDate", "NSArray", "NSDictionary", "NSError"};
  return kNames[storage_.index()];
}

}  // namespace vantrell
