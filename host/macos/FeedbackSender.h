// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

#import <Foundation/Foundation.h>

#include "foundation/Dictionary.h"
#include "host/SystemLog.h"
#include "host/macos/ToolProtocols.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// What goes on behind a feedback connection: the messages that wait for the client, and the judgement whether it is
/// still there. It outlives the connection where messages are left to deliver. Safe from any thread. For Objective-C++
/// sources only.
///
/// The platform queues without end and drops what is unsent when a connection is invalidated. From macOS 10.15 on a
/// barrier tells when what was sent before has left this process, which happens only as the client takes it: barriers
/// among the messages show how much waits, and an invalidated connection ends behind the last one. On 10.13 and 10.14
/// nothing tells: what waits is not bounded there, no client counts as gone for its slowness, and an invalidated
/// connection has a fixed time for its rest.
class FeedbackSender : public std::enable_shared_from_this<FeedbackSender> {
 public:
  /// Nothing is sent before `resume`. `systemLog` must outlive the sender or its being abandoned.
  static std::shared_ptr<FeedbackSender> make(NSXPCListenerEndpoint* endpoint, SystemLog& systemLog,
                                              const TransportLimits& limits);

  FeedbackSender(NSXPCConnection* connection, SystemLog& systemLog, const TransportLimits& limits);
  ~FeedbackSender();
  FeedbackSender(const FeedbackSender&) = delete;
  FeedbackSender& operator=(const FeedbackSender&) = delete;

  void resume();
  void suspend();
  /// Waits while the bound is reached.
  void send(const Dictionary& message);
  /// Takes no more messages and ends once those it has are delivered, or the client counts as gone.
  void finish();
  /// Ends at once.
  void abandon();

  bool isClientGone() const noexcept { return gone_; }

 private:
  using Clock = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;
  enum class Phase : std::uint8_t { Open, Finishing, Ended };
  struct Message {
    NSDictionary* dictionary;
    std::size_t bytes;
  };

  void start();
  bool hasRoomFor(std::size_t bytes) const noexcept;
  void waitForRoom(Lock& lock, std::size_t bytes);

  // Under the lock.
  void hand(const Message& message);
  void handHeld();
  void raiseBarrier();
  void endIfDelivered();
  void giveUp();
  void end();

  void passedBarrier(std::size_t bytes);
  void clientLeft();
  void watchRest(std::uint64_t progress);
  void checkRest(std::uint64_t progress);

  SystemLog& systemLog_;
  const TransportLimits limits_;
  const bool hasBarriers_;
  // May be called under the lock: what the platform tells goes through another queue before it is heard here.
  NSXPCConnection* const connection_;
  id<QELPrivilegedOperationFeedbackProtocol> proxy_;

  std::mutex mutex_;
  std::condition_variable room_;
  Phase phase_ = Phase::Open;
  bool suspended_ = true;
  std::deque<Message> held_;        // while suspended
  std::size_t waitingBytes_ = 0;    // held, or sent and not known to have left
  std::size_t unguardedBytes_ = 0;  // sent behind the last barrier
  std::size_t barriers_ = 0;        // not passed yet
  std::size_t waitingSenders_ = 0;
  std::uint64_t progress_ = 0;  // counts signs of the client's taking something
  std::atomic<bool> gone_ = false;
};

}  // namespace vantrell::host
