// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The real command, the real helper, the real wire.

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/ListeningSocket.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;
using Lines = std::vector<nlohmann::json>;

const std::string kProgram = std::string(VANTRELL_BINARY_DIR) + "/vantrellctl";
const std::string kHelper = std::string(VANTRELL_BINARY_DIR) + "/Vantrell-PrivilegedTool";

Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream input(text);
  for (std::string line; std::getline(input, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// A run of vantrellctl that the test talks to while it lasts.
class RunningCommand {
 public:
  explicit RunningCommand(const Words& words) {
    std::vector<char*> pointers{const_cast<char*>(kProgram.c_str())};
    for (const auto& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    child_ = fork();
    if (child_ == 0) {
      dup2(ends[1], STDOUT_FILENO);
      execv(kProgram.c_str(), pointers.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
  }
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;
  ~RunningCommand() {
    closeOutput();
    if (child_ > 0) {
      kill(child_, SIGKILL);
      waitpid(child_, nullptr, 0);
    }
  }

  void signal(int number) const { kill(child_, number); }
  /// The one process that the command has started.
  pid_t child() const {
    const auto process = std::to_string(child_);
    std::ifstream children("/proc/" + process + "/task/" + process + "/children");
    pid_t child = -1;
    children >> child;
    return child;
  }
  std::string readLine() const {
    std::string line;
    for (char c = 0; read(output_, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }
  std::string readRest() { return tests::detail::readAll(std::exchange(output_, -1)); }
  void closeOutput() {
    if (output_ >= 0) close(std::exchange(output_, -1));
  }
  int waitForStatus() {
    int status = 0;
    waitpid(std::exchange(child_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  pid_t child_ = -1;
  int output_ = -1;
};

class VantrellctlAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the helper serves as root only";
  }
  static Words spawning(const Words& words) { return Words{"--spawn", kHelper} + words; }
  static tests::ProgramResult run(const Words& words) { return tests::runProgram(kProgram, spawning(words)); }

  tests::TemporaryFolder folder_;
};

TEST_F(VantrellctlAsRoot, TellsTheVersion) {
  const auto result = run({"version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "2.5\n");
  EXPECT_EQ(result.error, "");
}

TEST_F(VantrellctlAsRoot, DoesNothingOnRequest) {
  for (const char* identifier : {"nop", "discard-auth"}) {
    const auto result = run({"run", identifier});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.error, "");
  }
  EXPECT_EQ(run({"--json", "run", "nop"}).output, "{\"result\":null}\n");
}

TEST_F(VantrellctlAsRoot, InspectsObjects) {
  EXPECT_EQ(run({"run", "inspect-fileobject", folder_.path()}).output, "ObjectExistence: 1 (folder)\n");
  const auto nothing = run({"run", "inspect-fileobject", folder_.path("missing")});
  EXPECT_EQ(nothing.status, 0);
  EXPECT_EQ(nothing.output, "ObjectExistence: 0 (nothing)\n");
  const auto json = linesOf(run({"--json", "run", "inspect-fileobject", folder_.makeFile("x")}).output);
  ASSERT_EQ(json.size(), 1u);
  EXPECT_EQ(json[0]["result"]["code"], 0);
  EXPECT_EQ(json[0]["result"]["userInfo"]["ObjectExistence"], 2);
}

TEST_F(VantrellctlAsRoot, DeletesATreeAndReportsItsProgress) {
  Words words{"--json", "run", "delete-fileobjects", "1", "0"};
  for (int i = 0; i < 10; ++i) {
    const auto name = "tree/folder " + std::to_string(i);
    words.push_back(folder_.makeFolder(name));
    for (int j = 0; j < 20; ++j) folder_.makeFile(name + "/file-" + std::to_string(j));
  }
  const auto result = run(words);
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("tree")));

  const auto lines = linesOf(result.output);
  ASSERT_EQ(lines.size(), 14u) << result.output;
  EXPECT_EQ(lines.front(), (nlohmann::json{{"ProgressFraction", 0.0}}));
  for (std::size_t i = 1; i <= 10; ++i) {
    EXPECT_DOUBLE_EQ(lines[i]["ProgressFraction"].get<double>(), static_cast<double>(i) / 10);
  }
  EXPECT_EQ(lines[11], (nlohmann::json{{"ProgressFraction", 1.0}}));
  EXPECT_EQ(lines[12], (nlohmann::json{{"FinalFeedbackMessage", true}}));
  EXPECT_TRUE(lines[13]["result"].is_null());
}

TEST_F(VantrellctlAsRoot, ShowsNoProgressWhereThereIsNoTerminal) {
  const auto result = run({"run", "delete-fileobjects", "1", "0", folder_.makeFile("x")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output + result.error, "");
}

TEST_F(VantrellctlAsRoot, TellsWhyAnOperationFailed) {
  const auto result = run({"run", "delete-fileobjects", "1"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "vantrellctl: Invalid argument\n(NSPOSIXErrorDomain, code 22)\n");

  const auto json = linesOf(run({"--json", "run", "delete-fileobjects", "1"}).output);
  ASSERT_FALSE(json.empty());
  EXPECT_EQ(json.back()["result"]["domain"], "NSPOSIXErrorDomain");
  EXPECT_EQ(json.back()["result"]["code"], 22);
  EXPECT_EQ(json.back()["result"]["description"], "Invalid argument");
}

TEST_F(VantrellctlAsRoot, EndsWith3WhenItsKeyIsNotTheHelpers) {
  const auto result = run({"--helper", kProgram, "run", "nop"});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.error, StartsWith("vantrellctl: Communication with the security component failed.\n"
                                       "An authorization or trust issue of type 1 was detected."));
  EXPECT_THAT(result.error, HasSubstr(".error.privileged-tool, code 2)"));
  const auto json = linesOf(run({"--helper", kProgram, "--json", "run", "nop"}).output);
  ASSERT_EQ(json.size(), 1u);
  EXPECT_EQ(json[0]["result"]["code"], 2);
}

TEST_F(VantrellctlAsRoot, EndsWith3WhenTheHelperIsNone) {
  EXPECT_EQ(tests::runProgram(kProgram, {"--spawn", "/bin/true", "run", "nop"}).status, 3);
}

/// Words of an operation that takes seconds and changes nothing: every path leads through a link to its own folder,
/// time and again, whose target is as long as a path may be and goes to and fro all the way.
Words longDeletion(const tests::TemporaryFolder& folder) {
  constexpr std::size_t kLongestTarget = 4090;
  constexpr int kMostLinks = 40;  // in one path
  constexpr int kPaths = 1000;
  folder.makeFolder("d");
  std::string target;
  while (target.size() + 5 < kLongestTarget) target += "d/../";
  if (!std::filesystem::is_symlink(folder.path("l"))) folder.makeLink("l", target);
  std::string name;
  for (int i = 0; i < kMostLinks; ++i) name += "l/";
  Words words{"run", "delete-fileobjects", "1", "0"};
  for (int i = 0; i < kPaths; ++i) words.push_back(folder.path(name) + "missing-" + std::to_string(i));
  return words;
}

TEST_F(VantrellctlAsRoot, ASignalCancelsTheOperationAndItsAnswerIsAwaited) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    RunningCommand command(spawning(Words{"--json"} + longDeletion(folder_)));
    EXPECT_EQ(command.readLine(), "{\"ProgressFraction\":0.0}");
    // The helper stands still until the cancellation must have been sent.
    const pid_t helper = command.child();
    ASSERT_GT(helper, 0);
    kill(helper, SIGSTOP);
    command.signal(signal);
    usleep(200'000);
    kill(helper, SIGCONT);
    const auto lines = linesOf(command.readRest());
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], (nlohmann::json{{"FinalFeedbackMessage", true}}));
    const auto& result = lines.back()["result"];
    ASSERT_FALSE(result.is_null()) << "done before it was cancelled";
    EXPECT_EQ(result["code"], 89);
    EXPECT_EQ(command.waitForStatus(), 1);
  }
}

TEST_F(VantrellctlAsRoot, StopsAnOperationWhoseOutputNobodyReads) {
  RunningCommand command(spawning(Words{"--json"} + longDeletion(folder_)));
  EXPECT_EQ(command.readLine(), "{\"ProgressFraction\":0.0}");
  command.closeOutput();
  EXPECT_EQ(command.waitForStatus(), 1);
}

TEST(Vantrellctl, ASecondSignalEndsItAtOnce) {
  tests::ListeningSocket silent;
  RunningCommand command({"--address", silent.address(), "--helper", kHelper, "run", "nop"});
  // Until the signals are watched the first one ends it, too; then there is nothing to show. One is enough to see.
  usleep(500'000);
  command.signal(SIGTERM);
  usleep(100'000);
  command.signal(SIGTERM);
  EXPECT_EQ(command.waitForStatus(), 1);
}

}  // namespace
}  // namespace vantrell
