// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "host/linux/LinuxClientTransport.h"
#include "host/linux/LinuxTransport.h"
#include "host/posix/FileDescriptor.h"
#include "tests/host/TransportFixture.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// A service on a socket or on a message bus of its own, and connections to it.
class ServiceOnWire final : public TransportWire {
 public:
  enum class Kind { Socket, Bus };

  explicit ServiceOnWire(Kind kind, const host::TransportLimits& limits = {});
  ~ServiceOnWire() override { listener.reset(); }

  bool isAvailable() const override { return kind_ == Kind::Socket || bus_->isRunning(); }
  void start() override;
  Result<std::unique_ptr<host::ServiceConnection>> tryToConnect() override;
  host::Transport& serviceTransport() override { return transport; }
  host::ClientTransport& clientTransport() override { return client; }
  std::string socketPath() const { return folder_.path() + "/socket"; }

  host::LinuxTransport transport;
  host::LinuxClientTransport client;

 private:
  const Kind kind_;
  TemporaryFolder folder_;
  std::unique_ptr<PrivateBus> bus_;
};

inline constexpr char kTestServiceName[] = "com.vantrell.TestService";

/// A socket connected to a path; negative where that fails.
host::FileDescriptor rawConnection(const std::string& path);
/// Takes the client's side of the handshake by hand. True when the service answers as it should.
bool shakeHands(int socket);
void sendAll(int socket, const std::string& bytes);
/// Reads until the far end closes or nothing comes for `kPatience`; true when it closed.
bool readUntilClosed(int socket);

}  // namespace vantrell::tests
