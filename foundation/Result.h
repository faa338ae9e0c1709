// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <expected>
#include <utility>

#include "foundation/Error.h"

namespace vantrell {

/// A value or the error that kept it from coming. The standard type alone may be dropped silently; this one may not.
template <class T>
class [[nodiscard]] Result : public std::expected<T, Error> {
 public:
  using std::expected<T, Error>::expected;
};

/// `return failure(error);` from any function that returns a Result.
inline std::unexpected<Error> failure(Error error) {
  return std::unexpected<Error>(std::move(error));
}

/// The same with a POSIX code (Darwin's number).
inline std::unexpected<Error> posixFailure(std::int64_t code) {
  return failure(Error::posix(code));
}

}  // namespace vantrell
