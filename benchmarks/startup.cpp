// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// From the start of the helper to its first answer, and how much memory it then holds. Needs root, as the helper does.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "host/Host.h"

namespace vantrell {
namespace {

const std::string kHelper = VANTRELL_BINARY_DIR "/Vantrell-PrivilegedTool";

/// Resident memory of the only child of this process that runs the helper, in MiB; 0 when it is not found.
double residentMebibytesOfHelper() {
  const std::string self = std::to_string(getpid());
  std::ifstream children("/proc/self/task/" + self + "/children");
  for (int pid = 0; children >> pid;) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string word; status >> word;) {
      if (word != "VmRSS:") continue;
      double kibibytes = 0;
      status >> kibibytes;
      return kibibytes / 1024;
    }
  }
  return 0;
}

void startToFirstAnswer(benchmark::State& state) {
  if (geteuid() != 0) {
    state.SkipWithError("the helper serves as root only");
    return;
  }
  auto host = host::makeHost();
  double resident = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const auto service = host.clientTransport->spawnService(kHelper);
    if (!service) std::abort();
    const auto connection = host.clientTransport->connectToAddress((*service)->address());
    if (!connection || (*connection)->getVersionString() != "2.5") {
      state.SkipWithError("no answer");
      return;
    }
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    resident = std::max(resident, residentMebibytesOfHelper());
  }
  state.counters["resident_MiB"] = resident;
}
BENCHMARK(startToFirstAnswer)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
