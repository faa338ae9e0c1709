// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Reading a System Management Controller of 500 keys: finding the keys, then every value by type. Both together are to
// take less than 5 ms. The controller is simulated, so this is what the reader itself costs.

#include <stdexcept>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "host/linux/NoLog.h"
#include "system/QELSystemManagementController.h"
#include "system/SimulatedSmc.h"

namespace vantrell {
namespace {

constexpr std::size_t kKeys = 500;

/// The keys of every type over and over, under names of their own; one less, since the controller adds "#KEY".
std::vector<SimulatedSmc::Key> manyKeys() {
  auto kinds = SimulatedSmc::everyKindOfKey();
  std::erase_if(kinds, [](const auto& key) { return key.infoResult != 0 || key.readResult != 0; });
  std::vector<SimulatedSmc::Key> keys;
  for (std::size_t number = 0; keys.size() + 1 < kKeys; ++number) {
    keys.push_back(kinds[number % kinds.size()]);
    keys.back().code = QELSystemManagementController::smcKeyFromString(fmt::format("K{:03}", number));
  }
  return keys;
}

std::unique_ptr<QELSystemManagementController> open(SimulatedSmc& smc, host::SystemLog& log) {
  auto controller = QELSystemManagementController::init(smc, log);
  if (!controller || controller->availableKeys().size() != kKeys) throw std::runtime_error("the keys are not there");
  return controller;
}

void readEveryValue(const QELSystemManagementController& controller) {
  for (const auto& key : controller.availableKeys()) {
    if (!controller.valueForProperty(key)) throw std::runtime_error("a value can't be read");
  }
}

void findKeysAndReadEveryValue(benchmark::State& state) {
  SimulatedSmc smc(manyKeys());
  host::NoLog log;
  for (auto _ : state) readEveryValue(*open(smc, log));
  state.counters["keys"] = kKeys;
}
BENCHMARK(findKeysAndReadEveryValue)->Unit(benchmark::kMillisecond);

void readEveryValueOfKnownKeys(benchmark::State& state) {
  SimulatedSmc smc(manyKeys());
  host::NoLog log;
  const auto controller = open(smc, log);
  for (auto _ : state) readEveryValue(*controller);
  state.counters["keys"] = kKeys;
}
BENCHMARK(readEveryValueOfKnownKeys)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
