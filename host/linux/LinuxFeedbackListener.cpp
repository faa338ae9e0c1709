// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFeedbackListener.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/socket.h>

#include "host/posix/ErrorNumbers.h"
#include "host/linux/PeerBus.h"
#include "host/linux/WireNames.h"
#include "host/linux/WireReader.h"

namespace vantrell::host {

Result<std::unique_ptr<FeedbackListener>> LinuxFeedbackListener::make(Handler handler) try {
  int ends[2] = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return errnoFailure();
  FileDescriptor own(ends[0]);
  auto listener = std::make_unique<LinuxFeedbackListener>(std::move(handler), FileDescriptor(ends[1]));
  if (const ErrorOrNil problem = listener->start(std::move(own))) return failure(*problem);
  return listener;
} catch (const std::system_error& error) {
  return errnoFailure(error.code().value());
}

LinuxFeedbackListener::LinuxFeedbackListener(Handler handler, FileDescriptor endpoint)
    : handler_(std::move(handler)), endpoint_(std::move(endpoint)) {}

LinuxFeedbackListener::~LinuxFeedbackListener() {
  {
    const BusChannel::Lock lock = channel_.lock();
    stopping_ = true;
    channel_.wake();
  }
  if (thread_.joinable()) thread_.join();
}

FileDescriptor LinuxFeedbackListener::takeEndpoint() noexcept {
  const std::lock_guard lock(mutex_);
  return std::move(endpoint_);
}

int LinuxFeedbackListener::messageArrived(sd_bus_message* message, void* self, sd_bus_error* error) noexcept try {
  auto& listener = *static_cast<LinuxFeedbackListener*>(self);
  Dictionary dictionary;
  if (!WireReader(message).dictionary(dictionary)) {
    return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "The message holds what feedback has no use for.");
  }
  listener.arrived_.push_back(std::move(dictionary));
  return 1;
} catch (...) {
  return -ENOMEM;
}

ErrorOrNil LinuxFeedbackListener::start(FileDescriptor socket) {
  static const sd_bus_vtable kMethods[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD_WITH_NAMES(kFeedbackMethod, "a{sv}", SD_BUS_PARAM(message), "", , messageArrived,
                               SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
      SD_BUS_VTABLE_END,
  };
  const BusChannel::Lock lock = channel_.lock();
  Result<Bus> bus = makeServerBus(std::move(socket));
  if (!bus) return bus.error();
  int result = sd_bus_add_object_vtable(bus->get(), nullptr, kFeedbackPath.text, kFeedbackInterface, kMethods, this);
  if (result >= 0) result = sd_bus_start(bus->get());
  if (result < 0) return errorFromErrno(-result);
  channel_.attach(*std::move(bus));
  thread_ = std::thread([this] { run(); });
  return std::nullopt;
}

void LinuxFeedbackListener::run() {
  while (step()) {
  }
  {
    const BusChannel::Lock lock = channel_.lock();
    channel_.close();
  }
  const std::lock_guard lock(mutex_);
  closed_ = true;
  ended_.notify_all();
}

bool LinuxFeedbackListener::step() {
  std::vector<Dictionary> messages;
  bool open = true;
  {
    BusChannel::Lock lock = channel_.lock();
    const int processed = channel_.process(true, SIZE_MAX);
    messages.swap(arrived_);
    if (processed == 0 && messages.empty() && !stopping_) channel_.wait(lock);
    open = processed >= 0 && !stopping_;
  }
  for (const Dictionary& message : messages) handler_(message);
  return open;
}

bool LinuxFeedbackListener::waitUntilClosed(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return ended_.wait_for(lock, limit, [this] { return closed_; });
}

}  // namespace vantrell::host
