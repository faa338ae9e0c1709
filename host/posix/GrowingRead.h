// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>

#include <sys/types.h>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

/// Reads what a call hands out that gets a buffer and its size, answers the size in use or -1, and for no buffer the
/// size needed. A buffer that is too small is ERANGE or is filled to its end, so one that was filled is not believed.
/// POSIX error 27 for more than `maximumSize` bytes, 34 for what grows every time it is asked for.
template <class Call>
Result<Data> readGrowing(std::size_t maximumSize, const Call& call) {
  constexpr std::size_t kFirstGuess = 1024;
  // Somebody does it on purpose if it goes on like this.
  constexpr int kMostAttempts = 16;
  try {
    Data buffer(kFirstGuess);
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
      const ssize_t count = call(buffer.data(), buffer.size());
      if (count >= 0 && static_cast<std::size_t>(count) < buffer.size()) {
        buffer.resize(static_cast<std::size_t>(count));
        return buffer;
      }
      if (count < 0 && errno != ERANGE) return errnoFailure();
      const ssize_t needed = call(nullptr, 0);
      if (needed < 0) return errnoFailure();
      if (static_cast<std::size_t>(needed) > maximumSize) return errnoFailure(EFBIG);
      buffer.resize(static_cast<std::size_t>(needed) + 1);
    }
  } catch (const std::bad_alloc&) {
    return errnoFailure(ENOMEM);
  }
  return errnoFailure(ERANGE);
}

/// The names in a list of names with a zero byte behind each.
template <class Take>
void forEachName(DataView list, const Take& take) {
  for (auto rest = textOf(list); !rest.empty();) {
    const auto end = std::min(rest.find('\0'), rest.size());
    const auto name = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (!name.empty()) take(name);
  }
}

}  // namespace vantrell::host
