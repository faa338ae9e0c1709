// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Propagating owner, group, mode and list through a tree, beside the tools for each. Needs root. Trees lie in the
// temporary folder (TMPDIR) and, where there is one, in /dev/shm. The argument is the number of folders, each with 20
// files.

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "benchmarks/Quick.h"
#include "foundation/FileManager.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/NoLog.h"
#include "treewalk/PermissionOperations.h"

namespace vantrell {
namespace {

constexpr int kFilesInAFolder = 20;
constexpr unsigned kAll = 0x3f;

void run(const std::string& command) {
  if (std::system((command + " >/dev/null 2>&1").c_str()) != 0) throw std::runtime_error(command);
}

/// Folders of folders, ten to a folder.
class Tree {
 public:
  Tree(const std::string& place, std::int64_t folders) : top_(place + "/vantrell-propagation") {
    std::filesystem::remove_all(top_);
    std::vector<std::string> made{top_};
    for (std::int64_t i = 0; i < folders; ++i) {
      if (i > 0) made.push_back(made[static_cast<std::size_t>((i - 1) / 10)] + "/folder-" + std::to_string(i));
      if (mkdir(made.back().c_str(), 0755) != 0) throw std::runtime_error(made.back());
      for (int file = 0; file < kFilesInAFolder; ++file)
        close(open((made.back() + "/file-" + std::to_string(file)).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    }
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() {
    std::error_code ignored;
    std::filesystem::remove_all(top_, ignored);
  }

  /// What is to be propagated stands on the top alone.
  void makePlain() const {
    run("setfacl -R -b " + top_ + " && chown -R 0:0 " + top_ + " && chmod -R u=rwX,go=rX " + top_);
    run("setfacl -m u:1234:rwx -m d:u:1234:rwx " + top_ + " && chown 33:33 " + top_);
    sync();
  }
  const std::string& top() const { return top_; }

 private:
  std::string top_;
};

void propagate(const Tree& tree, unsigned options) {
  host::LinuxFileSystem fileSystem;
  FileManager fileManager(fileSystem);
  host::NoLog noLog;
  PermissionOperations operations(fileSystem, fileManager, Log(noLog));
  if (operations.propPermissions({tree.top(), 1U, options}, nullptr, nullptr)) throw std::runtime_error("propagation");
}

void useTools(const Tree& tree) {
  run("chown -R 33:33 " + tree.top());
  run("chmod -R u=rwX,go=rX " + tree.top());
  run("setfacl -R -m u:1234:rwx,d:u:1234:rwx " + tree.top());
}

enum class State { Plain, AsAsked };

template <class Work>
void measure(benchmark::State& state, const std::string& place, State begin, Work work) {
  const Tree tree(place, state.range(0));
  tree.makePlain();
  if (begin == State::AsAsked) work(tree);
  for (auto _ : state) {
    if (begin == State::Plain) {
      state.PauseTiming();
      tree.makePlain();
      state.ResumeTiming();
    }
    work(tree);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * (kFilesInAFolder + 1));
}

void add(const std::string& name, const std::string& place, State begin, void (*work)(const Tree&)) {
  benchmark::RegisterBenchmark((name + " " + place).c_str(),
                               [=](benchmark::State& state) { measure(state, place, begin, work); })
      ->Arg(benchmarks::sized(1'000))
      ->Arg(benchmarks::sized(10'000))
      ->Iterations(benchmarks::sized(3))
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

void addAll(const std::string& place) {
  const auto copy = [](const Tree& tree) { propagate(tree, kAll); };
  const auto reinherit = [](const Tree& tree) { propagate(tree, 0x80 | (kAll & ~1U)); };
  add("changes/propagation", place, State::Plain, copy);
  add("changes/reinheritance", place, State::Plain, reinherit);
  add("changes/tools", place, State::Plain, useTools);
  add("as asked/propagation", place, State::AsAsked, copy);
  add("as asked/tools", place, State::AsAsked, useTools);
}

}  // namespace
}  // namespace vantrell

int main(int count, char** arguments) {
  if (geteuid() != 0) return EXIT_SUCCESS;  // nothing to be measured
  vantrell::addAll(std::filesystem::temp_directory_path());
  if (std::filesystem::is_directory("/dev/shm")) vantrell::addAll("/dev/shm");
  benchmark::Initialize(&count, arguments);
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
