// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What erasing blocks of a storage device costs: 1 GiB of a loop device whose contents are in memory (of a file in
// memory, where there is no loop device to be had), beside dd with blocks of 1 MiB and of 512 bytes. All three take
// turns.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/Quick.h"
#include "host/posix/PosixStorageDevices.h"
#include "system/SystemSettingOperations.h"
#include "tests/support/LoopDevice.h"

namespace vantrell {
namespace {

// Sixteen mebibytes in a quick run.
const std::uint64_t kSize = std::uint64_t{1} << (benchmarks::isQuick() ? 24 : 30);

double secondsFor(auto&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void runDd(const std::string& path, std::uint64_t blockSize) {
  std::vector<std::string> words{"/bin/dd",
                                 "if=/dev/zero",
                                 "of=" + path,
                                 "bs=" + std::to_string(blockSize),
                                 "count=" + std::to_string(kSize / blockSize),
                                 "conv=notrunc",
                                 "status=none"};
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = -1;
  int status = -1;
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) std::abort();
  if (waitpid(child, &status, 0) != child || status != 0) std::abort();
}

/// 1 GiB below /dev, in memory. All of it is written beforehand, so that nobody pays for the memory.
class Target {
 public:
  Target() {
    runDd(file_, std::uint64_t{1} << 20);
    try {
      loop_ = std::make_unique<tests::LoopDevice>(file_);
    } catch (const std::system_error& error) {
      std::cerr << "No loop device (" << error.what() << "): a file stands in for it.\n";
    }
  }
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;
  ~Target() {
    loop_.reset();
    unlink(file_.c_str());
  }
  std::string path() const { return loop_ ? loop_->path() : file_; }
  std::string name() const { return path().substr(5); }

 private:
  std::string file_ = "/dev/shm/vantrell-diskblocks-" + std::to_string(getpid());
  std::unique_ptr<tests::LoopDevice> loop_;
};

void eraseBesideDd(benchmark::State& state) {
  const Target target;
  host::PosixStorageDevices storage;
  double largeBlocks = 0;
  double smallBlocks = 0;
  double erase = 0;
  for (auto _ : state) {
    largeBlocks += secondsFor([&] { runDd(target.path(), std::uint64_t{1} << 20); });
    const double elapsed = secondsFor([&] {
      if (eraseDiskblocks({target.name(), kSize / 512}, storage)) std::abort();
    });
    erase += elapsed;
    smallBlocks += secondsFor([&] { runDd(target.path(), 512); });
    state.SetIterationTime(elapsed);
  }
  const auto mebibytes = static_cast<double>(state.iterations()) * 1024;
  state.counters["MiB_per_s"] = mebibytes / erase;
  state.counters["dd_1M_MiB_per_s"] = mebibytes / largeBlocks;
  state.counters["dd_512_MiB_per_s"] = mebibytes / smallBlocks;
  state.counters["ratio_to_dd_1M"] = erase / largeBlocks;
  state.counters["times_faster_than_dd_512"] = smallBlocks / erase;
}
BENCHMARK(eraseBesideDd)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace vantrell

BENCHMARK_MAIN();
