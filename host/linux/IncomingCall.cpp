// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/IncomingCall.h"

#include <utility>

#include "host/linux/WireFormat.h"

namespace vantrell::host {

IncomingCall::IncomingCall(std::shared_ptr<BusChannel> channel, std::shared_ptr<ClientAccount> account,
                           ServiceMethod method, sd_bus_message* message)
    : channel_(std::move(channel)),
      account_(std::move(account)),
      method_(method),
      message_(sd_bus_message_ref(message)) {
  ++account_->unanswered;
}

IncomingCall::~IncomingCall() {
  if (!message_) return;
  const BusChannel::Lock lock = channel_->lock();
  settle();
}

void IncomingCall::settle() noexcept {
  message_.reset();
  --account_->unanswered;
  account_->unansweredBytes -= charged_;
}

bool IncomingCall::charge(std::size_t bytes) {
  if (!message_) return true;
  const BusChannel::Lock lock = channel_->lock();
  if (bytes > account_->maximumUnansweredBytes - account_->unansweredBytes) return false;
  account_->unansweredBytes += bytes;
  charged_ += bytes;
  return true;
}

BusMessage IncomingCall::makeReply() const {
  sd_bus_message* reply = nullptr;
  if (!channel_->isOpen() || sd_bus_message_new_method_return(message_.get(), &reply) < 0) return nullptr;
  return BusMessage(reply);
}

void IncomingCall::send(BusMessage reply, const WireWriter& writer) {
  if (writer.status() < 0 || writer.bytes() > kMaximumMessageBytes) {
    sendError(SD_BUS_ERROR_LIMITS_EXCEEDED, "The answer is larger than a message may be.");
  } else if (sd_bus_message_get_expect_reply(message_.get()) > 0) {
    channel_->send(std::move(reply), writer.bytes());
  }
}

void IncomingCall::sendError(const char* errorName, const char* text) {
  const sd_bus_error error{errorName, text, 0};
  sd_bus_message* reply = nullptr;
  if (!channel_->isOpen() || sd_bus_message_get_expect_reply(message_.get()) <= 0) return;
  if (sd_bus_message_new_method_error(message_.get(), &reply, &error) >= 0) channel_->send(BusMessage(reply), 256);
}

void IncomingCall::refuse(const char* errorName, const char* text) {
  if (!message_) return;
  const BusChannel::Lock lock = channel_->lock();
  sendError(errorName, text);
  settle();
}

}  // namespace vantrell::host
