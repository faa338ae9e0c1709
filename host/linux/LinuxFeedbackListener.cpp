// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFeedbackListener.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>
#include <systemd/sd-id128.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

Result<std::unique_ptr<FeedbackListener>> LinuxFeedbackListener::make(Handler handler) try {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return errnoFailure();
  FileDescriptor own(ends[0]);
  FileDescriptor endpoint(ends[1]);
  // Each end has its own mode: this one is read by a thread that has nothing else to do.
  if (fcntl(endpoint.get(), F_SETFL, O_NONBLOCK) != 0) return errnoFailure();
  sd_id128_t identifier{};
  if (const int result = sd_id128_randomize(&identifier); result < 0) return errnoFailure(-result);
  char text[SD_ID128_STRING_MAX];
  return std::make_unique<LinuxFeedbackListener>(std::move(handler), std::move(own), std::move(endpoint),
                                                 sd_id128_to_string(identifier, text));
} catch (const std::system_error& error) {
  return errnoFailure(error.code().value());
}

LinuxFeedbackListener::LinuxFeedbackListener(Handler handler, FileDescriptor socket, FileDescriptor endpoint,
                                             std::string identifier)
    : handler_(std::move(handler)),
      socket_(std::move(socket)),
      receiver_(std::move(identifier)),
      endpoint_(std::move(endpoint)),
      thread_([this] { run(); }) {}

LinuxFeedbackListener::~LinuxFeedbackListener() {
  stopping_ = true;
  // Ends the thread's wait; the descriptor itself has to outlive it.
  shutdown(socket_.get(), SHUT_RDWR);
  thread_.join();
}

FileDescriptor LinuxFeedbackListener::takeEndpoint() noexcept {
  const std::lock_guard lock(mutex_);
  return std::move(endpoint_);
}

void LinuxFeedbackListener::run() noexcept {
  try {
    while (takeWhatArrives() && sendAnswers()) {
    }
  } catch (const std::bad_alloc&) {
  }
  // The service sees that nobody reads any more.
  shutdown(socket_.get(), SHUT_RDWR);
  const std::lock_guard lock(mutex_);
  closed_ = true;
  ended_.notify_all();
}

// False at the connection's end.
bool LinuxFeedbackListener::takeWhatArrives() {
  const std::span<char> room = receiver_.room();
  const ssize_t count = recv(socket_.get(), room.data(), room.size(), 0);
  if (count < 0) return errno == EINTR;
  receiver_.arrived(static_cast<std::size_t>(count));
  while (!stopping_) {
    const auto message = receiver_.next();
    if (!message) break;
    handler_(*message);
  }
  return count != 0 && !receiver_.isBroken() && !stopping_;
}

// A service that asks for answers and does not read them is none.
bool LinuxFeedbackListener::sendAnswers() {
  const std::string answers = receiver_.takeAnswers();
  if (answers.empty()) return true;
  const ssize_t count = send(socket_.get(), answers.data(), answers.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  return count == static_cast<ssize_t>(answers.size());
}

bool LinuxFeedbackListener::waitUntilClosed(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return ended_.wait_for(lock, limit, [this] { return closed_; });
}

}  // namespace vantrell::host
