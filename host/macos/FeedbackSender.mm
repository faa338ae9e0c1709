// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/FeedbackSender.h"

#include <utility>

#include <dispatch/dispatch.h>

#include "host/macos/FoundationValues.h"
#include "host/macos/SendBarrier.h"
#include "host/posix/MessageSize.h"

namespace vantrell::host {

namespace {

/// How much may be sent between two barriers: a client that takes so much within the time it has is there.
constexpr std::size_t kBarrierBytes = std::size_t{256} << 10;
/// About what a message takes beside its contents.
constexpr std::size_t kMessageOverhead = 256;
/// For the rest of an invalidated connection where the system has no barriers.
constexpr std::chrono::seconds kTimeForRest{2};

dispatch_queue_t anyQueue() {
  return dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0);
}

dispatch_time_t timeAfter(std::chrono::nanoseconds delay) {
  return dispatch_time(DISPATCH_TIME_NOW, delay.count());
}

}  // namespace

std::shared_ptr<FeedbackSender> FeedbackSender::make(NSXPCListenerEndpoint* endpoint, SystemLog& systemLog,
                                                     const TransportLimits& limits) {
  NSXPCConnection* const connection = [[NSXPCConnection alloc] initWithListenerEndpoint:endpoint];
  const auto sender = std::make_shared<FeedbackSender>(connection, systemLog, limits);
  sender->start();
  return sender;
}

FeedbackSender::FeedbackSender(NSXPCConnection* connection, SystemLog& systemLog, const TransportLimits& limits)
    : systemLog_(systemLog), limits_(limits), hasBarriers_(hasSendBarriers()), connection_(connection) {}

FeedbackSender::~FeedbackSender() {
  if (phase_ != Phase::Ended) [connection_ invalidate];
}

// The platform's connection is resumed once and never suspended: suspensions have to be balanced before it may end.
void FeedbackSender::start() {
  const std::weak_ptr<FeedbackSender> weak = weak_from_this();
  const auto left = ^{
    dispatch_async(anyQueue(), ^{
      if (const auto sender = weak.lock()) sender->clientLeft();
    });
  };
  connection_.remoteObjectInterface = interfaceForFeedbackProtocol();
  connection_.interruptionHandler = left;
  connection_.invalidationHandler = left;
  [connection_ resume];
  proxy_ = connection_.remoteObjectProxy;
}

void FeedbackSender::resume() {
  const Lock lock(mutex_);
  if (phase_ != Phase::Open || !std::exchange(suspended_, false)) return;
  ++progress_;  // the client's time begins only now
  handHeld();
}

void FeedbackSender::suspend() {
  const Lock lock(mutex_);
  if (phase_ == Phase::Open) suspended_ = true;
}

void FeedbackSender::send(const Dictionary& dictionary) {
  if (gone_) return;
  const Message message{dictionaryFrom(dictionary, WithoutObject::Omit), heldBytes(dictionary) + kMessageOverhead};
  Lock lock(mutex_);
  if (phase_ != Phase::Open) return;
  waitForRoom(lock, message.bytes);
  // A sender that was waiting when the connection was told to finish had begun before that.
  if (phase_ == Phase::Ended) return;
  waitingBytes_ += message.bytes;
  if (suspended_) {
    held_.push_back(message);
  } else {
    hand(message);
  }
}

void FeedbackSender::finish() {
  const Lock lock(mutex_);
  if (phase_ != Phase::Open) return;
  phase_ = Phase::Finishing;
  suspended_ = false;
  handHeld();
  room_.notify_all();
  if (hasBarriers_) {
    if (unguardedBytes_ != 0) raiseBarrier();
    endIfDelivered();
    if (phase_ == Phase::Finishing) watchRest(progress_);
  } else {
    const auto self = shared_from_this();
    dispatch_after(timeAfter(kTimeForRest), anyQueue(), ^{
      self->abandon();
    });
  }
}

void FeedbackSender::abandon() {
  const Lock lock(mutex_);
  if (phase_ != Phase::Ended) end();
}

bool FeedbackSender::hasRoomFor(std::size_t bytes) const noexcept {
  return waitingBytes_ == 0 || waitingBytes_ + bytes <= limits_.waitingFeedbackBytes;
}

void FeedbackSender::waitForRoom(Lock& lock, std::size_t bytes) {
  ++waitingSenders_;
  Clock::time_point since = Clock::now();
  std::uint64_t seen = progress_;
  while (phase_ == Phase::Open && !hasRoomFor(bytes)) {
    const bool timedOut = room_.wait_until(lock, since + limits_.feedbackStall) == std::cv_status::timeout;
    if (suspended_ || seen != progress_) {
      since = Clock::now();
      seen = progress_;
    } else if (timedOut && phase_ == Phase::Open) {
      giveUp();
    }
  }
  --waitingSenders_;
}

void FeedbackSender::handHeld() {
  for (const Message& message : held_) hand(message);
  held_.clear();
}

void FeedbackSender::hand(const Message& message) {
  @try {
    [proxy_ processPrivilegedOperationFeedback:message.dictionary];
  } @catch (NSException*) {
    waitingBytes_ -= message.bytes;
    return systemLog_.write({}, {}, LogLevel::Error, "A feedback message could not be put together.");
  }
  if (hasBarriers_) {
    unguardedBytes_ += message.bytes;
    if (barriers_ == 0 || unguardedBytes_ >= kBarrierBytes) raiseBarrier();
  } else {
    waitingBytes_ -= message.bytes;
  }
}

void FeedbackSender::raiseBarrier() {
  const std::size_t bytes = std::exchange(unguardedBytes_, 0);
  const std::weak_ptr<FeedbackSender> weak = weak_from_this();
  ++barriers_;
  raiseSendBarrier(connection_, ^{
    dispatch_async(anyQueue(), ^{
      if (const auto sender = weak.lock()) sender->passedBarrier(bytes);
    });
  });
}

void FeedbackSender::passedBarrier(std::size_t bytes) {
  const Lock lock(mutex_);
  --barriers_;
  if (phase_ == Phase::Ended) return;
  ++progress_;
  waitingBytes_ -= bytes;
  if (barriers_ == 0 && unguardedBytes_ != 0) raiseBarrier();
  // Not at every barrier: a sender that is let go for one would only wait again.
  if (waitingSenders_ != 0 && waitingBytes_ <= limits_.waitingFeedbackBytes / 2) room_.notify_all();
  endIfDelivered();
}

void FeedbackSender::endIfDelivered() {
  if (phase_ == Phase::Finishing && waitingSenders_ == 0 && waitingBytes_ == 0) end();
}

void FeedbackSender::clientLeft() {
  const Lock lock(mutex_);
  if (phase_ == Phase::Ended) return;
  gone_ = true;
  end();
}

// For as long as anything is left, each look finds either that the client took something since, or that it is gone.
void FeedbackSender::watchRest(std::uint64_t progress) {
  const auto self = shared_from_this();
  dispatch_after(timeAfter(limits_.feedbackStall), anyQueue(), ^{
    self->checkRest(progress);
  });
}

void FeedbackSender::checkRest(std::uint64_t progress) {
  const Lock lock(mutex_);
  if (phase_ == Phase::Ended) return;
  if (progress == progress_) return giveUp();
  watchRest(progress_);
}

void FeedbackSender::giveUp() {
  gone_ = true;
  systemLog_.write({}, {}, LogLevel::Error, "A client takes no feedback and counts as gone: its messages are dropped.");
  end();
}

void FeedbackSender::end() {
  phase_ = Phase::Ended;
  held_.clear();
  waitingBytes_ = 0;
  unguardedBytes_ = 0;
  room_.notify_all();
  [connection_ invalidate];
}

}  // namespace vantrell::host
