// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/posix/TransportLimits.h"
#include "tests/host/TransportFixture.h"

/// The suites of TransportContractTest.cpp and TransportConcurrentTest.cpp, which every pair of a Transport and a
/// ClientTransport must pass. Each file that has one to offer instantiates both.
namespace vantrell::tests {

struct TransportImplementation {
  const char* name;
  std::function<std::unique_ptr<TransportWire>(const host::TransportLimits&)> makeWire;
  friend void PrintTo(const TransportImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

class TransportContract : public testing::TestWithParam<TransportImplementation> {
 public:
  static std::string nameOf(const testing::TestParamInfo<TransportImplementation>& info) { return info.param.name; }

 protected:
  void SetUp() override;

  /// Sends the value as an argument; the service sends its arguments back in an error's user info.
  std::optional<Value> roundTrip(const Value& value);
  void answerWithArguments();
  /// The value as it arrives in the user info of an answer.
  std::optional<Value> answered(const Value& value);

  const std::unique_ptr<TransportWire> wire_ = GetParam().makeWire({});
  std::unique_ptr<host::ServiceConnection> connection_;
};

class TransportConcurrent : public testing::TestWithParam<TransportImplementation> {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Answers each request with its code, from threads of its own.
  void answerOnOtherThreads();

  const std::unique_ptr<TransportWire> wire_ = GetParam().makeWire({});
  std::mutex mutex_;
  std::vector<std::thread> workers_;
};

}  // namespace vantrell::tests
