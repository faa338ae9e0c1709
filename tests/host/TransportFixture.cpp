// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/host/TransportFixture.h"

#include <algorithm>

namespace vantrell::tests {

void TestService::note(std::string event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(std::move(event));
  changed_.notify_all();
}

std::vector<std::string> TestService::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

bool TestService::waitForEvent(const std::string& event) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [&] { return std::ranges::find(events_, event) != events_.end(); });
}

void TestService::getVersionStringUsingReply(Reply<std::string> reply) {
  reply("2.5");
}

void TestService::registerClientWithPID(std::int32_t pid, Reply<Data> saltReply) {
  note("register " + std::to_string(pid));
  saltReply(Data{1, 2, 3, static_cast<std::uint8_t>(pid)});
}

void TestService::unregisterClientWithPID(std::int32_t pid) {
  note("unregister " + std::to_string(pid));
}

void TestService::performPrivilegedOperation(std::uint64_t code, Data token, std::unique_ptr<host::Endpoint> endpoint,
                                             std::optional<Array> arguments, Reply<ErrorOrNil> reply) {
  note("perform " + std::to_string(code));
  if (!onPerform) return reply(std::nullopt);
  onPerform({code, std::move(token), std::move(endpoint), std::move(arguments), std::move(reply)});
}

void TestService::cancelPrivilegedOperation(std::uint64_t code, Data, std::optional<Array>) {
  note("cancel " + std::to_string(code));
}

bool TestService::listenerShouldAcceptNewConnection(host::Listener&, host::Connection& newConnection) {
  if (!accepts) return false;
  newConnection.setExportedObject(*this);
  newConnection.resume();
  return true;
}

void FeedbackCollector::take(const Dictionary& message) {
  const std::lock_guard lock(mutex_);
  messages_.push_back(message);
  changed_.notify_all();
}

std::vector<Dictionary> FeedbackCollector::messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

bool FeedbackCollector::waitForCount(std::size_t count) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [&] { return messages_.size() >= count; });
}

std::unique_ptr<host::ServiceConnection> TransportWire::connect() {
  auto connection = tryToConnect();
  EXPECT_TRUE(connection.has_value()) << (connection ? 0 : connection.error().code());
  return connection ? *std::move(connection) : nullptr;
}

void TransportWire::resumeListener() {
  listener->setDelegate(&service);
  const ErrorOrNil problem = listener->resume();
  ASSERT_FALSE(problem) << problem->code();
}

}  // namespace vantrell::tests
