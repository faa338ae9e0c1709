// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PeerConnection.h"

#include <exception>
#include <utility>

#include "host/linux/PeerBus.h"

namespace vantrell::host {

PeerConnection::PeerConnection(FileDescriptor socket, const TransportLimits& limits, std::function<void()> ended)
    : socket_(std::move(socket)),
      limits_(limits),
      ended_(std::move(ended)),
      channel_(std::make_shared<BusChannel>()),
      account_(std::make_shared<ClientAccount>()) {
  channel_->setSparesUnread(true);
  account_->maximumUnansweredBytes = limits_.unansweredBytes;
}

PeerConnection::~PeerConnection() {
  stop();
  if (thread_.joinable()) thread_.join();
}

void PeerConnection::resume() {
  if (!object_ || thread_.joinable()) return;
  thread_ = std::thread([this] { run(); });
}

void PeerConnection::stop() noexcept {
  const BusChannel::Lock lock = channel_->lock();
  stopping_ = true;
  channel_->wake();
}

int PeerConnection::callArrived(ServiceMethod method, sd_bus_message* message, sd_bus_error* error) {
  if (account_->unanswered >= limits_.unansweredRequests) {
    return sd_bus_error_set(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "Too many requests wait for their answers.");
  }
  arrived_.emplace_back(channel_, account_, method, message);
  return 1;
}

// What runs out of memory here ends this one connection.
void PeerConnection::run() noexcept {
  try {
    if (start()) {
      while (step()) {
      }
    }
  } catch (const std::exception&) {
  }
  std::vector<IncomingCall> undelivered;
  {
    const BusChannel::Lock lock = channel_->lock();
    channel_->close();
    undelivered.swap(arrived_);
  }
  undelivered.clear();
  ended_();
}

bool PeerConnection::start() {
  const BusChannel::Lock lock = channel_->lock();
  Result<Bus> bus = makeServerBus(std::move(socket_));
  if (!bus || exportServiceObject(bus->get(), *this) < 0 || sd_bus_start(bus->get()) < 0) return false;
  channel_->attach(*std::move(bus));
  return true;
}

bool PeerConnection::step() {
  std::vector<IncomingCall> calls;
  bool open = true;
  {
    BusChannel::Lock lock = channel_->lock();
    // After a delivery straight to the poll, which ends at once where there is more: looking into the socket first
    // would hold the lock just when a worker comes to answer.
    if (delivered_ && !stopping_) channel_->wait(lock);
    const int processed = channel_->process(true, limits_.waitingAnswerBytes);
    calls.swap(arrived_);
    // What has arrived is delivered before looking for more: the object may get to work at once.
    if (processed == 0 && calls.empty() && !stopping_) channel_->wait(lock);
    open = processed >= 0 && !stopping_;
  }
  delivered_ = !calls.empty();
  for (IncomingCall& call : calls) deliver(std::move(call), *object_);
  return open;
}

}  // namespace vantrell::host
