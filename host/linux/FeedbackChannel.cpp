// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FeedbackChannel.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <utility>

#include <linux/sockios.h>
#include <sys/ioctl.h>

#include "host/posix/ErrorNumbers.h"
#include "host/linux/PeerBus.h"
#include "host/linux/WireNames.h"
#include "host/linux/WireWriter.h"

namespace vantrell::host {

/// Tells how long a client has taken nothing. That shows in the socket's queue: the socket takes no more until a client
/// has read most of megabytes, which a slow one does not do in time. Less than one piece of the queue (some 32 KiB)
/// does not show.
class FeedbackChannel::StallClock {
 public:
  using Clock = std::chrono::steady_clock;

  /// True once the mark has not moved for `limit`.
  bool hasStalled(const BusChannel& channel, std::chrono::milliseconds limit) {
    const Mark mark = markOf(channel);
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
    std::size_t sent = 0;
    int inSocket = 0;
    bool operator==(const Mark&) const = default;
  };

  static Mark markOf(const BusChannel& channel) noexcept {
    Mark mark{channel.sentCount(), 0};
    ioctl(sd_bus_get_fd(channel.bus()), SIOCOUTQ, &mark.inSocket);
    return mark;
  }

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
  const BusChannel::Lock lock = channel->channel_.lock();
  channel->channel_.attach(*std::move(bus));
  return channel;
}

FeedbackChannel::FeedbackChannel(SystemLog& systemLog, const TransportLimits& limits)
    : systemLog_(systemLog), limits_(limits) {
  channel_.setHeld(true);
}

void FeedbackChannel::resume() {
  const BusChannel::Lock lock = channel_.lock();
  suspended_ = false;
  channel_.setHeld(false);
  channel_.wake();
}

void FeedbackChannel::suspend() {
  const BusChannel::Lock lock = channel_.lock();
  if (finishing_) return;
  suspended_ = true;
  channel_.setHeld(true);
}

void FeedbackChannel::finish() {
  const BusChannel::Lock lock = channel_.lock();
  finishing_ = true;
  suspended_ = false;
  channel_.setHeld(false);
  room_.notify_all();
  channel_.wake();
}

void FeedbackChannel::abandon() {
  const BusChannel::Lock lock = channel_.lock();
  abandoned_ = true;
  room_.notify_all();
  channel_.wake();
}

BusMessage FeedbackChannel::makeMessage(const Dictionary& dictionary, std::size_t& bytes) {
  Result<BusMessage> message =
      makeMethodCall(channel_.bus(), nullptr, kFeedbackPath.text, kFeedbackInterface, kFeedbackMethod);
  if (!message) return nullptr;
  WireWriter writer(message->get(), Unsendable::Omit);
  writer.dictionary(dictionary);
  bytes = writer.bytes() + 256;  // about what a header and sd-bus's own bookkeeping take
  return writer.status() < 0 ? nullptr : *std::move(message);
}

void FeedbackChannel::send(const Dictionary& dictionary) {
  if (gone_) return;
  BusChannel::Lock lock = channel_.lock();
  if (gone_ || finishing_ || abandoned_) return;
  std::size_t bytes = 0;
  BusMessage message = makeMessage(dictionary, bytes);
  if (!message) return systemLog_.write({}, {}, LogLevel::Error, "A feedback message could not be put together.");
  waitForRoom(lock, bytes);
  // A sender that was waiting when the connection was told to finish had begun before that.
  if (!gone_ && !abandoned_) channel_.send(std::move(message), bytes);
}

bool FeedbackChannel::hasRoomFor(std::size_t bytes) const noexcept {
  return channel_.waitingBytes() == 0 || channel_.waitingBytes() + bytes <= limits_.waitingFeedbackBytes;
}

void FeedbackChannel::waitForRoom(BusChannel::Lock& lock, std::size_t bytes) {
  if (hasRoomFor(bytes)) return;
  ++waitingSenders_;
  channel_.wake();  // the clock runs from now on
  room_.wait(lock, [&] { return gone_ || finishing_ || abandoned_ || hasRoomFor(bytes); });
  --waitingSenders_;
}

void FeedbackChannel::run() noexcept {
  BusChannel::Lock lock = channel_.lock();
  try {
    if (!gone_) pump(lock);
  } catch (const std::exception&) {
    gone_ = true;
  }
  channel_.close();
  room_.notify_all();
  lock.unlock();
  ended_ = true;
}

// A sender at the bound, or the connection's end, is what makes a client's slowness matter.
bool FeedbackChannel::isWaitedFor() const noexcept {
  return !suspended_ && (waitingSenders_ != 0 || finishing_);
}

void FeedbackChannel::pump(BusChannel::Lock& lock) {
  StallClock clock;
  while (!abandoned_) {
    const int processed = channel_.process(true, SIZE_MAX);
    if (processed < 0) {
      gone_ = true;
      return;
    }
    // Not at every message: a sender that is let go for one would only wait again.
    if (waitingSenders_ != 0 && channel_.waitingBytes() <= limits_.waitingFeedbackBytes / 2) room_.notify_all();
    if (processed > 0) continue;
    if (finishing_ && channel_.isDrained() && waitingSenders_ == 0) return;
    if (!isWaitedFor()) {
      clock.stop();
      channel_.wait(lock);
    } else if (!clock.hasStalled(channel_, limits_.feedbackStall)) {
      channel_.wait(lock, std::max(limits_.feedbackStall / 8, std::chrono::milliseconds(1)));
    } else {
      gone_ = true;
      return systemLog_.write({}, {}, LogLevel::Error,
                              "A client takes no feedback and counts as gone: its messages are dropped.");
    }
  }
}

}  // namespace vantrell::host
