// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <expected>
#include <utility>

#include <IOKit/IOKitLib.h>
#include <mach/mach.h>

namespace vantrell::host {

/// A right to the port at which the kernel is asked for drivers and registry entries, given back at the end. For
/// Objective-C++ sources only.
class MainPort {
 public:
  /// Or the code of the failure.
  static std::expected<MainPort, kern_return_t> get() noexcept {
    mach_port_t port = MACH_PORT_NULL;
    // The function's newer name, IOMainPort, is there from macOS 12 on.
    const auto code = IOMasterPort(MACH_PORT_NULL, &port);
    if (code != KERN_SUCCESS) return std::unexpected(code);
    return MainPort(port);
  }
  MainPort(MainPort&& other) noexcept : port_(std::exchange(other.port_, MACH_PORT_NULL)) {}
  MainPort& operator=(MainPort&& other) noexcept {
    std::swap(port_, other.port_);
    return *this;
  }
  ~MainPort() {
    if (port_ != MACH_PORT_NULL) mach_port_deallocate(mach_task_self(), port_);
  }

  mach_port_t port() const noexcept { return port_; }

 private:
  explicit MainPort(mach_port_t owned) noexcept : port_(owned) {}

  mach_port_t port_;
};

}  // namespace vantrell::host
