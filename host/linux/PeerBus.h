// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Result.h"
#include "host/linux/BusHandles.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

// Peer-to-peer buses over one end of a connected Unix stream socket, with EXTERNAL authentication and descriptor
// passing. Neither is started: objects are added first.

/// The end that waits for the other's handshake.
Result<Bus> makeServerBus(FileDescriptor socket);

/// The end that begins the handshake.
Result<Bus> makeClientBus(FileDescriptor socket);

/// A new call of a method; no destination where there is no message bus.
Result<BusMessage> makeMethodCall(sd_bus* bus, const char* destination, const char* path, const char* interface,
                                  const char* method);

}  // namespace vantrell::host
