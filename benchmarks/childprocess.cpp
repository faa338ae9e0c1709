// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What running a program through the executor costs: the relay of much output beside a shell's pipe into cat, and start
// to end of a program that does nothing beside a bare posix_spawn and waitpid.

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/linux/NoLog.h"
#include "host/posix/PosixChildProcesses.h"
#include "process/QELTaskExecutor.h"

namespace vantrell {
namespace {

constexpr double kMebibytes = 1024;

double secondsFor(auto&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void spawnAndWait(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = -1;
  int status = -1;
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) std::abort();
  if (waitpid(child, &status, 0) != child || status != 0) std::abort();
}

struct Counter final : QELTaskExecutorDelegate {
  void receiveTaskOutput(DataView data, bool) override {
    bytes += data.size();
    ++pieces;
  }
  std::size_t bytes = 0;
  std::size_t pieces = 0;
};

struct Executor {
  Executor() { executor.setDelegate(counter); }

  host::NoLog log;
  host::PosixChildProcesses children;
  std::shared_ptr<Counter> counter = std::make_shared<Counter>();
  QELTaskExecutor executor{children, Log(log)};
};

/// Both ways take turns, so that whatever else the machine does hits both alike.
void relayBesideShellPipe(benchmark::State& state) {
  Executor run;
  double pipe = 0;
  double relay = 0;
  for (auto _ : state) {
    pipe += secondsFor([] { spawnAndWait({"/bin/sh", "-c", "head -c 1G /dev/zero | cat >/dev/null"}); });
    const double elapsed = secondsFor([&] {
      if (run.executor.executeProgramAtPath("/usr/bin/head", std::vector<std::string>{"-c", "1G", "/dev/zero"}) != 0)
        std::abort();
    });
    relay += elapsed;
    state.SetIterationTime(elapsed);
  }
  const auto runs = static_cast<double>(state.iterations());
  if (run.counter->bytes != static_cast<std::size_t>(runs) << 30) std::abort();
  state.counters["pipe_MiB_per_s"] = kMebibytes * runs / pipe;
  state.counters["relay_MiB_per_s"] = kMebibytes * runs / relay;
  state.counters["bytes_per_piece"] =
      static_cast<double>(run.counter->bytes) / static_cast<double>(run.counter->pieces);
  state.counters["ratio_to_pipe"] = relay / pipe;
}
BENCHMARK(relayBesideShellPipe)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

void nothingBesideBareSpawn(benchmark::State& state) {
  constexpr int kRound = 50;
  Executor run;
  const std::vector<std::string> none;
  double bare = 0;
  double synchronous = 0;
  double asynchronous = 0;
  for (auto _ : state) {
    bare += secondsFor([] {
      for (int i = 0; i < kRound; ++i) spawnAndWait({"/bin/true"});
    });
    const double elapsed = secondsFor([&] {
      for (int i = 0; i < kRound; ++i) run.executor.executeProgramAtPath("/bin/true", none);
    });
    synchronous += elapsed;
    asynchronous += secondsFor([&] {
      for (int i = 0; i < kRound; ++i) {
        std::promise<void> end;
        run.executor.executeProgramAtPath("/bin/true", none, [&](bool, std::int32_t) { end.set_value(); });
        end.get_future().wait();
      }
    });
    state.SetIterationTime(elapsed);
  }
  const auto runs = static_cast<double>(state.iterations()) * kRound;
  state.counters["bare_us"] = bare / runs * 1e6;
  state.counters["synchronous_us"] = synchronous / runs * 1e6;
  state.counters["asynchronous_us"] = asynchronous / runs * 1e6;
  state.counters["ratio_synchronous"] = synchronous / bare;
  state.counters["ratio_asynchronous"] = asynchronous / bare;
}
BENCHMARK(nothingBesideBareSpawn)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
