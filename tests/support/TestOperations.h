// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "catalogue/FeedbackMessages.h"
#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "core/QELPrivilegedOperationSetImplementor.h"
#include "foundation/Exception.h"
#include "foundation/PosixCodes.h"

namespace vantrell::tests {

/// Operations that show what the frame does: they wait to be let go, raise, or answer with what they were told to.
namespace operation_code {
inline constexpr std::uint64_t kNop = 9998;
inline constexpr std::uint64_t kWaitForGate = 100;      // any strings; progress
inline constexpr std::uint64_t kWaitForCancel = 101;    // any strings; progress
inline constexpr std::uint64_t kRaise = 102;            // S name, S reason
inline constexpr std::uint64_t kRaiseStandard = 103;    // S reason
inline constexpr std::uint64_t kLiveOutput = 104;       // any strings, each sent as a chunk; live output
inline constexpr std::uint64_t kNotImplemented = 105;   // progress
inline constexpr std::uint64_t kUnknownTypeCode = 106;  // X
inline constexpr std::uint64_t kAnswerError = 107;      // S, answered in an error with values of every kind
inline constexpr std::uint64_t kThreeArguments = 108;   // S, N, D
}  // namespace operation_code

/// Holds operations back until it is opened.
class Gate {
 public:
  void open() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
    changed_.notify_all();
  }
  void wait() {
    std::unique_lock lock(mutex_);
    ++arrived_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return isOpen_; });
  }
  /// False when nobody came in time.
  bool waitForArrivals(int count, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return arrived_ >= count; });
  }
  int arrivals() const {
    const std::lock_guard lock(mutex_);
    return arrived_;
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool isOpen_ = false;
  int arrived_ = 0;
};

class TestOperationSet final : public QELPrivilegedToolOperationSet {
 public:
  explicit TestOperationSet(host::SystemLog& systemLog) {
    static constexpr StaticOperationDescription kRows[] = {
        {operation_code::kNop, "nop", 0, kNoFeedback, 0, nullptr, "do nothing"},
        {operation_code::kWaitForGate, "wait-gate", 0, kProgressFeedback, kVariableArgumentCount, nullptr, "wait"},
        {operation_code::kWaitForCancel, "wait-cancel", 0, kProgressFeedback, kVariableArgumentCount, nullptr, "wait"},
        {operation_code::kRaise, "raise", 0, kNoFeedback, 2, "SS", "raise"},
        {operation_code::kRaiseStandard, "raise-standard", 0, kProgressFeedback, 1, "S", "raise"},
        {operation_code::kLiveOutput, "live-output", 0, kLiveOutputFeedback, kVariableArgumentCount, nullptr, "print"},
        {operation_code::kNotImplemented, "not-implemented", 0, kProgressFeedback, 0, nullptr, "nothing"},
        {operation_code::kUnknownTypeCode, "unknown-type", 0, kNoFeedback, 1, "X", "nothing"},
        {operation_code::kAnswerError, "answer-error", 0, kNoFeedback, 1, "S", "answer"},
        {operation_code::kThreeArguments, "three-arguments", 0, kNoFeedback, 3, "SND", "answer"},
        {kEndOfCatalogueCode, nullptr, 0, 0, 0, nullptr, nullptr}};
    implementationCode_ = "tst";
    implementationVersion_ = "2.5";
    enterOperations(kRows, systemLog);
  }

  std::atomic<bool> makeNoUuids = false;

 protected:
  std::optional<Uuid> uuidWithBytes(const Uuid::Bytes& bytes) const override {
    return makeNoUuids ? std::nullopt : std::optional(Uuid(bytes));
  }
};

class TestImplementor final : public QELPrivilegedOperationSetImplementor {
 public:
  TestImplementor(const QELPrivilegedToolOperationSet& operationSet, QELPrivilegedTool& tool, Gate& gate)
      : QELPrivilegedOperationSetImplementor(operationSet, tool), gate_(gate) {}

  OperationMethod methodForSelector(std::string_view selector) override {
    using F = QELPrivilegedOperationFeedbackProtocol;
    if (selector == "performOperationWaitGateWithArguments:feedbackConnection:") {
      return [this](const Array&, F* feedback) -> ErrorOrNil {
        gate_.wait();
        if (feedback) feedback->processPrivilegedOperationFeedback(progressMessage(0.5));
        return std::nullopt;
      };
    }
    if (selector == "performOperationWaitCancelWithArguments:feedbackConnection:") {
      return [this](const Array&, F*) -> ErrorOrNil {
        std::thread opener([this] { gate_.wait(); });
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!isCancelled() && std::chrono::steady_clock::now() < end) std::this_thread::yield();
        gate_.open();
        opener.join();
        return Error::posix(isCancelled() ? posix::kCanceled : posix::kTimedOut);
      };
    }
    if (selector == "performOperationRaiseWithArguments:") {
      return [](const Array& arguments, F*) -> ErrorOrNil {
        throw Exception(*arguments.at(0).asString(), *arguments.at(1).asString());
      };
    }
    if (selector == "performOperationRaiseStandardWithArguments:feedbackConnection:") {
      return [](const Array& arguments, F*) -> ErrorOrNil { throw std::out_of_range(*arguments.at(0).asString()); };
    }
    if (selector == "performOperationLiveOutputWithArguments:feedbackConnection:") {
      return [](const Array& arguments, F* feedback) -> ErrorOrNil {
        std::uint64_t sequence = 0;
        for (const auto& argument : arguments) {
          if (!feedback) return Error::posix(posix::kNotConnected);
          const auto bytes = bytesOf(*argument.asString());
          feedback->processPrivilegedOperationFeedback({{feedback_key::kOutputData, Data(bytes.begin(), bytes.end())},
                                                        {feedback_key::kSequenceNumber, sequence++}});
        }
        return std::nullopt;
      };
    }
    if (selector == "performOperationAnswerErrorWithArguments:") {
      return [](const Array& arguments, F*) -> ErrorOrNil {
        return Error("test", -5,
                     {{"text", arguments.at(0)},
                      {"number", -7},
                      {"unsigned", 18446744073709551615u},
                      {"real", 0.25},
                      {"boolean", true},
                      {"data", Data{0, 1, 255}},
                      {"date", Date{1'700'000'000, 5}},
                      {"array", Array{1, "two", Array{}}},
                      {"dictionary", Dictionary{{"key", "value"}}},
                      {"NSUnderlyingError", Error::posix(13)}});
      };
    }
    if (selector == "performOperationThreeArgumentsWithArguments:") {
      return [](const Array&, F*) -> ErrorOrNil { return std::nullopt; };
    }
    return {};
  }

 private:
  Gate& gate_;
};

}  // namespace vantrell::tests
