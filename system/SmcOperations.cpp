// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcOperations.h"

#include <cstdint>

#include "catalogue/ErrorModel.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

namespace {

constexpr std::int64_t kNotAccessible = 20;
constexpr std::int64_t kWriteFailed = 21;

Error operationError(std::int64_t code, const char* description, const char* suggestion) {
  return {privilegedOperationErrorDomain(), code,
          Dictionary{{NSLocalizedDescriptionKey, description}, {NSLocalizedRecoverySuggestionErrorKey, suggestion}}};
}

}  // namespace

ErrorOrNil SmcOperations::writeSmcvalue(const Array& arguments) {
  if (arguments.size() != 2) return Error::posix(posix::kInvalidArgument);
  const auto* key = arguments[0].asString();
  const auto* bytes = arguments[1].asData();
  if (!key || !bytes) return Error::posix(posix::kInvalidArgument);
  const auto controller = controller_.controller();
  if (!controller) {
    return operationError(kNotAccessible, "The System Management Controller could not be accessed.",
                          "This is either not an Apple-branded computer or a technical problem occurred while trying "
                          "to find the SMC.");
  }
  if (!controller->writeRawBytes(*bytes, *key)) {
    return operationError(kWriteFailed, "Write access to the System Management Controller failed.",
                          "An unknown problem occurred while trying to update a value of the SMC.");
  }
  return std::nullopt;
}

}  // namespace vantrell
