// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Removal of trees that others change at the same time.

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using tests::TemporaryFolder;

class TreeRemovalConcurrent : public testing::Test {
 protected:
  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  TemporaryFolder folder_;
};

TEST_F(TreeRemovalConcurrent, AttemptsAtTheSameTreeLeaveNothing) {
  for (int round = 0; round < 10; ++round) {
    const auto top = folder_.makeFolder("top");
    for (int index = 0; index < 20; ++index) {
      folder_.makeFolder("top/" + std::to_string(index));
      for (int file = 0; file < 20; ++file)
        folder_.makeFile("top/" + std::to_string(index) + "/" + std::to_string(file), "");
    }
    std::atomic<int> successes = 0;
    {
      std::vector<std::jthread> threads;
      for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
          const auto error = fileManager_.removeItemAtPath(top);
          if (!error)
            ++successes;
          else
            EXPECT_EQ(error->code(), 4);  // another one was faster
        });
    }
    EXPECT_GE(successes, 1);
    EXPECT_FALSE(std::filesystem::exists(top));
  }
}

TEST_F(TreeRemovalConcurrent, ATreeThatGrowsIsRemovedOrReportedAsNotEmpty) {
  for (int round = 0; round < 20; ++round) {
    const auto top = folder_.makeFolder("top");
    folder_.makeFolder("top/inner");
    {
      std::jthread writer([&](const std::stop_token& stop) {
        for (int index = 0; !stop.stop_requested(); ++index) {
          const auto path = folder_.path("top/inner/" + std::to_string(index % 100));
          const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
          if (file >= 0) close(file);
          mkdir((path + "d").c_str(), 0700);
        }
      });
      if (const auto error = fileManager_.removeItemAtPath(top)) {
        EXPECT_EQ(error->code(), 513);
        EXPECT_EQ(*error->userInfo().find(NSUnderlyingErrorKey), Value(Error::posix(posix::kNotEmpty)));
      } else {
        EXPECT_FALSE(std::filesystem::exists(top));
      }
    }
    EXPECT_FALSE(std::filesystem::exists(top) && fileManager_.removeItemAtPath(top));
  }
}

// Whoever owns a folder inside may exchange it at any moment for a link to somewhere else.
TEST_F(TreeRemovalConcurrent, AFolderSwappedForALinkLeadsNowhereElse) {
  const TemporaryFolder outside;
  for (int index = 0; index < 20; ++index) outside.makeFile(std::to_string(index));
  outside.makeFolder("inner");
  outside.makeFile("inner/file");
  const auto top = folder_.path("top");
  const auto victim = folder_.path("top/victim");
  const auto link = folder_.path("link");
  for (int round = 0; round < 100; ++round) {
    folder_.makeFolder("top/victim/inner");
    for (int index = 0; index < 20; ++index) folder_.makeFile("top/victim/" + std::to_string(index), "");
    std::filesystem::create_symlink(outside.path(), link);
    {
      std::jthread swapper([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) renameat2(AT_FDCWD, victim.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE);
      });
      (void)fileManager_.removeItemAtPath(top);
    }
    std::filesystem::remove_all(top);
    std::filesystem::remove_all(link);
    for (int index = 0; index < 20; ++index)
      ASSERT_TRUE(std::filesystem::exists(outside.path(std::to_string(index)))) << "round " << round;
    ASSERT_TRUE(std::filesystem::exists(outside.path("inner/file"))) << "round " << round;
  }
}

}  // namespace
}  // namespace vantrell
