// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/PosixChildProcesses.h"
#include "tests/support/ChildScripts.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {
namespace {

using host::ChildProcess;
using host::ChildSignal;
using host::ChildStream;
using host::FileDescriptor;
using host::PosixChildProcesses;
using namespace std::chrono_literals;

class ChildProcesses : public testing::Test {
 protected:
  Result<std::unique_ptr<ChildProcess>> tryToLaunch(const std::string& path,
                                                    const std::vector<std::string>& arguments = {}) {
    return children_.launch(path, arguments, children_.makePipes().value());
  }
  std::unique_ptr<ChildProcess> launch(const std::string& path, const std::vector<std::string>& arguments = {}) {
    return tryToLaunch(path, arguments).value();
  }
  std::int32_t relay(ChildProcess& child) {
    return child.relayOutputUntilExit(
        [this](ChildStream stream, DataView bytes) { record_.add(bytes, stream == ChildStream::Error); },
        [this](std::int32_t status) { statusAtExit_.push_back(status); });
  }
  std::int32_t run(const std::string& line) { return relay(*launch(kShell, script(line))); }

  PosixChildProcesses children_;
  OutputRecord record_;
  std::vector<std::int32_t> statusAtExit_;
};

TEST_F(ChildProcesses, RelaysBothStreamsAndTheStatus) {
  EXPECT_EQ(run("printf out; printf err >&2; exit 7"), 7);
  EXPECT_EQ(record_.text(false), "out");
  EXPECT_EQ(record_.text(true), "err");
  EXPECT_EQ(statusAtExit_, std::vector{7});
  EXPECT_TRUE(record_.eachStreamEndedOnce());
}

TEST_F(ChildProcesses, WithoutOutputThereIsTheEndOfEachStreamOutputFirst) {
  for (int i = 0; i < 50; ++i) {
    OutputRecord record;
    const auto child = launch("/usr/bin/true");
    EXPECT_EQ(child->relayOutputUntilExit(
                  [&](ChildStream stream, DataView bytes) { record.add(bytes, stream == ChildStream::Error); }),
              0);
    EXPECT_EQ(record.pieces(), (std::vector<Piece>{{false, ""}, {true, ""}}));
  }
}

TEST_F(ChildProcesses, ArgumentsArriveAsTheyAre) {
  const auto child = launch(kShell, {"-c", "printf '%s|' \"$0\" \"$@\"", "zero", "", "a b", "*", "$HOME", "\xFF\n"});
  EXPECT_EQ(relay(*child), 0);
  EXPECT_EQ(record_.text(false), "zero||a b|*|$HOME|\xFF\n|");
}

TEST_F(ChildProcesses, TheEndBySignalGivesItsNumber) {
  EXPECT_EQ(run("kill -KILL $$"), SIGKILL);
  EXPECT_EQ(run("kill -SEGV $$"), SIGSEGV);
}

TEST_F(ChildProcesses, StandardInputStaysOpenAndEmpty) {
  const auto child = launch("/bin/cat");
  std::thread ender([&] {
    std::this_thread::sleep_for(100ms);
    child->sendSignal(ChildSignal::Terminate);
  });
  EXPECT_EQ(relay(*child), SIGTERM);
  ender.join();
}

TEST_F(ChildProcesses, AStreamThatEndsEarlyIsHandedOverThenAndCostsNothingAfterwards) {
  const auto start = std::chrono::steady_clock::now();
  std::vector<std::chrono::steady_clock::duration> ends;
  const auto child = launch(kShell, script("exec 1>&- 2>&-; sleep 2; exit 3"));
  timespec before;
  timespec after;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
  EXPECT_EQ(child->relayOutputUntilExit([&](ChildStream, DataView bytes) {
    EXPECT_TRUE(bytes.empty());
    ends.push_back(std::chrono::steady_clock::now() - start);
  }),
            3);
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
  ASSERT_EQ(ends.size(), 2u);
  EXPECT_LT(ends[1], 1900ms);
  const auto busy =
      std::chrono::seconds(after.tv_sec - before.tv_sec) + std::chrono::nanoseconds(after.tv_nsec - before.tv_nsec);
  EXPECT_LT(busy, 200ms);
}

TEST_F(ChildProcesses, OnlyErrorMayEndEarly) {
  EXPECT_EQ(run("exec 2>&-; sleep 0.3; printf late"), 0);
  EXPECT_EQ(record_.pieces(), (std::vector<Piece>{{true, ""}, {false, "late"}, {false, ""}}));
}

TEST_F(ChildProcesses, AProcessThatInheritedAPipeHoldsTheRelayUp) {
  EXPECT_EQ(run("(sleep 0.5; printf grandchild) & printf child; exit 4"), 4);
  EXPECT_EQ(record_.text(false), "childgrandchild");
  EXPECT_EQ(statusAtExit_, std::vector{4});
  EXPECT_TRUE(record_.eachStreamEndedOnce());
}

TEST_F(ChildProcesses, AfterAnInterruptionWhatIsThereIsTheRest) {
  const auto child = launch(kShell, script("sleep 60 & echo $!; exec sleep 60"));
  std::thread interrupter([&] {
    while (record_.text(false).find('\n') == std::string::npos) std::this_thread::sleep_for(1ms);
    child->sendSignal(ChildSignal::Interrupt);
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(relay(*child), SIGINT);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
  interrupter.join();
  EXPECT_TRUE(record_.eachStreamEndedOnce());
  kill(std::stoi(record_.text(false)), SIGKILL);
}

TEST_F(ChildProcesses, AnInterruptionEndsTheWaitForOthersToo) {
  const auto child = launch(kShell, script("sleep 60 & echo $!; exit 0"));
  std::thread interrupter;
  const auto status = child->relayOutputUntilExit(
      [this](ChildStream stream, DataView bytes) { record_.add(bytes, stream == ChildStream::Error); },
      [&](std::int32_t) {
        interrupter = std::thread([&] {
          std::this_thread::sleep_for(100ms);
          child->sendSignal(ChildSignal::Interrupt);
        });
      });
  EXPECT_EQ(status, 0);
  interrupter.join();
  EXPECT_TRUE(record_.eachStreamEndedOnce());
  kill(std::stoi(record_.text(false)), SIGKILL);
}

TEST_F(ChildProcesses, AnEndlessWriterThatInheritedAPipeIsCutOffAfterAnInterruption) {
  const auto child = launch(kShell, script("yes & echo $! >&2; exec sleep 60"));
  std::atomic<std::size_t> count = 0;
  std::thread interrupter([&] {
    while (count == 0 || record_.text(true).find('\n') == std::string::npos) std::this_thread::sleep_for(1ms);
    child->sendSignal(ChildSignal::Terminate);
  });
  EXPECT_EQ(child->relayOutputUntilExit([&](ChildStream stream, DataView bytes) {
    if (stream == ChildStream::Error) return record_.add(bytes, true);
    count += bytes.size();
  }),
            SIGTERM);
  interrupter.join();
  kill(std::stoi(record_.text(true)), SIGKILL);
}

TEST_F(ChildProcesses, ASignalAfterTheEndDoesNothing) {
  const auto child = launch("/usr/bin/true");
  EXPECT_EQ(relay(*child), 0);
  child->sendSignal(ChildSignal::Terminate);
  child->sendSignal(ChildSignal::Interrupt);
}

TEST_F(ChildProcesses, WhatCannotBeExecutedIsAnError) {
  const TemporaryFolder folder;
  const auto text = folder.makeFile("not executable", "#!/bin/sh\n");
  const auto broken = folder.makeFile("broken", "no program");
  const auto orphan = folder.makeFile("orphan", "#!/no/such/interpreter\n");
  chmod(broken.c_str(), 0755);
  chmod(orphan.c_str(), 0755);
  const auto before = openDescriptors();
  EXPECT_EQ(tryToLaunch(folder.path("missing")).error(), Error::posix(posix::kNoEntry));
  EXPECT_EQ(tryToLaunch(text).error(), Error::posix(posix::kAccessDenied));
  EXPECT_EQ(tryToLaunch(folder.path()).error(), Error::posix(posix::kAccessDenied));
  EXPECT_EQ(tryToLaunch(broken).error(), Error::posix(8));  // ENOEXEC: no shell is tried
  EXPECT_EQ(tryToLaunch(orphan).error(), Error::posix(posix::kNoEntry));
  EXPECT_EQ(tryToLaunch(text + "/below").error(), Error::posix(posix::kNotDirectory));
  EXPECT_EQ(tryToLaunch("").error(), Error::posix(posix::kNoEntry));
  EXPECT_EQ(tryToLaunch("true").error(), Error::posix(posix::kNoEntry));                          // no search path
  EXPECT_EQ(tryToLaunch("/usr/bin/true", {std::string(4 << 20, 'x')}).error(), Error::posix(7));  // E2BIG
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // nor is there a child
}

TEST_F(ChildProcesses, ZeroBytesAreRefused) {
  EXPECT_EQ(tryToLaunch(std::string("/usr/bin/true\0x", 15)).error(), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(tryToLaunch("/usr/bin/true", {std::string("\0", 1)}).error(), Error::posix(posix::kInvalidArgument));
}

TEST_F(ChildProcesses, PipesNeedDescriptorsAndALaunchNoMoreThanThat) {
  EXPECT_EQ(run("exit 0"), 0);
  for (std::size_t count = 0; count < 7; ++count) {
    const DescriptorsLeft few(count);
    EXPECT_EQ(children_.makePipes().error(), Error::posix(posix::kTooManyOpenFiles)) << count;
  }
  const DescriptorsLeft enough(7);
  EXPECT_EQ(run("echo enough; exit 5"), 5);
  EXPECT_EQ(record_.text(false), "enough\n");
}

TEST_F(ChildProcesses, NothingStaysBehind) {
  const auto before = openDescriptors();
  for (int i = 0; i < 20; ++i) EXPECT_EQ(run("echo x"), 0);
  { const auto pipes = children_.makePipes(); }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(ChildProcesses, AChildThatIsLetGoOfIsStillWaitedFor) {
  auto child = launch("/bin/sleep", {"60"});
  auto ended = launch("/usr/bin/true");
  const auto identifier = child->identifier();
  siginfo_t information;
  waitid(P_PID, static_cast<id_t>(ended->identifier()), &information, WEXITED | WNOWAIT);
  ended.reset();
  const auto start = std::chrono::steady_clock::now();
  child.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
  EXPECT_EQ(kill(identifier, 0), 0);  // it goes on
  kill(identifier, SIGKILL);
  for (int i = 0; i < 1000 && kill(identifier, 0) == 0; ++i) std::this_thread::sleep_for(10ms);
  EXPECT_EQ(kill(identifier, 0), -1);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(ChildProcesses, TheChildHasNoDescriptorButItsStreams) {
  const FileDescriptor leaking(open("/dev/null", O_RDONLY));
  const FileDescriptor high(fcntl(leaking.get(), F_DUPFD, 200));
  const auto other = children_.makePipes();
  EXPECT_EQ(run("n=3; while [ $n -lt 256 ]; do [ -e /dev/fd/$n ] && echo $n; n=$((n + 1)); done; exit 0"), 0);
  EXPECT_EQ(record_.text(false), "");
}

TEST_F(ChildProcesses, TheChildHasItsStreamsAlsoWhenThisProcessHasNone) {
  std::vector<FileDescriptor> kept;
  for (int standard = 0; standard < 3; ++standard) kept.emplace_back(fcntl(standard, F_DUPFD_CLOEXEC, 10));
  for (int standard = 0; standard < 3; ++standard) close(standard);
  const auto status = run("printf out; printf err >&2; exit 6");
  for (int standard = 0; standard < 3; ++standard) dup2(kept[static_cast<std::size_t>(standard)].get(), standard);
  EXPECT_EQ(status, 6);
  EXPECT_EQ(record_.text(false), "out");
  EXPECT_EQ(record_.text(true), "err");
}

TEST_F(ChildProcesses, TheChildStartsWithDefaultSignals) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  auto* const handler = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(run("kill -INT $$; exit 0"), SIGINT);
  EXPECT_EQ(run("kill -TERM $$; exit 0"), SIGTERM);
  EXPECT_EQ(run("kill -PIPE $$; exit 0"), SIGPIPE);
  std::signal(SIGPIPE, handler);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(ChildProcesses, StatusesAreKeptWhereTheProcessWasStartedToIgnoreThem) {
  auto* const handler = std::signal(SIGCHLD, SIG_IGN);
  PosixChildProcesses children;
  auto child = children.launch(kShell, script("exit 9"), children.makePipes().value());
  EXPECT_EQ((*child)->relayOutputUntilExit([](ChildStream, DataView) {}), 9);
  std::signal(SIGCHLD, handler);
}

TEST_F(ChildProcesses, TheSearchPathIsSetAndRemovedForLaterChildren) {
  const auto before = children_.searchPath();
  const auto pathOfChild = [this] {
    OutputRecord record;
    launch("/usr/bin/env")->relayOutputUntilExit([&](ChildStream, DataView bytes) { record.add(bytes, false); });
    const auto text = "\n" + record.text(false);
    const auto start = text.find("\nPATH=");
    return start == std::string::npos ? "none" : text.substr(start + 6, text.find('\n', start + 1) - start - 6);
  };
  children_.setSearchPath("/usr/bin:/bin");
  EXPECT_EQ(children_.searchPath(), "/usr/bin:/bin");
  EXPECT_EQ(pathOfChild(), "/usr/bin:/bin");
  children_.setSearchPath(std::nullopt);
  EXPECT_EQ(children_.searchPath(), std::nullopt);
  EXPECT_EQ(std::getenv("PATH"), nullptr);
  EXPECT_EQ(pathOfChild(), "none");
  children_.setSearchPath(before);
}

TEST_F(ChildProcesses, OwnStreamsAreWrittenWholeAndMayBeGone) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FileDescriptor reading(ends[0]);
  const FileDescriptor writing(ends[1]);
  fcntl(writing.get(), F_SETFL, O_WRONLY | O_NONBLOCK);
  const FileDescriptor kept(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 10));
  testing::internal::CaptureStderr();
  dup2(writing.get(), STDOUT_FILENO);
  const Data much(300000, 'x');
  std::size_t count = 0;
  std::thread reader([&] {
    std::vector<char> buffer(4096);
    while (count < much.size()) {
      const auto part = read(reading.get(), buffer.data(), buffer.size());
      if (part <= 0) break;
      count += static_cast<std::size_t>(part);
    }
  });
  children_.writeToOwnStream(ChildStream::Output, much);
  reader.join();
  reading.reset();
  children_.writeToOwnStream(ChildStream::Output, much);  // nobody reads: no signal ends this process
  dup2(kept.get(), STDOUT_FILENO);
  children_.writeToOwnStream(ChildStream::Error, bytesOf("to error"));
  EXPECT_EQ(count, much.size());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to error");
}

TEST(ChildProcessesConcurrent, LaunchesAndSearchPathsDoNotDisturbEachOther) {
  PosixChildProcesses children;
  const auto before = children.searchPath();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int run = 0; run < 15; ++run) {
        children.setSearchPath(run % 2 ? std::optional<std::string>("/bin") : std::nullopt);
        const auto text = std::to_string(i) + "." + std::to_string(run);
        auto child = children.launch(kShell, script("echo " + text + "; exit " + std::to_string(i)),
                                     children.makePipes().value());
        OutputRecord record;
        EXPECT_EQ((*child)->relayOutputUntilExit(
                      [&](ChildStream stream, DataView bytes) { record.add(bytes, stream == ChildStream::Error); }),
                  i);
        EXPECT_EQ(record.text(false), text + "\n");
        EXPECT_TRUE(record.eachStreamEndedOnce());
      }
    });
  }
  for (auto& thread : threads) thread.join();
  children.setSearchPath(before);
}

}  // namespace
}  // namespace vantrell::tests
