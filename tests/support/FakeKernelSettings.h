// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "foundation/PosixCodes.h"
#include "host/KernelSettings.h"

namespace vantrell::tests {

/// A kernel with the variables that it was made with.
class FakeKernelSettings final : public host::KernelSettings {
 public:
  using Variables = std::map<std::string, std::int64_t, std::less<>>;

  explicit FakeKernelSettings(Variables variables) : variables_(std::move(variables)) {}

  ErrorOrNil set(std::string_view name, std::int64_t value) override {
    const std::lock_guard lock(mutex_);
    const auto found = variables_.find(name);
    if (found == variables_.end()) return Error::posix(posix::kNoEntry);
    if (failure) return failure;
    found->second = value;
    return std::nullopt;
  }

  Variables variables() const {
    const std::lock_guard lock(mutex_);
    return variables_;
  }

  ErrorOrNil failure;  // of every variable that there is

 private:
  mutable std::mutex mutex_;
  Variables variables_;
};

}  // namespace vantrell::tests
