// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <utility>

#include <unistd.h>

namespace vantrell::host {

/// Owner of one open descriptor, or of none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// Takes over `descriptor`; a negative one is none.
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) reset(std::exchange(other.descriptor_, -1));
    return *this;
  }
  ~FileDescriptor() { reset(); }

  int get() const noexcept { return descriptor_; }
  explicit operator bool() const noexcept { return descriptor_ >= 0; }
  int release() noexcept { return std::exchange(descriptor_, -1); }

  /// The error of close(2) is of no interest to anyone who only reads, nor can it be acted upon.
  void reset(int descriptor = -1) noexcept {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = descriptor;
  }

 private:
  int descriptor_ = -1;
};

}  // namespace vantrell::host
