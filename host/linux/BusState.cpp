// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/BusState.h"

#include <algorithm>

#include <time.h>

namespace vantrell::host {

namespace {

std::uint64_t monotonicMicroseconds() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

}  // namespace

std::uint64_t queuedMessages(sd_bus* bus) noexcept {
  std::uint64_t count = 0;
  return sd_bus_get_n_queued_write(bus, &count) < 0 ? 0 : count;
}

int millisecondsUntilDue(sd_bus* bus) noexcept {
  std::uint64_t until = UINT64_MAX;
  if (sd_bus_get_timeout(bus, &until) < 0 || until == UINT64_MAX) return -1;
  if (until == 0) return 0;
  const std::uint64_t now = monotonicMicroseconds();
  if (until <= now) return 0;
  return static_cast<int>(std::min<std::uint64_t>((until - now + 999) / 1000, INT32_MAX));
}

}  // namespace vantrell::host
