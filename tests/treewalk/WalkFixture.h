// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"
#include "treewalk/QELDirectoryEnumerator.h"

namespace vantrell::tests {

using Texts = std::vector<std::string>;

inline const std::string kTooLong = "QELDirectoryEnumerator: maximum path length reached. Skipping...";
inline const std::string kTooDeep = "QELDirectoryEnumerator: maximum number of nested directories reached. Skipping...";

inline Texts inOrder(Texts texts) {
  std::ranges::sort(texts);
  return texts;
}

/// Without root's powers over files until the end of the scope. Takes root.
class Unprivileged {
 public:
  Unprivileged() { require(seteuid(65534) == 0); }
  ~Unprivileged() {
    if (seteuid(0) != 0) std::abort();
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

 private:
  static void require(bool succeeded) {
    if (!succeeded) throw std::system_error(errno, std::system_category(), "becoming nobody");
  }
};

/// A folder to walk through, and a log for what is said on the way.
class WalkFixture : public testing::Test {
 protected:
  std::unique_ptr<QELDirectoryEnumerator> walk(const std::string& path, bool stay = false) {
    return QELDirectoryEnumerator::enumeratorAtPath(fileSystem_, log_, path, stay);
  }
  std::unique_ptr<QELDirectoryEnumerator> walk() { return walk(folder_.path()); }

  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  RecordingLog messages_;
  Log log_{messages_};
  TemporaryFolder folder_;
};

/// The same as root: what is mounted, is mounted for this process alone.
class WalkFixtureAsRoot : public WalkFixture {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may mount, and give objects to others";
    static const bool isPrivate =
        unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    if (!isPrivate) GTEST_SKIP() << "no mount namespace of its own can be had";
    ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  }
};

}  // namespace vantrell::tests
