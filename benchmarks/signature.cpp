// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Verifying a signed executable of 100 MB, file and all, beside hashing its bytes once with the same library: the
// verifier is to reach eight tenths of the digest's speed at least (counter `ratio_to_sha256`). The clock is that on
// the wall, since the verifier may use two threads.

#include <algorithm>
#include <chrono>
#include <limits>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "host/linux/LinuxFileSystem.h"
#include "host/linux/codesign/LinuxCodeSignatures.h"
#include "host/linux/codesign/SignedExecutable.h"
#include "tests/codesign/TestBundle.h"

namespace {

using namespace vantrell;

constexpr std::size_t kCodeSize = 100'000'000;

template <class Body>
double secondsOf(Body body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void verificationOfALargeExecutable(benchmark::State& state) {
  tests::TestAuthority authority;
  const tests::TemporaryFolder folder;
  const std::string path = folder.path("program");
  {
    std::string text(kCodeSize, '\0');
    std::uint32_t number = 1;
    for (char& byte : text) byte = static_cast<char>((number = number * 1664525 + 1013904223) >> 24);
    auto options = tests::SigningOptions::by(authority);
    options.pageExponent = static_cast<std::uint8_t>(state.range(0));
    const auto program = tests::MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", text, 0, {}, {}}});
    tests::writeFile(path, tests::signedFile(program, options));
  }
  host::LinuxFileSystem fileSystem;
  host::LinuxCodeSignatures signatures(fileSystem, {authority.anchor()});
  const auto loaded = fileSystem.loadFile(path, host::codesign::SignedExecutable::kMaximumSize).value();

  // One after the other in each round, so that both meet the same machine; the best rounds are compared.
  double digestTime = std::numeric_limits<double>::infinity();
  double verifierTime = digestTime;
  for (auto _ : state) {
    digestTime = std::min(
        digestTime, secondsOf([&] { benchmark::DoNotOptimize(host::codesign::digestOf("SHA256", loaded->bytes())); }));
    const double time = secondsOf([&] {
      const auto code = signatures.staticCodeAtPath(path);
      if ((*code)->checkValidity({true, true, true}, host::kAnchorAppleGeneric)) {
        throw std::runtime_error("the signature isn't valid");
      }
    });
    verifierTime = std::min(verifierTime, time);
    state.SetIterationTime(time);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kCodeSize));
  state.counters["ratio_to_sha256"] = digestTime / verifierTime;
  state.counters["sha256_bytes_per_second"] = benchmark::Counter(static_cast<double>(kCodeSize) / digestTime);
}
BENCHMARK(verificationOfALargeExecutable)
    ->ArgName("page_exponent")
    ->Arg(12)
    ->Arg(14)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
