// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/BusChannel.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>

#include "host/linux/BusState.h"

namespace vantrell::host {

namespace {

/// Of the messages inside sd-bus: answers that it makes by itself (errors, introspection).
constexpr std::uint64_t kOwnAnswersLimit = 256;

}  // namespace

BusChannel::BusChannel() : wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!wakeUp_) throw std::system_error(errno, std::generic_category(), "eventfd");
}

BusChannel::~BusChannel() {
  const Lock lock(mutex_);
  close();
}

void BusChannel::close() noexcept {
  open_ = false;
  waiting_.clear();
  waitingBytes_ = 0;
  if (bus_) sd_bus_close(bus_.get());
}

void BusChannel::send(BusMessage message, std::size_t bytes) {
  if (!isOpen()) return;
  waiting_.push_back({std::move(message), bytes});
  waitingBytes_ += bytes;
  if (waiting_.size() > 1) return;  // the pump is at it
  flush();
  wakeForOutput();
}

void BusChannel::flush() {
  while (!waiting_.empty() && sd_bus_is_ready(bus_.get()) > 0 && queuedMessages(bus_.get()) == 0) {
    const Waiting next = std::move(waiting_.front());
    waiting_.pop_front();
    waitingBytes_ -= next.bytes;
    if (sparesUnread_ && peerHasClosed()) continue;
    // A failure means that the connection has ended, which the pump finds out by itself.
    sd_bus_send(bus_.get(), next.message.get(), nullptr);
  }
}

int BusChannel::process(bool reading, std::size_t waitingLimit) {
  if (!isOpen()) return -ENOTCONN;
  flush();
  reads_ = reading && !isCongested(waitingLimit);
  if (!reads_ && (readyFor_ & (POLLOUT | POLLHUP | POLLERR)) == 0) return 0;
  readyFor_ = 0;
  const int result = sd_bus_process(bus_.get(), nullptr);
  flush();  // the step may have ended the handshake, or made room
  return result;
}

void BusChannel::wait(Lock& lock, std::optional<std::chrono::milliseconds> limit) {
  pollfd watched[2] = {{wakeUp_.get(), POLLIN, 0}, {-1, 0, 0}};
  int timeout = -1;
  if (isOpen()) {
    const int events = sd_bus_get_events(bus_.get());
    if (events < 0) return;
    watched[1] = {sd_bus_get_fd(bus_.get()), static_cast<short>(reads_ ? events : events & ~POLLIN), 0};
    timeout = millisecondsUntilDue(bus_.get());
  }
  if (limit) {
    const int most = static_cast<int>(std::clamp<std::int64_t>(limit->count(), 0, INT32_MAX));
    timeout = timeout < 0 ? most : std::min(timeout, most);
  }
  pumpWatchesOutput_ = (watched[1].events & POLLOUT) != 0;
  lock.unlock();
  poll(watched, 2, timeout);
  if (watched[0].revents & POLLIN) {
    eventfd_t ignored = 0;
    eventfd_read(wakeUp_.get(), &ignored);
  }
  lock.lock();
  pumpWatchesOutput_ = false;
  readyFor_ = watched[1].revents;
}

void BusChannel::wake() const noexcept {
  eventfd_write(wakeUp_.get(), 1);
}

void BusChannel::wakeForOutput() const noexcept {
  if (!pumpWatchesOutput_ && !isDrained()) wake();
}

bool BusChannel::isDrained() const noexcept {
  return waiting_.empty() && (!isOpen() || queuedMessages(bus_.get()) == 0);
}

bool BusChannel::isCongested(std::size_t limit) const noexcept {
  return waitingBytes_ > limit || queuedMessages(bus_.get()) > kOwnAnswersLimit;
}

bool BusChannel::peerHasClosed() const noexcept {
  pollfd socket{sd_bus_get_fd(bus_.get()), 0, 0};
  return poll(&socket, 1, 0) > 0 && (socket.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace vantrell::host
