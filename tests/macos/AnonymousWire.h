// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <utility>

#include "host/macos/MacClientTransport.h"
#include "host/macos/MacTransport.h"
#include "tests/host/TransportFixture.h"

namespace vantrell::tests {

/// A service behind an endpoint: a Mach service takes launchd and a property list.
class AnonymousWire final : public TransportWire {
 public:
  explicit AnonymousWire(const host::TransportLimits& limits = {}) : transport(log, limits) {}
  ~AnonymousWire() override { listener.reset(); }

  void start() override {
    auto made = transport.makeAnonymousListener();
    anonymous_ = made.get();
    listener = std::move(made);
    resumeListener();
  }
  std::unique_ptr<host::Endpoint> endpoint() { return anonymous_->endpoint(); }
  Result<std::unique_ptr<host::ServiceConnection>> tryToConnect() override {
    return client.connectToEndpoint(endpoint());
  }
  host::Transport& serviceTransport() override { return transport; }
  host::ClientTransport& clientTransport() override { return client; }

  host::MacTransport transport;
  host::MacClientTransport client;

 private:
  host::AnonymousListener* anonymous_ = nullptr;
};

}  // namespace vantrell::tests
