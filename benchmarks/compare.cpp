// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The helper's operations, from a client's request over the wire to the end, beside the tools that a person would use
// instead: in one run, taking turns, as ratios. Needs root.
//
//   benchmarks/compare [--rounds N] [--scale PERCENT] [--folder PATH]… [NAME…]
//
// NAME picks the comparisons whose names hold it. Each is done in every folder (default: the temporary folder and
// /dev/shm). An operation with feedback ends for its client with the final message; the pause that the service then
// makes before it answers (a quarter of a second, whatever was done) is shown apart and is not part of the ratio.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include "catalogue/FeedbackMessages.h"
#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/PrivilegedToolClient.h"
#include "host/Host.h"
#include "host/linux/NoLog.h"

namespace vantrell {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Settings {
  int rounds = 5;
  unsigned scale = 100;  // per cent of the full tree sizes
  std::vector<std::string> folders;
  std::vector<std::string> names;
};

// ---- trees

struct Tree {
  unsigned folders;
  unsigned files;  // in all
};

constexpr Tree kRemovalTree{1'000, 20'000};
constexpr Tree kWalkTree{10'000, 200'000};

void require(bool succeeded, const std::string& what) {
  if (!succeeded) throw std::system_error(errno, std::system_category(), what);
}

void makeFile(int folder, const std::string& name) {
  const int file = openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  require(file >= 0 && write(file, name.data(), name.size()) > 0, "a file of the tree");
  close(file);
}

/// Folders of folders, ten to a folder, with the files shared out evenly.
void makeTree(const std::string& top, Tree tree) {
  require(mkdir(top.c_str(), 0755) == 0, top);
  std::vector<std::string> folders{top};
  for (unsigned made = 1; made < tree.folders; ++made) {
    folders.push_back(fmt::format("{}/folder-{}", folders[(made - 1) / 10], made));
    require(mkdir(folders.back().c_str(), 0755) == 0, folders.back());
  }
  const unsigned filesEach = tree.files / tree.folders;
  for (const auto& path : folders) {
    const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(folder >= 0, path);
    for (unsigned i = 0; i < filesEach; ++i) makeFile(folder, fmt::format("file-{}.{}", i, i % 10 ? "dat" : "txt"));
    close(folder);
  }
}

// ---- the tools' side

using CommandLine = std::vector<std::string>;

/// Output goes nowhere. The exit status counts for nothing: some of the tools complain of objects without flags.
void run(const CommandLine& command) {
  std::vector<char*> arguments;
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = -1;
  const int failed = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed) throw std::system_error(failed, std::system_category(), command.front());
  int status = 0;
  require(waitpid(child, &status, 0) == child, command.front());
}

// ---- what is compared

constexpr double kNoLimit = 0;

struct Comparison {
  std::string name;
  Tree tree;
  bool removesTree;  // it is made anew for each side of each round
  std::uint64_t code;
  std::function<Array(const std::string& top)> arguments;
  std::function<std::vector<CommandLine>(const std::string& top)> tools;
  double must;
  double goal;
  /// Untimed, before each side of each round.
  std::function<void(const std::string& top)> prepare = [](const std::string&) {};
};

constexpr std::uint64_t kDeleteFileobjects = 3;
constexpr std::uint64_t kModifyProtection = 7;
constexpr std::uint64_t kSearchAgedfiles = 10;
constexpr std::uint64_t kSearchPatterns = 12;
constexpr std::uint64_t kSearchFileorphans = 13;
constexpr std::uint64_t kInspectStoragesize = 14;
constexpr std::uint64_t kPropPermissions = 21;

// ACL, others, group and owner bits, group, owner.
constexpr unsigned kPropagateAll = 0x3f;

void clearFlags(const std::string& top) {
  run({"chattr", "-R", "-f", "-i", top});
}
void setFlags(const std::string& top) {
  run({"chattr", "-R", "-f", "+i", top});
}
void makePlain(const std::string& top) {
  run({"setfacl", "-R", "-b", top});
  run({"chown", "-R", "0:0", top});
  run({"chmod", "-R", "u=rwX,go=rX", top});
  // What is to be propagated stands on the top alone.
  run({"setfacl", "-m", "u:1234:rwx", "-m", "d:u:1234:rwx", top});
  run({"chown", "33:33", top});
}
std::vector<CommandLine> propagationTools(const std::string& top) {
  return {{"chown", "-R", "33:33", top},
          {"chmod", "-R", "u=rwX,go=rX", top},
          {"setfacl", "-R", "-m", "u:1234:rwx,d:u:1234:rwx", top}};
}

std::vector<Comparison> allComparisons() {
  const auto removal = [](const std::string& top) { return Array{"1", "0", top}; };
  const auto propagation = [](const std::string& top) { return Array{top, 210'000U, kPropagateAll}; };
  return {
      {"delete-fileobjects, beside rm -rf", kRemovalTree, true, kDeleteFileobjects, removal,
       [](const auto& top) {
         return std::vector<CommandLine>{{"rm", "-rf", top}};
       },
       1.1, 0.8},
      {"delete-fileobjects, beside chattr -R -i; rm -rf", kRemovalTree, true, kDeleteFileobjects, removal,
       [](const auto& top) {
         return std::vector<CommandLine>{{"chattr", "-R", "-f", "-i", top}, {"rm", "-rf", top}};
       },
       0.55, 0.4},
      {"modify-protection on, beside chattr -R +i", kRemovalTree, false, kModifyProtection,
       [](const auto& top) {
         return Array{top, true, true, true};
       },
       [](const auto& top) {
         return std::vector<CommandLine>{{"chattr", "-R", "-f", "+i", top}};
       },
       0.3, 0.3, clearFlags},
      {"modify-protection off, beside chattr -R -i", kRemovalTree, false, kModifyProtection,
       [](const auto& top) {
         return Array{top, false, true, true};
       },
       [](const auto& top) {
         return std::vector<CommandLine>{{"chattr", "-R", "-f", "-i", top}};
       },
       0.3, 0.3, setFlags},
      {"search-agedfiles, no hits, beside find -mtime", kWalkTree, false, kSearchAgedfiles,
       [](const auto& top) {
         return Array{top, 3650U, true};
       },
       [](const auto& top) {
         return std::vector<CommandLine>{{"find", top, "-xdev", "-mtime", "+3650"}};
       },
       0.85, 0.6},
      {"search-agedfiles, all hits, beside find -mtime -printf", kWalkTree, false, kSearchAgedfiles,
       [](const auto& top) {
         return Array{top, 0U, true};
       },
       [](const auto& top) {
         return std::vector<CommandLine>{{"find", top, "-xdev", "-mtime", "-3650", "-printf", "%p %y %s %T@ %m\n"}};
       },
       kNoLimit, kNoLimit},
      {"inspect-storagesize, beside du -s --apparent-size", kWalkTree, false, kInspectStoragesize,
       [](const auto& top) { return Array{top}; },
       [](const auto& top) {
         return std::vector<CommandLine>{{"du", "-s", "--apparent-size", top}};
       },
       0.9, 0.6},
      {"search-fileorphans, beside find -nouser", kWalkTree, false, kSearchFileorphans,
       [](const auto& top) {
         return Array{top, true};
       },
       [](const auto& top) {
         return std::vector<CommandLine>{{"find", top, "-xdev", "-nouser"}};
       },
       0.3, 0.2},
      {"search-patterns, beside find -name", kWalkTree, false, kSearchPatterns,
       [](const auto& top) {
         return Array{top, "1", "1", "file-nothing"};
       },
       [](const auto& top) {
         return std::vector<CommandLine>{{"find", top, "-xdev", "-name", "file-nothing*"}};
       },
       1.0, 0.7},
      {"prop-permissions, beside chown, chmod, setfacl -R", kWalkTree, false, kPropPermissions, propagation,
       propagationTools, 0.45, 0.3, makePlain},
      {"prop-permissions, all as asked, beside chown, chmod, setfacl -R", kWalkTree, false, kPropPermissions,
       propagation, propagationTools, 0.15, 0.15},
  };
}

// ---- the helper's side

class Helper {
 public:
  Helper() : host_(host::makeHost()), operations_(log_) {
    const std::string helper = VANTRELL_BINARY_DIR "/Vantrell-PrivilegedTool";
    auto client = PrivilegedToolClient::connect({HelperLocation::Way::Spawn, helper, helper}, operations_, host_);
    if (!client) throw std::runtime_error("the helper can't be started");
    client_ = std::move(*client);
    if (client_->registerClient()) throw std::runtime_error("the helper takes no registration");
  }

  struct Run {
    double seconds;  // to the final message, or to the answer where there is no feedback
    double toAnswer;
    std::uint64_t hits;
    ErrorOrNil error;
  };

  Run perform(std::uint64_t code, const Array& arguments) {
    const auto operation = operations_.operationWithCode(code);
    std::uint64_t hits = 0;
    std::optional<double> final;
    const auto start = Clock::now();
    const PrivilegedToolClient::FeedbackHandler onFeedback = [&](const Dictionary& message) {
      if (const auto* records = message.find("FileObjectInfo")) hits += records->asArray()->size();
      if (message.contains(feedback_key::kFinalFeedbackMessage)) final = secondsSince(start);
    };
    const bool hasFeedback = operation && operation->isSupportingProgressFeedback();
    auto answer = client_->perform(code, arguments, hasFeedback ? onFeedback : nullptr);
    const double toAnswer = secondsSince(start);
    if (!answer) throw std::runtime_error("no answer from the helper");
    return {final.value_or(toAnswer), toAnswer, hits, std::move(*answer)};
  }

 private:
  host::NoLog log_;
  host::Host host_;
  QELPrivilegedToolOperationSetLM4 operations_;
  std::unique_ptr<PrivilegedToolClient> client_;
};

// ---- taking turns

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

class Round {
 public:
  Round(const Comparison& comparison, const std::string& folder, unsigned scale)
      : comparison_(comparison), top_(folder + "/vantrell-compare") {
    tree_.folders = std::max(1U, comparison.tree.folders * scale / 100);
    tree_.files = std::max(tree_.folders, comparison.tree.files * scale / 100);
    discard();
    makeTree(top_, tree_);
  }
  ~Round() { discard(); }
  Round(const Round&) = delete;
  Round& operator=(const Round&) = delete;

  Helper::Run helperSide(Helper& helper) {
    renew();
    return helper.perform(comparison_.code, comparison_.arguments(top_));
  }
  double toolsSide() {
    renew();
    const auto start = Clock::now();
    for (const auto& command : comparison_.tools(top_)) run(command);
    return secondsSince(start);
  }

 private:
  void renew() {
    if (!std::filesystem::exists(top_)) makeTree(top_, tree_);
    comparison_.prepare(top_);
    sync();
  }
  void discard() {
    if (!std::filesystem::exists(top_)) return;
    clearFlags(top_);
    run({"rm", "-rf", top_});
  }

  const Comparison& comparison_;
  std::string top_;
  Tree tree_{};
};

bool isResult(const ErrorOrNil& error) {
  return !error || error->code() == 0;
}

struct Outcome {
  std::uint64_t code;
  double seconds;  // the helper's median
  std::uint64_t hits;
};

const char* verdictOn(double figure, double must, double goal) {
  return figure <= goal ? "goal" : figure <= must ? "met" : "MISSED";
}

/// What a hit costs above the same walk without any.
void printDelivery(const Outcome& walk, const Outcome& delivery) {
  constexpr double kMust = 1.5;
  const double microseconds = (delivery.seconds - walk.seconds) * 1e6 / static_cast<double>(delivery.hits);
  fmt::print("{:<66} {:>29} {:7.2f} {:6.2f} {:>6}  {}\n", "microseconds to deliver a hit", "", microseconds, kMust, "",
             verdictOn(microseconds, kMust, kMust));
}

/// Nothing where the helper did not do what was asked.
std::optional<Outcome> compare(Helper& helper, const Comparison& comparison, const std::string& folder,
                               const Settings& settings) {
  Round round(comparison, folder, settings.scale);
  std::vector<double> ours, theirs, ratios, answers;
  std::uint64_t hits = 0;
  for (int i = 0; i <= settings.rounds; ++i) {
    const auto own = round.helperSide(helper);
    const double other = round.toolsSide();
    if (!isResult(own.error)) {
      fmt::print("{:<66} FAILED: {} {}\n", comparison.name, own.error->domain(), own.error->code());
      return std::nullopt;
    }
    if (i == 0 && settings.rounds > 1) continue;  // caches fill
    ours.push_back(own.seconds);
    answers.push_back(own.toAnswer);
    theirs.push_back(other);
    ratios.push_back(own.seconds / other);
    hits = own.hits;
  }
  const double ratio = median(ratios);
  fmt::print("{:<66} {:9.1f} {:9.1f} {:9.1f} {:7.2f}", comparison.name, median(ours) * 1e3, median(answers) * 1e3,
             median(theirs) * 1e3, ratio);
  if (comparison.must != kNoLimit) {
    fmt::print(" {:6.2f} {:6.2f}  {}", comparison.must, comparison.goal,
               verdictOn(ratio, comparison.must, comparison.goal));
  }
  if (hits) fmt::print("  ({} hits)", hits);
  fmt::print("\n");
  std::fflush(stdout);
  return Outcome{comparison.code, median(ours), hits};
}

bool isWanted(const Comparison& comparison, const Settings& settings) {
  return settings.names.empty() || std::ranges::any_of(settings.names, [&](const auto& name) {
           return comparison.name.find(name) != std::string::npos;
         });
}

Settings settingsFrom(int count, char** arguments) {
  Settings settings;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    const bool hasValue = i + 1 < count;
    if (argument == "--rounds" && hasValue) {
      settings.rounds = std::max(1, std::atoi(arguments[++i]));
    } else if (argument == "--scale" && hasValue) {
      settings.scale = static_cast<unsigned>(std::max(1, std::atoi(arguments[++i])));
    } else if (argument == "--folder" && hasValue) {
      settings.folders.emplace_back(arguments[++i]);
    } else {
      settings.names.emplace_back(argument);
    }
  }
  if (settings.folders.empty()) settings.folders = {std::filesystem::temp_directory_path(), "/dev/shm"};
  return settings;
}

int compareAll(const Settings& settings) {
  Helper helper;
  bool complete = true;
  for (const auto& folder : settings.folders) {
    struct statfs fileSystem {};
    require(statfs(folder.c_str(), &fileSystem) == 0, folder);
    fmt::print("\n{} (file system type {:#x}), medians of {} rounds\n", folder, fileSystem.f_type, settings.rounds);
    fmt::print("{:<66} {:>9} {:>9} {:>9} {:>7} {:>6} {:>6}\n", "", "helper ms", "answer ms", "tools ms", "ratio",
               "must", "goal");
    std::optional<Outcome> previous;
    for (const auto& comparison : allComparisons()) {
      if (!isWanted(comparison, settings)) continue;
      const auto outcome = compare(helper, comparison, folder, settings);
      complete = complete && outcome;
      if (outcome && previous && outcome->code == previous->code && outcome->hits != 0 && previous->hits == 0) {
        printDelivery(*previous, *outcome);
      }
      previous = outcome;
    }
  }
  return complete ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace vantrell

int main(int count, char** arguments) try {
  if (geteuid() != 0) {
    std::fputs("the helper serves as root only\n", stderr);
    return EXIT_FAILURE;
  }
  return vantrell::compareAll(vantrell::settingsFrom(count, arguments));
} catch (const std::exception& exception) {
  std::fprintf(stderr, "%s\n", exception.what());
  return EXIT_FAILURE;
}
