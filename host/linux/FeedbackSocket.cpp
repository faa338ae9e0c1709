// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FeedbackSocket.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <linux/sockios.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "host/linux/BusState.h"

namespace vantrell::host {

FeedbackSocket::FeedbackSocket() : wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!wakeUp_) throw std::system_error(errno, std::generic_category(), "eventfd");
}

FeedbackSocket::~FeedbackSocket() {
  const Lock lock(mutex_);
  close();
}

void FeedbackSocket::close() noexcept {
  open_ = false;
  waiting_.clear();
  if (bus_) sd_bus_close(bus_.get());
}

bool FeedbackSocket::mayWrite() const noexcept {
  if (!isOpen() || held_ || failed_) return false;
  return isWithinMessage_ || (sd_bus_is_ready(bus_.get()) > 0 && queuedMessages(bus_.get()) == 0);
}

// How many bytes the socket took.
std::size_t FeedbackSocket::write(std::string_view bytes) noexcept {
  ssize_t count = 0;
  do {
    count = ::send(sd_bus_get_fd(bus_.get()), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    failed_ = errno != EAGAIN;
    return 0;
  }
  writtenBytes_ += static_cast<std::size_t>(count);
  return static_cast<std::size_t>(count);
}

void FeedbackSocket::send(std::string_view message) {
  if (!isOpen() || failed_) return;
  if (waiting_.empty() && mayWrite()) {
    const std::size_t written = write(message);
    if (written == message.size()) return;
    isWithinMessage_ = written != 0;
    message.remove_prefix(written);
  }
  try {
    waiting_.append(message);
  } catch (...) {
    failed_ = true;  // part of a message may not go out
    wake();
    throw;
  }
  if (!held_ && !pumpWatchesOutput_) wake();
}

void FeedbackSocket::flush() noexcept {
  while (!waiting_.empty() && mayWrite()) {
    const std::string_view front = waiting_.front();
    const std::size_t written = write(front);
    waiting_.consume(written);
    if (written != 0) isWithinMessage_ = !waiting_.empty();
    if (written != front.size()) return;
  }
}

int FeedbackSocket::process() {
  if (!isOpen()) return -ENOTCONN;
  flush();
  const int result = isWithinMessage_ ? 0 : sd_bus_process(bus_.get(), nullptr);
  if (result > 0) flush();  // the step may have ended the handshake
  return failed_ ? -EPIPE : result;
}

void FeedbackSocket::wait(Lock& lock, std::optional<std::chrono::milliseconds> limit) {
  pollfd watched[2] = {{wakeUp_.get(), POLLIN, 0}, {-1, 0, 0}};
  int timeout = -1;
  if (isOpen()) {
    const int events = isWithinMessage_ ? 0 : sd_bus_get_events(bus_.get());
    if (events < 0) return;
    const int output = !waiting_.empty() && mayWrite() ? POLLOUT : 0;
    watched[1] = {sd_bus_get_fd(bus_.get()), static_cast<short>(events | output), 0};
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
  // Where nothing is written or read at present, nothing else would tell.
  if ((watched[1].revents & (POLLHUP | POLLERR)) != 0) failed_ = true;
}

void FeedbackSocket::wake() const noexcept {
  eventfd_write(wakeUp_.get(), 1);
}

bool FeedbackSocket::isDrained() const noexcept {
  return waiting_.empty() && (!isOpen() || queuedMessages(bus_.get()) == 0);
}

int FeedbackSocket::unreadBytes() const noexcept {
  int bytes = 0;
  ioctl(sd_bus_get_fd(bus_.get()), SIOCOUTQ, &bytes);
  return bytes;
}

}  // namespace vantrell::host
