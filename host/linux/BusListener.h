// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/linux/BusChannel.h"
#include "host/linux/SerialQueues.h"
#include "host/linux/ServiceObject.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// Serves the callers of a name on the system's message bus.
///
/// The bus knows no connections: each caller, by its unique name, counts as one from its first request until it has
/// nothing under way, and the delegate is asked for it then. One thread reads the bus; each caller's requests are
/// delivered in order, those of different callers at the same time.
///
/// Letting the listener go waits for its threads; not from one of these.
class BusListener final : public Listener, private ServiceCallSink {
 public:
  /// `systemLog` must outlive the listener.
  BusListener(std::string_view serviceName, SystemLog& systemLog, const TransportLimits& limits);
  ~BusListener() override;

  /// Waits until the present delegate is not being asked; not from within the delegate.
  void setDelegate(ListenerDelegate* delegate) override;
  /// Connects to the bus and claims the name; fails with POSIX error 17 where another process has it.
  ErrorOrNil resume() override;
  void suspend() override;
  void invalidate() override;

 private:
  class Caller;
  struct Arrival {
    std::string sender;
    std::shared_ptr<Caller> caller;
    IncomingCall call;
  };

  int callArrived(ServiceMethod method, sd_bus_message* message, sd_bus_error* error) override;
  std::shared_ptr<Caller> callerNamed(const char* sender);
  ErrorOrNil claimName();
  void run() noexcept;
  bool step();
  void post(Arrival arrival);
  void serve(Caller& caller, IncomingCall call);
  bool mayServe(Caller& caller);

  const std::string serviceName_;
  SystemLog& systemLog_;
  const TransportLimits limits_;

  std::mutex delegateMutex_;
  ListenerDelegate* delegate_ = nullptr;

  const std::shared_ptr<BusChannel> channel_;
  // Guarded by the channel's lock.
  std::unordered_map<std::string, std::weak_ptr<Caller>> callers_;
  std::size_t callersToPurgeAt_ = 64;
  std::vector<Arrival> arrived_;
  bool suspended_ = false;
  bool invalid_ = false;
  bool stopping_ = false;

  std::thread thread_;
  std::unique_ptr<SerialQueues> queues_;
};

}  // namespace vantrell::host
