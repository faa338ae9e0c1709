// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/linux/BusChannel.h"
#include "host/linux/BusHandles.h"
#include "host/linux/WireWriter.h"

namespace vantrell::host {

enum class ServiceMethod : std::uint8_t { GetVersion, Register, Unregister, Perform, Cancel };

/// What one client has under way. Guarded by its channel's lock.
struct ClientAccount {
  std::size_t unanswered = 0;
  std::size_t unansweredBytes = 0;
  std::size_t maximumUnansweredBytes = SIZE_MAX;
};

/// A client's request from its arrival to its answer. Dropped without an answer, it leaves the client without one.
///
/// Made under the channel's lock; everything else, letting it go included, happens without the lock, which it takes
/// itself.
class IncomingCall {
 public:
  IncomingCall(std::shared_ptr<BusChannel> channel, std::shared_ptr<ClientAccount> account, ServiceMethod method,
               sd_bus_message* message);
  IncomingCall(IncomingCall&&) noexcept = default;
  IncomingCall& operator=(IncomingCall&&) = delete;
  ~IncomingCall();

  ServiceMethod method() const noexcept { return method_; }
  /// To be read by the owner of the call.
  sd_bus_message* message() const noexcept { return message_.get(); }

  /// Counts what the request holds in memory against its client, until it is answered. False, and nothing is counted,
  /// where the client then had too much under way.
  bool charge(std::size_t bytes);

  /// Answers with what `write(WireWriter&)` appends. Only the first answer or refusal counts.
  template <class Write>
  void answer(Write write) {
    if (!message_) return;
    const BusChannel::Lock lock = channel_->lock();
    BusMessage reply = makeReply();
    if (reply) {
      WireWriter writer(reply.get(), Unsendable::Omit);
      write(writer);
      send(std::move(reply), writer);
    }
    settle();
  }

  /// Answers with a D-Bus error.
  void refuse(const char* errorName, const char* text);

 private:
  BusMessage makeReply() const;
  void send(BusMessage reply, const WireWriter& writer);
  void sendError(const char* errorName, const char* text);
  void settle() noexcept;

  std::shared_ptr<BusChannel> channel_;
  std::shared_ptr<ClientAccount> account_;
  ServiceMethod method_;
  BusMessage message_;
  std::size_t charged_ = 0;
};

}  // namespace vantrell::host
