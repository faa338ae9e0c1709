// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FeedbackChannel.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <utility>

#include "host/linux/PeerBus.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

/// Tells how long a client has taken nothing. That shows in the socket's queue: the socket takes no more until a client
/// has read most of megabytes, which a slow one does not do in time. Less than one piece of the queue (some 32 KiB)
/// does not show.
class FeedbackChannel::StallClock {
 public:
  using Clock = std::chrono::steady_clock;

  /// True once the mark has not moved for `limit`.
  bool hasStalled(const FeedbackSocket& socket, std::chrono::milliseconds limit) {
    const Mark mark = markOf(socket);
    const Clock::time_point now = Clock::now();
    if (!running_ || mark != mark_) {
      running_ = true;
      since_ = now;
      mark_ = mark;
    }
    return now - since_ >= limit;
  }
  void stop() noexcept { running_ = false; }

 private:
  struct Mark {
    std::uint64_t written = 0;
    int unread = 0;
    bool operator==(const Mark&) const = default;
  };

  static Mark markOf(const FeedbackSocket& socket) noexcept { return {socket.writtenBytes(), socket.unreadBytes()}; }

  bool running_ = false;
  Clock::time_point since_;
  Mark mark_;
};

Result<std::shared_ptr<FeedbackChannel>> FeedbackChannel::make(FileDescriptor socket, SystemLog& systemLog,
                                                               const TransportLimits& limits) {
  Result<Bus> bus = makeClientBus(std::move(socket));
  if (!bus) return failure(bus.error());
  const int started = sd_bus_start(bus->get());
  auto channel = std::make_shared<FeedbackChannel>(systemLog, limits);
  // A client that has gone already is as good as one that goes the next moment.
  if (started < 0) channel->gone_ = true;
  const FeedbackSocket::Lock lock = channel->socket_.lock();
  channel->socket_.attach(*std::move(bus));
  return channel;
}

FeedbackChannel::FeedbackChannel(SystemLog& systemLog, const TransportLimits& limits)
    : systemLog_(systemLog), limits_(limits) {}

void FeedbackChannel::resume() {
  const FeedbackSocket::Lock lock = socket_.lock();
  suspended_ = false;
  socket_.setHeld(false);
  socket_.wake();
}

void FeedbackChannel::suspend() {
  const FeedbackSocket::Lock lock = socket_.lock();
  if (finishing_) return;
  suspended_ = true;
  socket_.setHeld(true);
}

void FeedbackChannel::finish() {
  const FeedbackSocket::Lock lock = socket_.lock();
  finishing_ = true;
  suspended_ = false;
  socket_.setHeld(false);
  room_.notify_all();
  socket_.wake();
}

void FeedbackChannel::abandon() {
  const FeedbackSocket::Lock lock = socket_.lock();
  abandoned_ = true;
  room_.notify_all();
  socket_.wake();
}

MarshalledMessage FeedbackChannel::takeSpare() {
  return std::exchange(spare_, {});
}

void FeedbackChannel::keepSpare(MarshalledMessage message) {
  constexpr std::size_t kLargest = 65536;
  if (message.capacity() <= kLargest) spare_ = std::move(message);
}

void FeedbackChannel::send(const Dictionary& dictionary) {
  if (gone_) return;
  FeedbackSocket::Lock lock = socket_.lock();
  if (!takesMessages()) return;
  MarshalledMessage message = takeSpare();
  if (++serial_ == 0) ++serial_;
  if (!call_.write(dictionary, serial_, message)) {
    return systemLog_.write({}, {}, LogLevel::Error, "A feedback message could not be put together.");
  }
  waitForRoom(lock, message.size());
  // A sender that was waiting when the connection was told to finish had begun before that.
  if (!gone_ && !abandoned_) socket_.send(message.bytes());
  keepSpare(std::move(message));
}

bool FeedbackChannel::hasRoomFor(std::size_t bytes) const noexcept {
  return socket_.waitingBytes() == 0 || socket_.waitingBytes() + bytes <= limits_.waitingFeedbackBytes;
}

void FeedbackChannel::waitForRoom(FeedbackSocket::Lock& lock, std::size_t bytes) {
  if (hasRoomFor(bytes)) return;
  ++waitingSenders_;
  socket_.wake();  // the clock runs from now on
  room_.wait(lock, [&] { return gone_ || finishing_ || abandoned_ || hasRoomFor(bytes); });
  --waitingSenders_;
}

void FeedbackChannel::run() noexcept {
  FeedbackSocket::Lock lock = socket_.lock();
  try {
    if (!gone_) pump(lock);
  } catch (const std::exception&) {
    gone_ = true;
  }
  socket_.close();
  room_.notify_all();
  lock.unlock();
  ended_ = true;
}

// A sender at the bound, or the connection's end, is what makes a client's slowness matter.
bool FeedbackChannel::isWaitedFor() const noexcept {
  return !suspended_ && (waitingSenders_ != 0 || finishing_);
}

void FeedbackChannel::pump(FeedbackSocket::Lock& lock) {
  StallClock clock;
  while (!abandoned_) {
    const int processed = socket_.process();
    if (processed < 0) {
      gone_ = true;
      return;
    }
    // Not at every message: a sender that is let go for one would only wait again.
    if (waitingSenders_ != 0 && socket_.waitingBytes() <= limits_.waitingFeedbackBytes / 2) room_.notify_all();
    if (processed > 0) continue;
    if (finishing_ && socket_.isDrained() && waitingSenders_ == 0) return;
    if (!isWaitedFor()) {
      clock.stop();
      socket_.wait(lock);
    } else if (!clock.hasStalled(socket_, limits_.feedbackStall)) {
      socket_.wait(lock, std::max(limits_.feedbackStall / 8, std::chrono::milliseconds(1)));
    } else {
      gone_ = true;
      return systemLog_.write({}, {}, LogLevel::Error,
                              "A client takes no feedback and counts as gone: its messages are dropped.");
    }
  }
}

}  // namespace vantrell::host
