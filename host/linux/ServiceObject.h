// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Transport.h"
#include "host/linux/BusHandles.h"
#include "host/linux/IncomingCall.h"

namespace vantrell::host {

/// Takes the requests that arrive on a bus, while its lock is held.
class ServiceCallSink {
 public:
  virtual ~ServiceCallSink() = default;
  /// Keeps the call for later and returns 1, or sets `error` and returns what sd_bus_error_set returned.
  virtual int callArrived(ServiceMethod method, sd_bus_message* message, sd_bus_error* error) = 0;
};

/// Adds the service object, introspectable, to a bus. `sink` must outlive the bus. 0 or a negative error number.
int exportServiceObject(sd_bus* bus, ServiceCallSink& sink) noexcept;

/// Hands a request to the object, or refuses it where its arguments can't be read. Without the bus's lock.
void deliver(IncomingCall call, QELPrivilegedToolProtocol& object);

}  // namespace vantrell::host
