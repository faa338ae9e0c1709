// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "host/linux/BusHandles.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// One sd-bus object, the lock that guards it, and what waits to go out through it.
///
/// One thread, the pump, processes the bus and waits for its socket; any thread may send. A sender writes straight to
/// the socket where nothing waits before it, so that an answer costs no hand-over; what the socket does not take at
/// once waits here and is written by the pump. sd-bus itself is given no more than one message that it can't write,
/// because its own queue is moved as a whole for each message that leaves it.
///
/// Everything but `lock`, `mutex` and `wake` is for the holder of the lock.
class BusChannel {
 public:
  using Lock = std::unique_lock<std::mutex>;

  BusChannel();
  ~BusChannel();
  BusChannel(const BusChannel&) = delete;
  BusChannel& operator=(const BusChannel&) = delete;

  Lock lock() { return Lock(mutex_); }
  std::mutex& mutex() noexcept { return mutex_; }

  /// Takes over a bus that has been started. Before that there is none.
  void attach(Bus bus) noexcept { bus_ = std::move(bus); }
  sd_bus* bus() const noexcept { return bus_.get(); }
  bool isOpen() const noexcept { return bus_ && open_; }

  /// Closes the socket and drops what waits. The bus itself stays until its last message has gone.
  void close() noexcept;

  /// Sends, or queues behind what waits. Dropped when the channel is closed. `bytes` is the message's size, about.
  void send(BusMessage message, std::size_t bytes);

  /// True where requests that the peer sent before it closed its end matter. sd-bus drops what it has not read when a
  /// write fails, so each write then makes sure first that the peer is there.
  void setSparesUnread(bool spares) noexcept { sparesUnread_ = spares; }

  /// One step of the pump: writes what the socket takes and reads one message, handing it to its callback. More than 0
  /// when there may be more to do, 0 when it is time to `wait`, below 0 (an error number) when the connection has
  /// ended. Nothing is read without `reading`, nor while a peer that does not read has over `waitingLimit` bytes, or
  /// 256 of sd-bus's own answers, waiting for it; a message may still come along when the socket takes part of a large
  /// one.
  int process(bool reading, std::size_t waitingLimit);

  /// Waits, with the lock released, until the socket is ready for what `process` wants, `wake` is called, sd-bus's own
  /// time has come or `limit` has passed. For the pump.
  void wait(Lock& lock, std::optional<std::chrono::milliseconds> limit = std::nullopt);

  /// Ends the pump's wait, or its next one.
  void wake() const noexcept;
  /// The same, spared where the pump already waits for what a sender just left in sd-bus.
  void wakeForOutput() const noexcept;

  std::size_t waitingBytes() const noexcept { return waitingBytes_; }
  /// True when everything is with the socket.
  bool isDrained() const noexcept;

 private:
  struct Waiting {
    BusMessage message;
    std::size_t bytes;
  };

  void flush();
  bool isCongested(std::size_t limit) const noexcept;
  bool peerHasClosed() const noexcept;

  std::mutex mutex_;
  Bus bus_;
  FileDescriptor wakeUp_;
  std::deque<Waiting> waiting_;
  std::size_t waitingBytes_ = 0;
  short readyFor_ = 0;
  bool reads_ = true;
  bool open_ = true;
  bool sparesUnread_ = false;
  bool pumpWatchesOutput_ = false;
};

}  // namespace vantrell::host
