// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/BusListener.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

/// One process that calls. Its members but the account are used by its own tasks only, one at a time.
class BusListener::Caller final : public Connection, public ClientAccount {
 public:
  void setExportedObject(QELPrivilegedToolProtocol& object) override { this->object = &object; }
  void resume() override { resumed = true; }

  QELPrivilegedToolProtocol* object = nullptr;
  bool resumed = false;
  bool asked = false;
  bool accepted = false;
};

BusListener::BusListener(std::string_view serviceName, SystemLog& systemLog, const TransportLimits& limits)
    : serviceName_(serviceName),
      systemLog_(systemLog),
      limits_(limits),
      channel_(std::make_shared<BusChannel>()),
      queues_(std::make_unique<SerialQueues>()) {}

BusListener::~BusListener() {
  {
    const BusChannel::Lock lock = channel_->lock();
    stopping_ = true;
    channel_->wake();
  }
  if (thread_.joinable()) thread_.join();
  queues_.reset();
  const BusChannel::Lock lock = channel_->lock();
  channel_->close();
}

void BusListener::setDelegate(ListenerDelegate* delegate) {
  const std::lock_guard lock(delegateMutex_);
  delegate_ = delegate;
}

ErrorOrNil BusListener::resume() {
  const BusChannel::Lock lock = channel_->lock();
  if (invalid_) return errorFromErrno(EINVAL);
  suspended_ = false;
  channel_->wake();
  if (thread_.joinable()) return std::nullopt;
  if (const ErrorOrNil failure = claimName()) return failure;
  thread_ = std::thread([this] { run(); });
  return std::nullopt;
}

ErrorOrNil BusListener::claimName() {
  sd_bus* opened = nullptr;
  int result = sd_bus_open_system(&opened);
  Bus bus(opened);
  // The object is there before the name is: the first request may be what started this process.
  if (result >= 0) result = exportServiceObject(opened, *this);
  if (result >= 0) result = sd_bus_request_name(opened, serviceName_.c_str(), 0);
  if (result < 0) return errorFromErrno(-result);
  channel_->attach(std::move(bus));
  return std::nullopt;
}

void BusListener::suspend() {
  const BusChannel::Lock lock = channel_->lock();
  suspended_ = true;
  channel_->wake();
}

// Without the name, the bus starts the service anew for the next request.
void BusListener::invalidate() {
  const BusChannel::Lock lock = channel_->lock();
  if (std::exchange(invalid_, true)) return;
  if (channel_->isOpen()) sd_bus_release_name_async(channel_->bus(), nullptr, serviceName_.c_str(), nullptr, nullptr);
  channel_->wake();
}

int BusListener::callArrived(ServiceMethod method, sd_bus_message* message, sd_bus_error* error) {
  const char* sender = sd_bus_message_get_sender(message);
  if (!sender) return -EBADMSG;
  std::shared_ptr<Caller> caller = callerNamed(sender);
  if (!caller) return sd_bus_error_set(error, SD_BUS_ERROR_SERVICE_UNKNOWN, "The service is about to end.");
  if (caller->unanswered >= limits_.unansweredRequests) {
    return sd_bus_error_set(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "Too many requests wait for their answers.");
  }
  IncomingCall call(channel_, caller, method, message);
  arrived_.push_back({sender, std::move(caller), std::move(call)});
  return 1;
}

// Nothing where new callers are no longer taken in. Entries of callers that have nothing under way are dropped from
// time to time.
std::shared_ptr<BusListener::Caller> BusListener::callerNamed(const char* sender) {
  if (const auto known = callers_.find(sender); known != callers_.end()) {
    if (std::shared_ptr<Caller> caller = known->second.lock()) return caller;
  }
  if (invalid_) return nullptr;
  if (callers_.size() >= callersToPurgeAt_) {
    std::erase_if(callers_, [](const auto& entry) { return entry.second.expired(); });
    callersToPurgeAt_ = std::max<std::size_t>(64, 2 * callers_.size());
  }
  auto caller = std::make_shared<Caller>();
  caller->maximumUnansweredBytes = limits_.unansweredBytes;
  callers_[sender] = caller;
  return caller;
}

void BusListener::run() noexcept {
  try {
    while (step()) {
    }
  } catch (const std::exception&) {
  }
  {
    const BusChannel::Lock lock = channel_->lock();
    if (stopping_) return;
    channel_->close();
  }
  systemLog_.write({}, {}, LogLevel::Error, "The connection to the message bus was lost.");
}

bool BusListener::step() {
  std::vector<Arrival> arrivals;
  bool open = true;
  {
    BusChannel::Lock lock = channel_->lock();
    const int processed = channel_->process(!suspended_, limits_.waitingAnswerBytes);
    arrivals.swap(arrived_);
    if (processed == 0 && arrivals.empty() && !stopping_) channel_->wait(lock);
    open = processed >= 0 && !stopping_;
  }
  for (Arrival& arrival : arrivals) post(std::move(arrival));
  return open;
}

void BusListener::post(Arrival arrival) {
  queues_->post(arrival.sender, [this, caller = std::move(arrival.caller), call = std::move(arrival.call)]() mutable {
    serve(*caller, std::move(call));
  });
}

void BusListener::serve(Caller& caller, IncomingCall call) {
  if (mayServe(caller)) {
    deliver(std::move(call), *caller.object);
  } else {
    call.refuse(SD_BUS_ERROR_ACCESS_DENIED, "The service does not take this connection.");
  }
}

bool BusListener::mayServe(Caller& caller) {
  if (!std::exchange(caller.asked, true)) {
    const std::lock_guard lock(delegateMutex_);
    caller.accepted = delegate_ && delegate_->listenerShouldAcceptNewConnection(*this, caller);
  }
  return caller.accepted && caller.resumed && caller.object;
}

}  // namespace vantrell::host
