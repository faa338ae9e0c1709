// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "host/Transport.h"
#include "host/linux/BusChannel.h"
#include "host/linux/ServiceObject.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// One client on a socket of its own, served by a thread of its own: nothing that it sends or leaves out harms another
/// client. Requests are delivered on that thread, in order. Requests that were sent as a whole are delivered even where
/// the client has gone in the meantime.
class PeerConnection final : public Connection, private ServiceCallSink {
 public:
  /// `ended` is called once, on the connection's thread, as the last thing that it does.
  PeerConnection(FileDescriptor socket, const TransportLimits& limits, std::function<void()> ended);
  /// Ends the connection and waits for its thread. Not from that thread.
  ~PeerConnection() override;

  void setExportedObject(QELPrivilegedToolProtocol& object) override { object_ = &object; }
  void resume() override;

  bool isResumed() const noexcept { return thread_.joinable(); }
  /// Ends the connection without waiting for its thread.
  void stop() noexcept;

 private:
  int callArrived(ServiceMethod method, sd_bus_message* message, sd_bus_error* error) override;
  void run() noexcept;
  bool start();
  bool step();

  FileDescriptor socket_;
  const TransportLimits limits_;
  std::function<void()> ended_;
  QELPrivilegedToolProtocol* object_ = nullptr;
  const std::shared_ptr<BusChannel> channel_;
  const std::shared_ptr<ClientAccount> account_;
  std::vector<IncomingCall> arrived_;  // guarded by the channel's lock
  bool stopping_ = false;              // likewise
  bool delivered_ = false;             // the thread's own: whether the step before handed calls on
  std::thread thread_;
};

}  // namespace vantrell::host
