// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The token check alone: digest, decipherment, envelope.

#include <atomic>
#include <cstdlib>
#include <new>

#include <benchmark/benchmark.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/RequestToken.h"
#include "core/ClientRegistry.h"
#include "core/TokenCheck.h"
#include "host/Host.h"
#include "host/linux/NoLog.h"

namespace {
std::atomic<std::size_t> allocations = 0;
}  // namespace

// Counts what the check allocates.
[[gnu::noinline]] void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace vantrell {
namespace {

constexpr std::uint64_t kDeleteFileobjects = 3;

void tokenCheck(benchmark::State& state) {
  auto host = host::makeHost();
  host::NoLog log;
  const QELPrivilegedToolOperationSetLM4 set(log);
  ClientRegistry clients;
  const Data key(24, 0x5A);
  const auto pid = host.currentProcess->identifier();
  clients.setKeyForClient(pid, key);

  // Long enough an argument for an envelope of about 300 bytes.
  const std::optional<Array> arguments{{"1", "0", "/Library/Application Support/" + std::string(100, 'x')}};
  const auto envelope = set.standaloneDataForConcretePrivilegedOperation(kDeleteFileobjects, arguments, host).value();
  const auto token = makeRequestToken(static_cast<std::uint64_t>(pid), key, envelope, *host.cryptography).value();
  const auto now = Date::now();
  const TokenCheck check(set, clients, *host.cryptography);

  const auto before = allocations.load();
  for (auto _ : state) {
    const auto result = check.checkToken(token, kDeleteFileobjects, arguments, now);
    if (result.code != 0) state.SkipWithError("the token was refused");
    benchmark::DoNotOptimize(result);
  }
  state.counters["allocations"] =
      static_cast<double>(allocations.load() - before) / static_cast<double>(state.iterations());
  state.counters["envelope_bytes"] = static_cast<double>(envelope.size());
}
BENCHMARK(tokenCheck)->Unit(benchmark::kMicrosecond);

void digestAlone(benchmark::State& state) {
  auto host = host::makeHost();
  const Data bytes(328);
  for (auto _ : state) benchmark::DoNotOptimize(host.cryptography->sha1(bytes));
}
BENCHMARK(digestAlone)->Unit(benchmark::kMicrosecond);

void cipherAlone(benchmark::State& state) {
  auto host = host::makeHost();
  const Data key(24, 0x5A);
  Data bytes(300);
  for (auto _ : state) benchmark::DoNotOptimize(host.cryptography->rc4(key, bytes, bytes));
}
BENCHMARK(cipherAlone)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
