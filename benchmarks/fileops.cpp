// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Recursive removal and protection of a tree of 20,000 files in 1,000 folders, beside the tools a person would use, on
// the disk and in memory. Tool and operation take turns, and the best rounds are compared.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/Quick.h"
#include "fileops/AdvancedOpsAdditions.h"
#include "host/SystemLog.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxProcessTable.h"

namespace {

using namespace vantrell;

constexpr int kOuterFolders = 10;
constexpr int kInnerFolders = 99;  // in each of them: 1,000 folders with the top's ten
constexpr int kFilesInAFolder = 20;

class SilentLog final : public host::SystemLog {
 public:
  bool isRecording() const noexcept override { return false; }
  void write(std::string_view, std::string_view, host::LogLevel, std::string_view) noexcept override {}
};

/// A place for trees, gone at the end.
class Workplace {
 public:
  explicit Workplace(const std::string& parent) : path_(parent + "/vantrell-fileops-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder in " + parent);
  }
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  ~Workplace() {
    const auto command = "chattr -R -f -i '" + path_ + "' 2>/dev/null; rm -rf '" + path_ + "'";
    if (std::system(command.c_str()) != 0) std::abort();
  }

  std::string tree() const { return path_ + "/tree"; }

  void makeTree() const {
    makeFolder(tree());
    for (int outer = 0; outer < kOuterFolders; ++outer) {
      const auto folder = tree() + "/" + std::to_string(outer);
      makeFolder(folder);
      makeFiles(folder);
      for (int inner = 0; inner < benchmarks::sized(kInnerFolders); ++inner) {
        makeFolder(folder + "/folder " + std::to_string(inner));
        makeFiles(folder + "/folder " + std::to_string(inner));
      }
    }
    sync();
  }

 private:
  static void makeFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0755) != 0) throw std::runtime_error("no folder at " + path);
  }
  static void makeFiles(const std::string& folder) {
    for (int index = 0; index < kFilesInAFolder; ++index) {
      const auto path = folder + "/file " + std::to_string(index);
      const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
      if (file < 0 || write(file, "content", 7) != 7) throw std::runtime_error("no file at " + path);
      close(file);
    }
  }
  std::string path_;
};

void run(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  int status = 0;
  if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
      waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error(words[0] + " failed");
}

template <class Body>
double secondsOf(Body body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The operations as the service puts them together.
class Operations {
 public:
  void remove(const std::string& path) { require(ops_.enforceRecursiveRemovalOfFileSystemObjectAtPath(path)); }
  void protect(const std::string& path, bool value) { require(ops_.setUserImmutableAtPath(path, value, true, false)); }

 private:
  static void require(const ErrorOrNil& error) {
    if (error) throw std::runtime_error("operation failed with " + std::to_string(error->code()));
  }
  host::LinuxFileSystem fileSystem_;
  host::LinuxProcessTable processTable_;
  FileManager fileManager_{fileSystem_};
  NSProcessInfoQELAdditions processInfo_{fileSystem_, processTable_, "/nonexistent"};
  SilentLog log_;
  AdvancedOpsAdditions ops_{fileManager_, fileSystem_, processInfo_, Log(log_), 0};
};

struct Best {
  double seconds = std::numeric_limits<double>::infinity();
  void take(double time) { seconds = std::min(seconds, time); }
};

void removal(benchmark::State& state, const std::string& parent) {
  const Workplace place(parent);
  Operations operations;
  Best tool, pair, own;
  for (auto _ : state) {
    place.makeTree();
    tool.take(secondsOf([&] { run({"rm", "-rf", place.tree()}); }));
    place.makeTree();
    const auto time = secondsOf([&] { operations.remove(place.tree()); });
    own.take(time);
    place.makeTree();
    pair.take(secondsOf([&] {
      run({"chattr", "-R", "-f", "-i", place.tree()});
      run({"rm", "-rf", place.tree()});
    }));
    state.SetIterationTime(time);
  }
  state.counters["ratio_to_rm"] = own.seconds / tool.seconds;
  state.counters["ratio_to_chattr_and_rm"] = own.seconds / pair.seconds;
}

void protection(benchmark::State& state, const std::string& parent) {
  const Workplace place(parent);
  Operations operations;
  Best toolSets, toolClears, sets, clears, toolIdle, idle;
  place.makeTree();
  for (auto _ : state) {
    toolSets.take(secondsOf([&] { run({"chattr", "-R", "+i", place.tree()}); }));
    toolClears.take(secondsOf([&] { run({"chattr", "-R", "-i", place.tree()}); }));
    toolIdle.take(secondsOf([&] { run({"chattr", "-R", "-i", place.tree()}); }));
    const auto time = secondsOf([&] { operations.protect(place.tree(), true); });
    sets.take(time);
    clears.take(secondsOf([&] { operations.protect(place.tree(), false); }));
    idle.take(secondsOf([&] { operations.protect(place.tree(), false); }));
    state.SetIterationTime(time);
  }
  state.counters["ratio_setting"] = sets.seconds / toolSets.seconds;
  state.counters["ratio_clearing"] = clears.seconds / toolClears.seconds;
  state.counters["ratio_unchanged"] = idle.seconds / toolIdle.seconds;
}

void onDisk(benchmark::State& state, void (*body)(benchmark::State&, const std::string&)) {
  body(state, std::filesystem::temp_directory_path().string());
}
void inMemory(benchmark::State& state, void (*body)(benchmark::State&, const std::string&)) {
  body(state, "/dev/shm");
}
void skipWithoutRoot(benchmark::State& state) {
  if (geteuid() != 0) state.SkipWithError("only root may set the immutable flag");
}

constexpr int kRounds = 5;

#define VANTRELL_MEASURE(name, place, body)          \
  void name(benchmark::State& state) {               \
    skipWithoutRoot(state);                          \
    if (!state.error_occurred()) place(state, body); \
  }                                                  \
  BENCHMARK(name)->Iterations(benchmarks::sized(kRounds))->UseManualTime()->Unit(benchmark::kMillisecond)

VANTRELL_MEASURE(removalOnDisk, onDisk, removal);
VANTRELL_MEASURE(removalInMemory, inMemory, removal);
VANTRELL_MEASURE(protectionOnDisk, onDisk, protection);
VANTRELL_MEASURE(protectionInMemory, inMemory, protection);

}  // namespace

BENCHMARK_MAIN();
