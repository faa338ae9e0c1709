// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "foundation/PosixCodes.h"
#include "host/Host.h"

namespace vantrell::tests {

/// The process as a test wants it seen: its end is noted instead of happening, and its identity can be another.
class FakeCurrentProcess final : public host::CurrentProcess {
 public:
  explicit FakeCurrentProcess(std::unique_ptr<host::CurrentProcess> real) : real_(std::move(real)) {}

  std::int32_t identifier() const noexcept override { return real_->identifier(); }
  std::uint32_t realUserID() const noexcept override { return userID_; }
  std::uint32_t effectiveUserID() const noexcept override { return userID_; }
  void exit(int status) override {
    exitStatus_ = status;
    ++exits_;
  }
  void runMainLoop() override {}
  void sleepForMilliseconds(unsigned milliseconds) override {
    slept_ += milliseconds;
    real_->sleepForMilliseconds(milliseconds);
  }

  void setUserID(std::uint32_t userID) { userID_ = userID; }
  int exits() const { return exits_; }
  int exitStatus() const { return exitStatus_; }
  unsigned milliSecondsSlept() const { return slept_; }

 private:
  std::unique_ptr<host::CurrentProcess> real_;
  std::uint32_t userID_ = 0;
  std::atomic<int> exits_ = 0;
  std::atomic<int> exitStatus_ = -1;
  std::atomic<unsigned> slept_ = 0;
};

/// An executable with an information list of the test's own.
class FakeMainBundle final : public host::MainBundle {
 public:
  FakeMainBundle(std::string executablePath, std::optional<std::string> informationList)
      : executablePath_(std::move(executablePath)), informationList_(std::move(informationList)) {}

  Result<std::string> executablePath() override { return executablePath_; }
  Result<Data> informationPropertyList() override {
    if (!informationList_) return posixFailure(posix::kNoEntry);
    return Data(informationList_->begin(), informationList_->end());
  }
  Result<Data> launchdPropertyList() override { return posixFailure(posix::kNoEntry); }

 private:
  std::string executablePath_;
  std::optional<std::string> informationList_;
};

/// Real cryptography whose digest can be made to fail, which the real one never does.
class FailingCryptography final : public host::Cryptography {
 public:
  explicit FailingCryptography(std::unique_ptr<host::Cryptography> real) : real_(std::move(real)) {}

  Result<std::unique_ptr<host::Sha1Context>> makeSha1() override { return real_->makeSha1(); }
  Result<host::Sha1Digest> sha1(DataView bytes) override {
    if (failDigests) return posixFailure(posix::kInputOutput);
    return real_->sha1(bytes);
  }
  ErrorOrNil rc4(DataView key, DataView input, std::span<std::uint8_t> output) override {
    if (failCiphers) return Error::posix(posix::kInputOutput);
    return real_->rc4(key, input, output);
  }
  ErrorOrNil randomBytes(std::span<std::uint8_t> output) override { return real_->randomBytes(output); }

  std::atomic<bool> failDigests = false;
  std::atomic<bool> failCiphers = false;

 private:
  std::unique_ptr<host::Cryptography> real_;
};

}  // namespace vantrell::tests
