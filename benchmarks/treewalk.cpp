// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The walks and searches in this process, beside find(1) and du(1) as a person would start them, on a tree of 200,000
// files in 10,000 folders with a warm cache. The folder that the tree is made in: TMPDIR, or /tmp.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/Quick.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxIdentities.h"
#include "host/linux/NoLog.h"
#include "treewalk/QELDirectoryEnumerator.h"
#include "treewalk/ReadAheadEnumerator.h"
#include "treewalk/SearchOperations.h"

namespace {

using namespace vantrell;

constexpr unsigned kFolders = 10'000;
constexpr unsigned kFilesPerFolder = 20;

void require(bool succeeded, const std::string& what) {
  if (!succeeded) throw std::runtime_error(what);
}

/// Folders of folders, ten to a folder; removed at the end.
class Tree {
 public:
  Tree() {
    std::string top = (std::filesystem::temp_directory_path() / "vantrell-treewalk-XXXXXX").string();
    require(mkdtemp(top.data()) != nullptr, top);
    std::vector<std::string> folders{top};
    top_ = top;
    for (unsigned made = 1; made < benchmarks::sized(kFolders); ++made) {
      folders.push_back(fmt::format("{}/folder-{}", folders[(made - 1) / 10], made));
      require(mkdir(folders.back().c_str(), 0755) == 0, folders.back());
    }
    for (const auto& folder : folders) {
      for (unsigned i = 0; i < kFilesPerFolder; ++i) {
        const auto path = fmt::format("{}/file-{}.{}", folder, i, i % 10 ? "dat" : "txt");
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        require(file >= 0, path);
        close(file);
      }
    }
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  ~Tree() {
    std::error_code ignored;
    std::filesystem::remove_all(top_, ignored);
  }
  const std::string& top() const { return top_; }

 private:
  std::string top_;
};

class CountingFeedback final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override {
    if (const auto* records = message.find("FileObjectInfo")) hits += records->asArray()->size();
  }
  std::uint64_t hits = 0;
};

/// What the searches work with, and on.
struct Environment {
  host::LinuxFileSystem fileSystem;
  FileManager fileManager{fileSystem};
  host::LinuxIdentities identities;
  host::NoLog noLog;
  Log log{noLog};
  SearchOperations operations{fileSystem, fileManager, identities, log};
  Tree tree;

  std::unique_ptr<QELDirectoryEnumerator> walk() {
    return QELDirectoryEnumerator::enumeratorAtPath(fileSystem, log, tree.top(), true);
  }
};

template <class Walk>
void readEveryStatus(Walk& walk) {
  while (const auto* object = walk.next()) benchmark::DoNotOptimize(object->status());
}

bool notCancelled() {
  return false;
}

void run(benchmark::State& state, const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  for (auto _ : state) {
    pid_t child = -1;
    require(posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0, command.front());
    int status = 0;
    require(waitpid(child, &status, 0) == child, command.front());
  }
  posix_spawn_file_actions_destroy(&actions);
}

template <class Function>
void add(const char* name, Function function) {
  benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
}

void addWalks(Environment& environment) {
  add("walk, names", [&](benchmark::State& state) {
    for (auto _ : state) {
      const auto walk = environment.walk();
      while (const auto* object = walk->next()) benchmark::DoNotOptimize(object->name());
    }
  });
  add("walk, status of each", [&](benchmark::State& state) {
    for (auto _ : state) readEveryStatus(*environment.walk());
  });
  add("walk, status of each, read ahead", [&](benchmark::State& state) {
    for (auto _ : state) {
      ReadAheadEnumerator walk(environment.walk(), environment.log);
      readEveryStatus(walk);
    }
  });
}

void addSearches(Environment& environment) {
  const auto search = [&](const char* name, auto operation) {
    add(name, [&environment, operation](benchmark::State& state) {
      CountingFeedback feedback;
      for (auto _ : state) {
        feedback.hits = 0;
        const auto error = operation(environment.operations, environment.tree.top(), &feedback);
        if (error && error->code() != 0) state.SkipWithError("the search failed");
      }
      state.counters["hits"] = static_cast<double>(feedback.hits);
    });
  };
  search("search-agedfiles, no hits", [](auto& operations, const auto& top, auto* feedback) {
    return operations.searchAgedfiles({top, 3650U, true}, feedback, notCancelled);
  });
  search("search-agedfiles, all hits", [](auto& operations, const auto& top, auto* feedback) {
    return operations.searchAgedfiles({top, 0U, true}, feedback, notCancelled);
  });
  search("search-patterns, no hits", [](auto& operations, const auto& top, auto* feedback) {
    return operations.searchPatterns({top, "1", "1", "file-nothing"}, feedback);
  });
  search("search-patterns, all files hit", [](auto& operations, const auto& top, auto* feedback) {
    return operations.searchPatterns({top, "1", "1", "file-"}, feedback);
  });
  search("search-fileorphans", [](auto& operations, const auto& top, auto* feedback) {
    return operations.searchFileorphans({top, true}, feedback, notCancelled);
  });
  search("inspect-storagesize",
         [](auto& operations, const auto& top, auto*) { return operations.inspectStoragesize({top}, notCancelled); });
}

void addTools(const std::string& top) {
  const auto tool = [](const char* name, std::vector<std::string> command) {
    add(name, [command = std::move(command)](benchmark::State& state) { run(state, command); });
  };
  tool("find -mtime", {"find", top, "-xdev", "-mtime", "+3650"});
  tool("find -mtime -printf", {"find", top, "-xdev", "-mtime", "-3650", "-printf", "%p %y %s %T@ %m\n"});
  tool("find -name", {"find", top, "-xdev", "-name", "file-nothing*"});
  tool("find -nouser", {"find", top, "-xdev", "-nouser"});
  tool("du -s --apparent-size", {"du", "-s", "--apparent-size", top});
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
  Environment environment;
  addWalks(environment);
  addSearches(environment);
  addTools(environment.tree.top());
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
