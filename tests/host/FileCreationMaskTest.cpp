// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/posix/PosixChildProcesses.h"
#include "tests/support/ChildScripts.h"

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;

mode_t currentMask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

class FileCreationMask : public testing::Test {
 protected:
  FileCreationMask() : before_(umask(027)) {}
  ~FileCreationMask() override { umask(before_); }

  std::string outputOf(const std::string& line) {
    auto child = children_.launch(kShell, script(line), children_.makePipes().value()).value();
    std::string output;
    child->relayOutputUntilExit([&](host::ChildStream, DataView bytes) { output += textOf(bytes); });
    return output;
  }

  host::PosixChildProcesses children_;

 private:
  mode_t before_;
};

TEST_F(FileCreationMask, IsOpenWhileTheFirstOfThemLivesAndRestoredByTheLast) {
  auto first = children_.openFileCreationMask();
  EXPECT_EQ(currentMask(), 0U);
  auto second = children_.openFileCreationMask();
  first.reset();
  EXPECT_EQ(currentMask(), 0U);
  first = children_.openFileCreationMask();
  second.reset();
  EXPECT_EQ(currentMask(), 0U);
  first.reset();
  EXPECT_EQ(currentMask(), 027U);
}

TEST_F(FileCreationMask, TheNextTimeItIsWhatItIsThen) {
  children_.openFileCreationMask().reset();
  umask(077);
  children_.openFileCreationMask().reset();
  EXPECT_EQ(currentMask(), 077U);
}

TEST_F(FileCreationMask, ChildrenHaveTheFormerOneAllTheSame) {
  EXPECT_EQ(outputOf("umask"), "0027\n");
  {
    const auto open = children_.openFileCreationMask();
    EXPECT_EQ(outputOf("umask"), "0027\n");
    EXPECT_EQ(currentMask(), 0U);
    EXPECT_EQ(outputOf("umask; pwd"), "0027\n" + outputOf("pwd"));
  }
  EXPECT_EQ(outputOf("umask"), "0027\n");
}

TEST_F(FileCreationMask, ALaunchThatFailsUnderAnOpenMaskTellsWhy) {
  const auto open = children_.openFileCreationMask();
  const auto child = children_.launch("/no/such/program", {}, children_.makePipes().value());
  ASSERT_FALSE(child);
  EXPECT_EQ(child.error(), Error::posix(2));
}

using FileCreationMaskConcurrent = FileCreationMask;

TEST_F(FileCreationMaskConcurrent, NoChildEverStartsWithTheOpenOne) {
  std::atomic<bool> stopped = false;
  std::thread opener([&] {
    while (!stopped) {
      const auto open = children_.openFileCreationMask();
      std::this_thread::sleep_for(200us);
    }
  });
  std::vector<std::thread> launchers;
  for (int thread = 0; thread < 3; ++thread) {
    launchers.emplace_back([&] {
      for (int round = 0; round < 40; ++round) {
        children_.setSearchPath("/usr/bin:/bin");
        EXPECT_EQ(outputOf("umask"), "0027\n");
      }
    });
  }
  for (auto& launcher : launchers) launcher.join();
  stopped = true;
  opener.join();
  EXPECT_EQ(currentMask(), 027U);
}

}  // namespace
}  // namespace vantrell::tests
