// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>

#include "foundation/Dictionary.h"
#include "foundation/Result.h"
#include "host/SystemLog.h"
#include "host/linux/FeedbackCall.h"
#include "host/linux/FeedbackSocket.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// What goes on behind a feedback connection: the handshake with the client, the messages that wait for it, and the
/// judgement whether it is still there. It outlives the connection where messages are left to deliver.
///
/// Safe from any thread; one thread calls `run`.
class FeedbackChannel {
 public:
  /// Begins the handshake; no message goes out before `resume`. `systemLog` must outlive the channel.
  static Result<std::shared_ptr<FeedbackChannel>> make(FileDescriptor socket, SystemLog& systemLog,
                                                       const TransportLimits& limits);

  FeedbackChannel(SystemLog& systemLog, const TransportLimits& limits);

  void resume();
  void suspend();
  /// Waits while the bound is reached.
  void send(const Dictionary& message);
  /// Takes no more messages and ends once those it has are delivered, or the client counts as gone.
  void finish();
  /// Ends at once.
  void abandon();

  bool isClientGone() const noexcept { return gone_; }
  bool hasEnded() const noexcept { return ended_; }

  /// Works until the end; on a thread of its own.
  void run() noexcept;

 private:
  class StallClock;

  MarshalledMessage takeSpare();
  void keepSpare(MarshalledMessage message);
  bool takesMessages() const noexcept { return !gone_ && !finishing_ && !abandoned_; }
  bool hasRoomFor(std::size_t bytes) const noexcept;
  void waitForRoom(FeedbackSocket::Lock& lock, std::size_t bytes);
  void pump(FeedbackSocket::Lock& lock);
  bool isWaitedFor() const noexcept;

  SystemLog& systemLog_;
  const TransportLimits limits_;
  const FeedbackCall call_;
  FeedbackSocket socket_;
  std::condition_variable room_;
  // Guarded by the socket's lock.
  MarshalledMessage spare_;
  std::uint32_t serial_ = 0;
  std::size_t waitingSenders_ = 0;
  bool suspended_ = true;
  bool finishing_ = false;
  bool abandoned_ = false;

  std::atomic<bool> gone_ = false;
  std::atomic<bool> ended_ = false;
};

}  // namespace vantrell::host
