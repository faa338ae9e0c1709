// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdlib>

namespace vantrell::benchmarks {

/// Whether this run is only to show that the benchmark works (VANTRELL_BENCHMARK_QUICK is set): its numbers mean
/// nothing then.
inline bool isQuick() {
  return std::getenv("VANTRELL_BENCHMARK_QUICK") != nullptr;
}

/// A count of objects: a fiftieth, 1 at least, in a quick run.
template <class Count>
Count sized(Count full) {
  return isQuick() ? (full / 50 > 1 ? full / 50 : 1) : full;
}

}  // namespace vantrell::benchmarks
