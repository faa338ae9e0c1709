// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/ToolProtocols.h"

namespace vantrell::host {

NSXPCInterface* interfaceForToolProtocol() {
  return [NSXPCInterface interfaceWithProtocol:@protocol(QELPrivilegedToolProtocol)];
}

NSXPCInterface* interfaceForFeedbackProtocol() {
  return [NSXPCInterface interfaceWithProtocol:@protocol(QELPrivilegedOperationFeedbackProtocol)];
}

}  // namespace vantrell::host
