// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#import <Foundation/Foundation.h>

#include "host/Transport.h"

namespace vantrell::host {

/// Names a listener in this process or another one. For Objective-C++ sources only.
class ListenerEndpoint final : public Endpoint {
 public:
  explicit ListenerEndpoint(NSXPCListenerEndpoint* endpoint) noexcept : endpoint_(endpoint) {}
  NSXPCListenerEndpoint* get() const noexcept { return endpoint_; }

 private:
  NSXPCListenerEndpoint* const endpoint_;
};

}  // namespace vantrell::host
