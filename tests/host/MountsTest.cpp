// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/host/MountsContract.h"
#include "tests/support/FakeMounts.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

class ImaginedMounts final : public tests::WorldWithMount {
 public:
  explicit ImaginedMounts(const std::string& mountPoint) { mounts_.addMountPoint(mountPoint); }
  host::Mounts& mounts() override { return mounts_; }

 private:
  tests::FakeMounts mounts_;
};

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<tests::WorldWithMount>(const std::string& mountPoint)> make;
  friend void PrintTo(const Implementation& implementation, std::ostream* stream) { *stream << implementation.name; }
};

class MountsContractAsRoot : public testing::TestWithParam<Implementation> {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "mounting takes root";
    root_ = std::filesystem::canonical(folder_.path());
    mountPoint_ = root_ + "/volume";
    folder_.makeFolder("volume");
    try {
      world_ = GetParam().make(mountPoint_);
    } catch (const std::runtime_error& error) {
      GTEST_SKIP() << "Nothing can be mounted here: " << error.what();
    }
  }
  void expectMountPoint(const std::string& expected, const std::string& path) {
    const auto name = world_->mounts().mountPointNameForPath(path);
    ASSERT_TRUE(name) << path << ": " << name.error().code();
    EXPECT_EQ(*name, expected) << path;
  }
  void expectError(std::int64_t code, const std::string& path) {
    const auto name = world_->mounts().mountPointNameForPath(path);
    ASSERT_FALSE(name) << path << " is on " << *name;
    EXPECT_EQ(name.error(), Error::posix(code)) << path;
  }

  tests::TemporaryFolder folder_;
  std::string root_;
  std::string mountPoint_;
  std::unique_ptr<tests::WorldWithMount> world_;
};

TEST_P(MountsContractAsRoot, MountPointIsOnItself) {
  expectMountPoint(mountPoint_, mountPoint_);
  expectMountPoint("/", "/");
}

TEST_P(MountsContractAsRoot, ObjectsInsideAreOnIt) {
  folder_.makeFolder("volume/folder/deeper");
  folder_.makeFile("volume/folder/file");
  expectMountPoint(mountPoint_, mountPoint_ + "/folder/deeper");
  expectMountPoint(mountPoint_, mountPoint_ + "/folder/file");
}

TEST_P(MountsContractAsRoot, OtherSpellingsGiveTheSameName) {
  folder_.makeFolder("volume/folder");
  folder_.makeLink("link", mountPoint_);
  for (const auto& path :
       {mountPoint_ + "/", mountPoint_ + "/.", mountPoint_ + "/folder/..", "/" + mountPoint_, root_ + "/link"}) {
    expectMountPoint(mountPoint_, path);
  }
}

TEST_P(MountsContractAsRoot, WhatIsNotThereIsAnError) {
  expectError(2, mountPoint_ + "/missing");
  expectError(2, "");
  folder_.makeLink("dangling", "nowhere");
  expectError(2, root_ + "/dangling");
  expectError(22, mountPoint_ + std::string("\0/x", 3));
}

INSTANTIATE_TEST_SUITE_P(
    , MountsContractAsRoot,
    testing::Values(Implementation{"Real", tests::realWorldWithMount},
                    Implementation{"Fake", [](const auto& path) { return std::make_unique<ImaginedMounts>(path); }}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace vantrell
