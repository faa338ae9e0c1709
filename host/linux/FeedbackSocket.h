// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>

#include "host/linux/BusHandles.h"
#include "host/linux/ByteQueue.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// The socket to a client's feedback endpoint, and what waits to go out through it.
///
/// sd-bus takes the handshake and whatever the client sends; the messages go past it, as whole ones, at times when it
/// has nothing to write itself. While part of a message is written, what the client sends is left in the socket: sd-bus
/// might answer it.
///
/// One thread, the pump, calls `process` and `wait`; any thread may send. A sender writes straight to the socket where
/// nothing waits before it; what the socket does not take at once is written by the pump.
///
/// Everything but `lock` and `wake` is for the holder of the lock.
class FeedbackSocket {
 public:
  using Lock = std::unique_lock<std::mutex>;

  FeedbackSocket();
  ~FeedbackSocket();
  FeedbackSocket(const FeedbackSocket&) = delete;
  FeedbackSocket& operator=(const FeedbackSocket&) = delete;

  Lock lock() { return Lock(mutex_); }

  /// Takes over a bus that has been started. Before that there is none.
  void attach(Bus bus) noexcept { bus_ = std::move(bus); }
  /// Closes the socket and drops what waits.
  void close() noexcept;

  /// Sends a whole message, or queues it behind what waits. Dropped when the socket is closed.
  void send(std::string_view message);

  /// Held bytes wait here until they are let go (then `wake` the pump).
  void setHeld(bool held) noexcept { held_ = held; }

  /// One step of the pump. More than 0 when there may be more to do, 0 when it is time to `wait`, below 0 (an error
  /// number) when the connection has ended.
  int process();

  /// Waits, with the lock released, until there is something to `process`, `wake` is called or `limit` has passed.
  void wait(Lock& lock, std::optional<std::chrono::milliseconds> limit = std::nullopt);

  /// Ends the pump's wait, or its next one.
  void wake() const noexcept;

  std::size_t waitingBytes() const noexcept { return waiting_.size(); }
  /// True when everything is with the socket.
  bool isDrained() const noexcept;
  /// Grows with each byte that the socket takes.
  std::uint64_t writtenBytes() const noexcept { return writtenBytes_; }
  /// What the client has not read, as the kernel counts it.
  int unreadBytes() const noexcept;

 private:
  bool isOpen() const noexcept { return bus_ && open_; }
  bool mayWrite() const noexcept;
  std::size_t write(std::string_view bytes) noexcept;
  void flush() noexcept;

  std::mutex mutex_;
  Bus bus_;
  FileDescriptor wakeUp_;
  ByteQueue waiting_;
  std::uint64_t writtenBytes_ = 0;
  bool open_ = true;
  bool held_ = true;
  bool isWithinMessage_ = false;  // what was written ends within a message, for all that is known
  bool failed_ = false;           // the socket takes no more
  bool pumpWatchesOutput_ = false;
};

}  // namespace vantrell::host
