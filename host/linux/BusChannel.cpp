// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/BusChannel.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <time.h>

namespace vantrell::host {

namespace {

/// Messages inside sd-bus: the one that it was given, and answers that it makes by itself (errors, introspection).
std::uint64_t queuedInside(sd_bus* bus) noexcept {
  std::uint64_t count = 0;
  return sd_bus_get_n_queued_write(bus, &count) < 0 ? 0 : count;
}

constexpr std::uint64_t kOwnAnswersLimit = 256;

std::uint64_t monotonicMicroseconds() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

// Milliseconds until sd-bus wants to be called again, rounded up; -1 for never.
int busTimeout(sd_bus* bus) noexcept {
  std::uint64_t until = UINT64_MAX;
  if (sd_bus_get_timeout(bus, &until) < 0 || until == UINT64_MAX) return -1;
  if (until == 0) return 0;
  const std::uint64_t now = monotonicMicroseconds();
  if (until <= now) return 0;
  return static_cast<int>(std::min<std::uint64_t>((until - now + 999) / 1000, INT32_MAX));
}

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
  if (!held_) wakeForOutput();
}

void BusChannel::flush() {
  while (!waiting_.empty() && !held_ && sd_bus_is_ready(bus_.get()) > 0 && queuedInside(bus_.get()) == 0) {
    const Waiting next = std::move(waiting_.front());
    waiting_.pop_front();
    waitingBytes_ -= next.bytes;
    ++sentCount_;
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
    timeout = busTimeout(bus_.get());
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
  return waiting_.empty() && (!isOpen() || queuedInside(bus_.get()) == 0);
}

bool BusChannel::isCongested(std::size_t limit) const noexcept {
  return waitingBytes_ > limit || queuedInside(bus_.get()) > kOwnAnswersLimit;
}

bool BusChannel::peerHasClosed() const noexcept {
  pollfd socket{sd_bus_get_fd(bus_.get()), 0, 0};
  return poll(&socket, 1, 0) > 0 && (socket.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace vantrell::host
