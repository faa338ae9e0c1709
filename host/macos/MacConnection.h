// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>

#import <Foundation/Foundation.h>

#include "host/Transport.h"
#include "host/macos/ToolExport.h"

namespace vantrell::host {

/// One client of a listener. Letting it go ends nothing. For Objective-C++ sources only.
class MacConnection final : public Connection {
 public:
  /// `gate` is the listener's. `left` is called when the client has gone or was dismissed, on a thread of the
  /// platform's.
  MacConnection(NSXPCConnection* connection, std::shared_ptr<CallGate> gate, const TransportLimits& limits,
                std::function<void()> left);

  void setExportedObject(QELPrivilegedToolProtocol& object) override;
  void resume() override;

  bool isResumed() const noexcept { return resumed_; }
  /// Ends the connection without waiting; no request is delivered or answered that isn't already.
  void dismiss();

 private:
  NSXPCConnection* const connection_;
  const std::shared_ptr<ToolClient> client_;
  std::function<void()> left_;
  bool resumed_ = false;
};

}  // namespace vantrell::host
