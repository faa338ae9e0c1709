// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/ClientTransport.h"
#include "host/linux/BusChannel.h"
#include "host/linux/BusHandles.h"
#include "host/linux/WireWriter.h"

namespace vantrell::host {

/// A client's connection to the service, on a socket of its own or through the system's message bus.
///
/// There is no thread behind it: of those that wait for answers one works the bus for all (it is woken by nothing but
/// the socket, so a lone caller has its answer without a hand-over), the others wait for it, and one of them follows
/// when it has what it waited for.
class ClientConnection final : public ServiceConnection {
 public:
  static Result<std::unique_ptr<ServiceConnection>> toAddress(const std::string& address);
  static Result<std::unique_ptr<ServiceConnection>> toServiceOnBus(std::string_view serviceName);

  /// `destination` is empty where there is no message bus.
  explicit ClientConnection(std::string destination) : destination_(std::move(destination)) {}

  Result<std::string> getVersionString() override;
  Result<Data> registerClientWithPID(std::int32_t pid) override;
  ErrorOrNil unregisterClientWithPID(std::int32_t pid) override;
  Result<ErrorOrNil> performPrivilegedOperation(std::uint64_t code, DataView token, FeedbackListener* feedback,
                                                const Array& arguments) override;
  ErrorOrNil cancelPrivilegedOperation(std::uint64_t code, DataView token, const Array& arguments) override;
  bool waitUntilClosed(std::chrono::milliseconds limit) override;

 private:
  using Clock = std::chrono::steady_clock;
  using Write = std::function<void(WireWriter&)>;

  ErrorOrNil open(Bus bus);
  ErrorOrNil watchService();
  Result<BusMessage> request(const char* method, const Write& write);
  Result<BusMessage> answerTo(BusChannel::Lock& lock, BusMessage request);
  Result<BusMessage> call(BusChannel::Lock& lock, const char* method, const Write& write);
  ErrorOrNil sendOneWay(const char* method, const Write& write);

  /// Works the bus, or waits for who does, until `done` holds, the connection has ended or `until` has come. What
  /// `done` says.
  bool pumpUntil(BusChannel::Lock& lock, const std::function<bool()>& done,
                 std::optional<Clock::time_point> until = std::nullopt);
  void lead(BusChannel::Lock& lock, const std::function<bool()>& done, std::optional<Clock::time_point> until);
  void follow(BusChannel::Lock& lock, std::optional<Clock::time_point> until);
  Error lossOfConnection() const;

  const std::string destination_;
  BusChannel channel_;
  // Guarded by the channel's lock.
  std::condition_variable changed_;
  std::size_t followers_ = 0;
  bool led_ = false;
  bool closed_ = false;
  bool serviceLeft_ = false;
  int failure_ = 0;
};

}  // namespace vantrell::host
