// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <utility>

#include <IOKit/IOKitLib.h>

namespace vantrell::host {

/// Owns one reference to an object of the driver framework (a registry entry, a service, an iterator), or none.
/// Connections are no such references: those are closed. For Objective-C++ sources only.
class IOObject {
 public:
  IOObject() = default;
  explicit IOObject(io_object_t owned) noexcept : object_(owned) {}
  IOObject(IOObject&& other) noexcept : object_(std::exchange(other.object_, IO_OBJECT_NULL)) {}
  IOObject& operator=(IOObject&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~IOObject() {
    if (object_ != IO_OBJECT_NULL) IOObjectRelease(object_);
  }

  io_object_t get() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != IO_OBJECT_NULL; }

  /// Where a function puts a reference that the caller owns from then on. Only of one that owns none yet.
  io_object_t* out() noexcept { return &object_; }

 private:
  io_object_t object_ = IO_OBJECT_NULL;
};

}  // namespace vantrell::host
