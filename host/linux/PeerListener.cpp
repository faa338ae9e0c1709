// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PeerListener.h"

#include <cerrno>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

/// How long to leave a client waiting where this process has no descriptor or memory left for it.
constexpr int kShortageMilliseconds = 100;

bool isShortage(int number) noexcept {
  return number == EMFILE || number == ENFILE || number == ENOBUFS || number == ENOMEM;
}

bool isPassing(int number) noexcept {
  return number == EAGAIN || number == EINTR || number == ECONNABORTED || number == EPROTO || number == EPERM;
}

}  // namespace

PeerListener::PeerListener(FileDescriptor listeningSocket, SystemLog& systemLog, const TransportLimits& limits)
    : socket_(std::move(listeningSocket)),
      wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      systemLog_(systemLog),
      limits_(limits) {}

PeerListener::~PeerListener() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake();
  if (thread_.joinable()) thread_.join();
  // All are told before the first is waited for.
  for (const auto& [connection, owner] : connections_) connection->stop();
  connections_.clear();
}

void PeerListener::setDelegate(ListenerDelegate* delegate) {
  const std::lock_guard lock(delegateMutex_);
  delegate_ = delegate;
}

ErrorOrNil PeerListener::resume() {
  const std::lock_guard lock(mutex_);
  if (!wakeUp_) return errorFromErrno(EMFILE);
  if (invalid_) return errorFromErrno(EINVAL);
  suspended_ = false;
  if (thread_.joinable()) {
    wake();
    return std::nullopt;
  }
  // Another process may take the client that this one was woken for.
  const int flags = fcntl(socket_.get(), F_GETFL);
  if (flags < 0 || fcntl(socket_.get(), F_SETFL, flags | O_NONBLOCK) != 0) return errorFromErrno();
  thread_ = std::thread([this] { run(); });
  return std::nullopt;
}

void PeerListener::suspend() {
  const std::lock_guard lock(mutex_);
  suspended_ = true;
  wake();
}

void PeerListener::invalidate() {
  const std::lock_guard lock(mutex_);
  invalid_ = true;
  wake();
}

void PeerListener::wake() const noexcept {
  eventfd_write(wakeUp_.get(), 1);
}

void PeerListener::logError(const char* message) noexcept {
  systemLog_.write({}, {}, LogLevel::Error, message);
}

void PeerListener::run() noexcept {
  while (!isStopping()) {
    reapEnded();
    if (waitForClient()) acceptClient();
  }
}

bool PeerListener::isStopping() {
  const std::lock_guard lock(mutex_);
  return stopping_;
}

bool PeerListener::waitForClient() {
  pollfd watched[2] = {{wakeUp_.get(), POLLIN, 0}, {socket_.get(), POLLIN, 0}};
  {
    const std::lock_guard lock(mutex_);
    if (suspended_ || invalid_) watched[1].fd = -1;
  }
  poll(watched, 2, -1);
  eventfd_t ignored = 0;
  if (watched[0].revents != 0) eventfd_read(wakeUp_.get(), &ignored);
  return watched[1].revents != 0;
}

void PeerListener::acceptClient() {
  FileDescriptor client;
  int failure = 0;
  {
    // Once `suspend` or `invalidate` has returned, the socket is left alone.
    const std::lock_guard lock(mutex_);
    if (suspended_ || invalid_ || stopping_) return;
    client.reset(accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client) failure = errno;
    if (!client && !isShortage(failure) && !isPassing(failure)) invalid_ = true;
  }
  if (client) {
    take(std::move(client));
  } else if (isShortage(failure)) {
    pollfd watched{wakeUp_.get(), POLLIN, 0};
    poll(&watched, 1, kShortageMilliseconds);
  } else if (!isPassing(failure)) {
    logError("The service's socket accepts no more connections.");
  }
}

void PeerListener::take(FileDescriptor socket) try {
  if (connections_.size() >= limits_.connections) {
    if (!std::exchange(full_, true)) logError("Too many connections: new ones are closed.");
    return;
  }
  full_ = false;
  serve(std::move(socket));
} catch (const std::exception&) {
  logError("No thread or memory for a new connection: it is closed.");
}

void PeerListener::serve(FileDescriptor socket) {
  // The connection reports its end by its address, which is known only once it is made.
  const auto address = std::make_shared<PeerConnection*>(nullptr);
  auto connection = std::make_unique<PeerConnection>(std::move(socket), limits_, [this, address] {
    const std::lock_guard lock(mutex_);
    ended_.push_back(*address);
    wake();
  });
  *address = connection.get();
  const auto place = connections_.emplace(connection.get(), std::move(connection)).first;
  bool accepted = false;
  {
    const std::lock_guard lock(delegateMutex_);
    accepted = delegate_ && delegate_->listenerShouldAcceptNewConnection(*this, *place->second);
  }
  if (!accepted || !place->second->isResumed()) connections_.erase(place);
}

void PeerListener::reapEnded() {
  std::vector<PeerConnection*> ended;
  {
    const std::lock_guard lock(mutex_);
    ended.swap(ended_);
  }
  for (PeerConnection* connection : ended) connections_.erase(connection);
}

}  // namespace vantrell::host
