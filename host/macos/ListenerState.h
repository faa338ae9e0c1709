// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

#import <Foundation/Foundation.h>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/macos/CallGate.h"
#include "host/macos/MacConnection.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// What the platform's threads know of a listener; it outlives the listener where they still call. Safe from any
/// thread. For Objective-C++ sources only.
class ListenerState : public std::enable_shared_from_this<ListenerState> {
 public:
  ListenerState(Listener& listener, SystemLog& systemLog, const TransportLimits& limits);

  void setDelegate(ListenerDelegate* delegate);
  /// Whether new clients are taken in.
  void setOpen(bool open);

  /// Asks the delegate about a new client. False refuses it.
  bool take(NSXPCConnection* connection);

  /// Takes in nobody, dismisses all clients and waits for what is being delivered. The listener, its log and the
  /// objects of its clients are not touched after that.
  void end();

 private:
  bool admit(std::uint64_t number, std::shared_ptr<MacConnection> client);
  bool askDelegate(MacConnection& client);
  void forget(std::uint64_t number);

  Listener& listener_;
  SystemLog& systemLog_;
  const TransportLimits limits_;
  const std::shared_ptr<CallGate> gate_ = std::make_shared<CallGate>();

  std::atomic<std::uint64_t> lastNumber_ = 0;

  std::mutex delegateMutex_;
  ListenerDelegate* delegate_ = nullptr;

  std::mutex mutex_;
  std::unordered_map<std::uint64_t, std::shared_ptr<MacConnection>> clients_;
  bool open_ = false;
  bool full_ = false;
};

}  // namespace vantrell::host
