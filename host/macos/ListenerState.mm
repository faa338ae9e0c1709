// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/ListenerState.h"

#include <utility>

namespace vantrell::host {

ListenerState::ListenerState(Listener& listener, SystemLog& systemLog, const TransportLimits& limits)
    : listener_(listener), systemLog_(systemLog), limits_(limits) {}

void ListenerState::setDelegate(ListenerDelegate* delegate) {
  const std::lock_guard lock(delegateMutex_);
  delegate_ = delegate;
}

void ListenerState::setOpen(bool open) {
  const std::lock_guard lock(mutex_);
  open_ = open;
}

bool ListenerState::take(NSXPCConnection* connection) {
  const CallGate::Pass pass = gate_->enter();
  if (!pass) return false;
  // By a number of its own: an address may be another client's by the time that an end is reported.
  const std::uint64_t number = ++lastNumber_;
  const std::weak_ptr<ListenerState> weak = weak_from_this();
  const auto client = std::make_shared<MacConnection>(connection, gate_, limits_, [weak, number] {
    if (const auto state = weak.lock()) state->forget(number);
  });
  // Known before it is resumed: it may end at once.
  if (!admit(number, client)) return false;
  if (askDelegate(*client) && client->isResumed()) return true;
  client->dismiss();
  forget(number);
  return false;
}

bool ListenerState::admit(std::uint64_t number, std::shared_ptr<MacConnection> client) {
  const std::lock_guard lock(mutex_);
  if (!open_) return false;
  if (clients_.size() >= limits_.connections) {
    if (!std::exchange(full_, true)) {
      systemLog_.write({}, {}, LogLevel::Error, "Too many connections: new ones are closed.");
    }
    return false;
  }
  full_ = false;
  clients_.emplace(number, std::move(client));
  return true;
}

bool ListenerState::askDelegate(MacConnection& client) {
  const std::lock_guard lock(delegateMutex_);
  return delegate_ && delegate_->listenerShouldAcceptNewConnection(listener_, client);
}

void ListenerState::forget(std::uint64_t number) {
  std::shared_ptr<MacConnection> client;
  const std::lock_guard lock(mutex_);
  const auto place = clients_.find(number);
  if (place == clients_.end()) return;
  client = std::move(place->second);
  clients_.erase(place);
}

void ListenerState::end() {
  gate_->close();
  std::unordered_map<std::uint64_t, std::shared_ptr<MacConnection>> clients;
  {
    const std::lock_guard lock(mutex_);
    open_ = false;
    clients.swap(clients_);
  }
  for (const auto& [number, client] : clients) client->dismiss();
  gate_->waitUntilEmpty();
}

}  // namespace vantrell::host
