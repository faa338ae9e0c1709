// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cerrno>
#include <csignal>
#include <functional>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/PosixProcessSignals.h"
#include "tests/support/FakeProcessSignals.h"

namespace vantrell {
namespace {

/// One process, and what came of the signals sent to it.
struct Candidate {
  virtual ~Candidate() = default;
  virtual host::ProcessSignals& signals() = 0;
  virtual std::int32_t process() = 0;
  /// The first signal that the process got; to be asked once, when it has been sent one that ends a process.
  virtual int firstSignal() = 0;
};

struct FakeCandidate final : Candidate {
  tests::FakeProcessSignals fake;
  FakeCandidate() { fake.processes[42]; }
  host::ProcessSignals& signals() override { return fake; }
  std::int32_t process() override { return 42; }
  int firstSignal() override { return fake.processes.extract(42).mapped().at(0); }
};

struct RealCandidate final : Candidate {
  host::PosixProcessSignals real;
  pid_t child = fork();
  RealCandidate() {
    if (child == 0) {
      for (;;) pause();
    }
  }
  ~RealCandidate() override {
    if (child <= 0) return;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }
  host::ProcessSignals& signals() override { return real; }
  std::int32_t process() override { return child; }
  int firstSignal() override {
    int status = 0;
    waitpid(std::exchange(child, -1), &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }
};

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<Candidate>()> make;
  friend void PrintTo(const Implementation& implementation, std::ostream* stream) { *stream << implementation.name; }
};

struct ProcessSignalsContract : testing::TestWithParam<Implementation> {
  std::unique_ptr<Candidate> candidate = GetParam().make();
};

TEST_P(ProcessSignalsContract, SendsTheSignal) {
  for (const int signal : {SIGUSR1, SIGTERM, SIGKILL, SIGHUP}) {
    candidate = GetParam().make();
    ASSERT_EQ(candidate->signals().send(signal, candidate->process()), std::nullopt);
    EXPECT_EQ(candidate->firstSignal(), signal);
  }
}

TEST_P(ProcessSignalsContract, SignalZeroOnlyFindsOutWhetherThereIsAProcess) {
  const auto process = candidate->process();
  EXPECT_EQ(candidate->signals().send(0, process), std::nullopt);
  ASSERT_EQ(candidate->signals().send(SIGTERM, process), std::nullopt);
  EXPECT_EQ(candidate->firstSignal(), SIGTERM);
  EXPECT_EQ(candidate->signals().send(0, process), Error::posix(3));
}

TEST_P(ProcessSignalsContract, RefusesSignalsThatThereAreNot) {
  for (const std::int32_t signal : {-1, 65, 9999, std::numeric_limits<std::int32_t>::max()})
    EXPECT_EQ(candidate->signals().send(signal, candidate->process()), Error::posix(posix::kInvalidArgument)) << signal;
  EXPECT_EQ(candidate->signals().send(0, candidate->process()), std::nullopt);
}

TEST_P(ProcessSignalsContract, RefusesGroupsOfProcesses) {
  const auto process = candidate->process();
  for (const std::int32_t identifier : {0, -1, -process, std::numeric_limits<std::int32_t>::min()})
    EXPECT_EQ(candidate->signals().send(0, identifier), Error::posix(posix::kInvalidArgument)) << identifier;
}

INSTANTIATE_TEST_SUITE_P(, ProcessSignalsContract,
                         testing::Values(Implementation{"Fake", [] { return std::make_unique<FakeCandidate>(); }},
                                         Implementation{"Real", [] { return std::make_unique<RealCandidate>(); }}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace vantrell
