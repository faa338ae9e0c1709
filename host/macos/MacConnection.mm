// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacConnection.h"

#include <utility>

namespace vantrell::host {

MacConnection::MacConnection(NSXPCConnection* connection, std::shared_ptr<CallGate> gate, const TransportLimits& limits,
                             std::function<void()> left)
    : connection_(connection), client_(std::make_shared<ToolClient>(std::move(gate), limits)), left_(std::move(left)) {}

void MacConnection::setExportedObject(QELPrivilegedToolProtocol& object) {
  client_->object = &object;
}

void MacConnection::resume() {
  if (!client_->object || resumed_) return;
  resumed_ = true;
  connection_.exportedInterface = interfaceForToolProtocol();
  // The exported object knows the client but not the connection, which keeps it: neither would ever go.
  connection_.exportedObject = [[QELToolExport alloc] initWithClient:client_];
  const std::shared_ptr<ToolClient> client = client_;
  const std::function<void()> left = left_;
  __weak NSXPCConnection* const connection = connection_;
  connection_.interruptionHandler = ^{
    [connection invalidate];
  };
  // What arrived before may still be on its way to the object: nothing says that this comes last.
  connection_.invalidationHandler = ^{
    client->isGone = true;
    left();
  };
  [connection_ resume];
}

void MacConnection::dismiss() {
  client_->isDismissed = true;
  // The listener itself invalidates what it refuses, resumed or not.
  if (resumed_) [connection_ invalidate];
}

}  // namespace vantrell::host
