// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The way of a utility's output from its pipe through the helper's relay and the feedback connection to the client,
// beside a shell's pipe through two cats.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "catalogue/FeedbackMessages.h"
#include "foundation/FileManager.h"
#include "foundation/Value.h"
#include "host/Host.h"
#include "host/linux/DescriptorEndpoint.h"
#include "host/linux/LinuxFeedbackListener.h"
#include "host/linux/LinuxTransport.h"
#include "host/linux/NoLog.h"
#include "process/SystemProgramRunner.h"

namespace vantrell {
namespace {

constexpr std::uint64_t kBytes = std::uint64_t{256} << 20;
constexpr double kMegabytes = static_cast<double>(kBytes) / 1e6;
constexpr std::chrono::seconds kPatience{60};

double secondsFor(auto&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void runShellPipe() {
  std::string line = "head -c " + std::to_string(kBytes) + " /dev/zero | cat | cat > /dev/null";
  std::string shell = "/bin/sh";
  std::string option = "-c";
  std::array<char*, 4> arguments{shell.data(), option.data(), line.data(), nullptr};
  pid_t child = -1;
  int status = -1;
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) std::abort();
  if (waitpid(child, &status, 0) != child || status != 0) std::abort();
}

/// The largest resident size that this process ever had.
double peakMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kibibytes = 0;
    if (word == "VmHWM:" && status >> kibibytes) return kibibytes * 1024 / 1e6;
  }
  std::abort();
}

/// The helper's half and the client's half of a run, both in this process.
class Relay {
 public:
  Relay() : host_(host::makeHost()), fileManager_(*host_.fileSystem), transport_(log_) {}

  void run() {
    std::atomic<std::uint64_t> received = 0;
    auto listener = host::LinuxFeedbackListener::make([&](const Dictionary& message) {
      const auto* data = message.find(feedback_key::kOutputData);
      if (data && data->asData()) received += data->asData()->size();
    });
    if (!listener) std::abort();
    auto connection = transport_.connectionToEndpoint(std::make_unique<host::DescriptorEndpoint>(
        static_cast<host::LinuxFeedbackListener&>(**listener).takeEndpoint()));
    if (!connection) std::abort();
    (*connection)->resume();
    SystemProgramRunner runner(*host_.childProcesses, fileManager_, *host_.fileSystem, Log(log_), nullptr);
    if (runner.executeTrusted(true, "/usr/bin/head", {"-c", std::to_string(kBytes), "/dev/zero"}, true,
                              connection->get())) {
      std::abort();
    }
    connection->reset();
    if (!(*listener)->waitUntilClosed(kPatience) || received != kBytes) std::abort();
  }

 private:
  host::NoLog log_;
  host::Host host_;
  FileManager fileManager_;
  host::LinuxTransport transport_;
};

/// Both ways take turns, so that whatever else the machine does hits both alike.
void relayBesideTwoCats(benchmark::State& state) {
  Relay relay;
  double pipe = 0;
  double relayed = 0;
  const double peakBefore = peakMegabytes();
  for (auto _ : state) {
    pipe += secondsFor(runShellPipe);
    const double elapsed = secondsFor([&] { relay.run(); });
    relayed += elapsed;
    state.SetIterationTime(elapsed);
  }
  const double megabytes = kMegabytes * static_cast<double>(state.iterations());
  state.counters["cat_MB_per_s"] = megabytes / pipe;
  state.counters["relay_MB_per_s"] = megabytes / relayed;
  state.counters["ratio_to_cat"] = relayed / pipe;
  state.counters["memory_growth_MB"] = peakMegabytes() - peakBefore;
}
// The first round alone shows how memory grows: a peak never goes down again.
BENCHMARK(relayBesideTwoCats)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
