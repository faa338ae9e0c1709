// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FeedbackReceiver.h"

#include <algorithm>
#include <cstring>

#include <systemd/sd-bus-protocol.h>

#include "host/linux/MarshalledReader.h"
#include "host/linux/ValueReader.h"
#include "host/linux/WireNames.h"

namespace vantrell::host {

namespace {

constexpr std::string_view kPeerInterface = "org.freedesktop.DBus.Peer";
constexpr std::string_view kPing = "Ping";

bool isPing(const MessageFields& fields) noexcept {
  return fields.member == kPing && fields.interface == kPeerInterface && fields.signature.empty();
}

// Why a call is not the one that there is; null where it is.
const char* refusalOf(const MessageFields& fields) noexcept {
  if (fields.path != kFeedbackPath.text) return SD_BUS_ERROR_UNKNOWN_OBJECT;
  // A call may leave its interface out.
  if (!fields.interface.empty() && fields.interface != kFeedbackInterface) return SD_BUS_ERROR_UNKNOWN_INTERFACE;
  if (fields.member != kFeedbackMethod) return SD_BUS_ERROR_UNKNOWN_METHOD;
  return fields.signature == kDictionarySignature ? nullptr : SD_BUS_ERROR_INVALID_ARGS;
}

}  // namespace

std::span<char> FeedbackReceiver::room() {
  const std::size_t waits = filled_ - begin_;
  if (capacity_ == 0 || (waits == 0 && capacity_ > kUsualRoom)) {
    moveToSpace(kUsualRoom);
  } else if (waits == 0) {
    begin_ = filled_ = 0;
  } else if (capacity_ - filled_ < kLeastRoom) {
    if (waits > capacity_ / 2) {
      moveToSpace(2 * capacity_);
    } else {
      std::memmove(space_.get(), space_.get() + begin_, waits);
      begin_ = 0;
      filled_ = waits;
    }
  }
  return {space_.get() + filled_, capacity_ - filled_};
}

void FeedbackReceiver::moveToSpace(std::size_t capacity) {
  const std::string_view waits = waiting();
  auto space = std::make_unique_for_overwrite<char[]>(capacity);
  std::ranges::copy(waits, space.get());
  begin_ = 0;
  filled_ = waits.size();
  space_ = std::move(space);
  capacity_ = capacity;
}

std::optional<Dictionary> FeedbackReceiver::next() {
  if (isShakingHands_ && !shakeHands()) return std::nullopt;
  while (!isBroken_ && waiting().size() >= MessageFrame::kBytes) {
    const auto frame = MessageFrame::read(waiting());
    if (!frame) {
      isBroken_ = true;
      break;
    }
    if (waiting().size() < frame->totalBytes()) break;
    const std::string_view message = waiting().substr(0, frame->totalBytes());
    begin_ += message.size();
    if (auto dictionary = read(*frame, message)) return dictionary;
  }
  return std::nullopt;
}

// True when messages follow.
bool FeedbackReceiver::shakeHands() {
  std::string_view bytes = waiting();
  const HandshakeServer::Outcome outcome = handshake_.take(bytes, answers_);
  begin_ = filled_ - bytes.size();
  isBroken_ = outcome == HandshakeServer::Outcome::Broken;
  isShakingHands_ = outcome != HandshakeServer::Outcome::Done;
  return !isShakingHands_;
}

std::optional<Dictionary> FeedbackReceiver::read(const MessageFrame& frame, std::string_view message) {
  const auto fields = MessageFields::read(frame, message);
  isBroken_ = !fields;
  if (!fields || static_cast<MessageType>(frame.type) != MessageType::MethodCall) return std::nullopt;
  if (isPing(*fields)) {
    answer(frame, nullptr, {});
  } else if (const char* refusal = refusalOf(*fields)) {
    answer(frame, refusal, "There is nothing but the feedback method here.");
  } else if (Dictionary dictionary; readBody(frame, message, dictionary)) {
    return dictionary;
  } else {
    answer(frame, SD_BUS_ERROR_INVALID_ARGS, "The message holds what feedback has no use for.");
  }
  return std::nullopt;
}

bool FeedbackReceiver::readBody(const MessageFrame& frame, std::string_view message, Dictionary& dictionary) {
  MarshalledReader bytes(message, frame.bodyOffset(), frame.isSwapped);
  return ValueReader(bytes).dictionary(dictionary) && !bytes.more();
}

// With an error, or with nothing where it has no name.
void FeedbackReceiver::answer(const MessageFrame& frame, const char* errorName, std::string_view text) {
  if ((frame.flags & kNoReplyExpected) != 0) return;
  MarshalledMessage message;
  beginHeader(message, errorName ? MessageType::Error : MessageType::MethodReturn, kNoReplyExpected);
  addReplySerial(message, frame.serial);
  if (errorName) {
    addField(message, HeaderField::ErrorName, 's', errorName);
    addField(message, HeaderField::Signature, 'g', "s");
  }
  endHeader(message);
  const std::size_t headerSize = message.size();
  if (errorName) message.text(text);
  endBody(message, headerSize, ++answerSerial_);
  answers_ += message.bytes();
}

}  // namespace vantrell::host
