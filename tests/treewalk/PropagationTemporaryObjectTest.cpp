// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <array>
#include <cstdint>
#include <thread>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/mount.h>

#include "tests/treewalk/PropagationFixture.h"
#include "treewalk/PropagationTemporaryObject.h"

namespace vantrell {
namespace {

using namespace tests;
using Kind = PropagationTemporaryObject::Kind;

const std::string kBaseName = "." VANTRELL_VENDOR_DOMAIN_PREFIX ".acl.propagation";

/// What is made in a folder, as the kernel tells it.
class CreationWatch {
 public:
  explicit CreationWatch(const std::string& folder) : queue_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    inotify_add_watch(queue_, folder.c_str(), IN_CREATE);
  }
  CreationWatch(const CreationWatch&) = delete;
  CreationWatch& operator=(const CreationWatch&) = delete;
  ~CreationWatch() { close(queue_); }

  std::vector<std::string> names() {
    std::vector<std::string> names;
    alignas(inotify_event) std::array<char, 16384> buffer;
    for (;;) {
      const ssize_t count = read(queue_, buffer.data(), buffer.size());
      if (count <= 0) return names;
      for (ssize_t offset = 0; offset < count;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
        names.emplace_back(event->name);
        offset += static_cast<ssize_t>(sizeof *event + event->len);
      }
    }
  }

 private:
  int queue_;
};

class PropagationTemporaryObjectAsRoot : public PropagationFixture {
 protected:
  std::unique_ptr<host::DirectoryHandle> open(const std::string& path) {
    return std::move(*fileSystem_.openDirectory(path, host::FollowLinks::No));
  }
};

TEST(PropagationTemporaryObject, CountsItsNames) {
  EXPECT_EQ(PropagationTemporaryObject::candidateName(0), kBaseName);
  EXPECT_EQ(PropagationTemporaryObject::candidateName(1), kBaseName + "-1");
  EXPECT_EQ(PropagationTemporaryObject::candidateName(UINT64_MAX), kBaseName + "-18446744073709551615");
}

TEST_F(PropagationTemporaryObjectAsRoot, GoesWithItsScope) {
  const auto folder = open(top_);
  for (const auto kind : {Kind::File, Kind::Folder}) {
    {
      const auto made = PropagationTemporaryObject::make(*folder, top_, kind);
      ASSERT_TRUE(made);
      EXPECT_EQ(made->name(), kBaseName);
      EXPECT_EQ(S_ISDIR(statusOf(path(kBaseName)).st_mode), kind == Kind::Folder);
    }
    EXPECT_TRUE(std::filesystem::is_empty(top_));
  }
}

TEST_F(PropagationTemporaryObjectAsRoot, TellsWhatItsFolderHandsOn) {
  const auto folder = open(top_);
  EXPECT_EQ(*PropagationTemporaryObject::make(*folder, top_, Kind::File)->accessControlList(), nullptr);
  setfacl({"-m", "d:u:5:rwx", top_});
  for (const auto kind : {Kind::File, Kind::Folder}) {
    const auto made = PropagationTemporaryObject::make(*folder, top_, kind);
    const auto list = made->accessControlList();
    ASSERT_TRUE(list);
    ASSERT_NE(*list, nullptr);
    EXPECT_FALSE((*list)->isEmpty());
  }
}

TEST_F(PropagationTemporaryObjectAsRoot, TakesTheNextNameThatIsFree) {
  makeFile(kBaseName);
  makeFolder(kBaseName + "-1");
  folder_.makeLink("top/" + kBaseName + "-2", "nowhere");
  const auto folder = open(top_);
  EXPECT_EQ(PropagationTemporaryObject::make(*folder, top_, Kind::File)->name(), kBaseName + "-3");
  EXPECT_EQ(PropagationTemporaryObject::make(*folder, top_, Kind::Folder)->name(), kBaseName + "-3");
  EXPECT_TRUE(std::filesystem::is_regular_file(path(kBaseName)));
  EXPECT_TRUE(std::filesystem::is_directory(path(kBaseName + "-1")));
  EXPECT_FALSE(std::filesystem::exists(path("nowhere")));
}

TEST_F(PropagationTemporaryObjectAsRoot, IsMadeOnceForFilesAndOnceForFolders) {
  makeFile(kBaseName);
  CreationWatch watch(top_);
  EXPECT_EQ(propagate(0x80), std::nullopt);
  EXPECT_EQ(watch.names(), (std::vector<std::string>{kBaseName + "-1", kBaseName + "-1"}));
  EXPECT_TRUE(std::filesystem::is_regular_file(path(kBaseName)));
  EXPECT_FALSE(std::filesystem::exists(path(kBaseName + "-1")));
}

TEST_F(PropagationTemporaryObjectAsRoot, CountsAMissingFolderAsOneWithoutAccess) {
  const auto gone = makeFolder("gone");
  const auto folder = open(gone);
  std::filesystem::remove(gone);
  for (const auto kind : {Kind::File, Kind::Folder}) {
    const auto made = PropagationTemporaryObject::make(*folder, gone, kind);
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error(), error23(gone + "/" + kBaseName, posix::kAccessDenied));
  }
}

TEST_F(PropagationTemporaryObjectAsRoot, GoesAlsoWhereItsListCannotBeRead) {
  ASSERT_EQ(mount("none", top_.c_str(), "ramfs", 0, ""), 0);
  {
    const auto folder = open(top_);
    for (const auto kind : {Kind::File, Kind::Folder}) {
      const auto made = PropagationTemporaryObject::make(*folder, top_, kind);
      ASSERT_TRUE(made);
      const auto list = made->accessControlList();
      ASSERT_FALSE(list);
      EXPECT_EQ(list.error(), error23(path(kBaseName), posix::kNotSupported));
    }
    EXPECT_TRUE(std::filesystem::is_empty(top_));
  }
  umount2(top_.c_str(), MNT_DETACH);
}

class PropagationTemporaryObjectConcurrentAsRoot : public PropagationTemporaryObjectAsRoot {};

TEST_F(PropagationTemporaryObjectConcurrentAsRoot, TakesAnotherNameWhenItsOwnAppears) {
  makeFile("file");
  setfacl({"-m", "d:u:5:rwx", top_});
  std::jthread rival([this](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      for (const char* suffix : {"", "-1", "-2"}) {
        const auto name = path(kBaseName + suffix);
        if (const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); file >= 0) {
          // A name of ours that vanished under our feet would be the rival's object removed.
          if (write(file, "x", 1) == 1) rename(name.c_str(), path("kept").c_str());
          close(file);
        }
      }
    }
  });
  for (int round = 0; round < 300; ++round) {
    const auto folder = open(top_);
    for (const auto kind : {Kind::File, Kind::Folder}) {
      const auto made = PropagationTemporaryObject::make(*folder, top_, kind);
      ASSERT_TRUE(made);
      const auto list = made->accessControlList();
      ASSERT_TRUE(list);
      EXPECT_NE(*list, nullptr);
    }
  }
  rival.request_stop();
  rival.join();
  for (const char* suffix : {"", "-1", "-2", "-3"}) EXPECT_FALSE(std::filesystem::exists(path(kBaseName + suffix)));
}

}  // namespace
}  // namespace vantrell
