// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// A user exchanges folders for links, and files for others, while root propagates rights through the tree. What lies
// outside keeps owner, group, mode and list; and no object gets what was worked out from another's state.

#include <thread>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/syscall.h>

#include "tests/treewalk/PropagationFixture.h"

namespace vantrell {
namespace {

using namespace tests;

class PropagationSwapRaceConcurrentAsRoot : public PropagationFixture {
 protected:
  static constexpr unsigned kUser = 4321;

  void SetUp() override {
    PropagationFixture::SetUp();
    if (IsSkipped()) return;
    // The user may reach, and rename in, the tree only.
    setMode(folder_.path(), 0711);
    setMode(outside_.path(), 0755);
    outside_.makeFolder("inner");
    outside_.makeFile("file");
    outside_.makeFile("inner/file");
    before_ = stateOutside();
    setOwner(top_, kUser, kUser);
    setMode(top_, 0777);
    setfacl({"-m", "u:5:rwx,d:u:5:rwx", top_});
  }

  std::vector<std::string> stateOutside() const {
    std::vector<std::string> state;
    for (const std::string name : {"", "/file", "/inner", "/inner/file"}) {
      const auto path = outside_.path() + name;
      const auto status = statusOf(path);
      state.push_back(getfacl(path) + " " + std::to_string(status.st_uid) + " " + std::to_string(status.st_gid) + " " +
                      std::to_string(status.st_mode));
    }
    return state;
  }

  // Exchanges the two, with the user's rights alone, until the end of the scope.
  static std::jthread swap(const std::string& one, const std::string& other) {
    return std::jthread([one, other](const std::stop_token& stop) {
      // The kernel's own calls are about this thread only.
      syscall(SYS_setresgid, kUser, kUser, kUser);
      syscall(SYS_setresuid, kUser, kUser, kUser);
      while (!stop.stop_requested()) renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
    });
  }
  void makeVictim() {
    makeFolder("victim/inner");
    for (const char* name : {"victim/file", "victim/inner/file"}) makeFile(name);
    for (const char* name : {"victim", "victim/inner", "victim/file", "victim/inner/file"})
      setOwner(path(name), kUser, kUser);
    if (!std::filesystem::is_symlink(path("link"))) folder_.makeLink("top/link", outside_.path());
    setOwner(path("link"), kUser, kUser);
  }
  void propagateWhileSwapped(unsigned options) {
    for (int round = 0; round < 150; ++round) {
      makeVictim();
      {
        const auto swapper = swap(path("victim"), path("link"));
        for (int repetition = 0; repetition < 5; ++repetition) {
          (void)propagate(options);
          setOwner(top_, repetition % 2 ? kUser : 0, kUser);
        }
      }
      ASSERT_EQ(stateOutside(), before_) << round;
      for (const char* name : {"victim", "link"}) std::filesystem::remove_all(path(name));
    }
  }

  TemporaryFolder outside_;
  std::vector<std::string> before_;
};

TEST_F(PropagationSwapRaceConcurrentAsRoot, CopyingStaysInside) {
  propagateWhileSwapped(0x3f);
}

TEST_F(PropagationSwapRaceConcurrentAsRoot, ReinheritanceStaysInside) {
  propagateWhileSwapped(0xbe);
}

// A program that runs as its owner gives its mode to nothing that it changes places with.
TEST_F(PropagationSwapRaceConcurrentAsRoot, ModesStayWithTheirObjects) {
  const auto program = makeFile("program", 04755);
  setOwner(program, kUser, kUser);
  setMode(program, 04755);
  const auto secret = makeFile("secret", 0600);
  const auto programInode = statusOf(program).st_ino;
  {
    const auto swapper = swap(program, secret);
    for (int round = 0; round < 3000; ++round) {
      setMode(top_, round % 2 ? 0777 : 0755);
      (void)propagate(0x02);
    }
  }
  const bool isSwapped = statusOf(program).st_ino != programInode;
  EXPECT_EQ(modeOf(isSwapped ? secret : program) & 07770, 04750U);
  EXPECT_EQ(modeOf(isSwapped ? program : secret) & 07770, 0600U);
}

}  // namespace
}  // namespace vantrell
