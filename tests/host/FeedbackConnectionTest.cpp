// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <thread>

#include <gmock/gmock.h>
#include <sys/socket.h>

#include "host/linux/DescriptorEndpoint.h"
#include "tests/host/LinuxTransportFixture.h"

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// A feedback connection, and the client's end of it as a plain socket.
class FeedbackConnectionTest : public testing::Test {
 protected:
  void open(const host::TransportLimits& limits = {}) {
    transport_.emplace(log_, limits);
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    client_.reset(ends[0]);
    auto made =
        transport_->connectionToEndpoint(std::make_unique<host::DescriptorEndpoint>(host::FileDescriptor(ends[1])));
    ASSERT_TRUE(made.has_value());
    connection_ = *std::move(made);
    connection_->resume();
  }
  // Takes the server's side of the handshake.
  void answerHandshake() {
    using namespace std::string_literals;
    std::string asked;
    while (!asked.ends_with("BEGIN\r\n")) {
      char byte;
      ASSERT_EQ(recv(client_.get(), &byte, 1, 0), 1);
      asked += byte;
    }
    sendAll(client_.get(), "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n"s);
  }
  static Dictionary chunk(std::uint64_t number, std::size_t size = 65536) {
    return {{"OutputData", Data(size)}, {"SequenceNumber", number}};
  }
  // Reads all there is, `pace` apart, until the connection is closed; the count of bytes.
  std::size_t readSlowly(std::chrono::milliseconds pace, std::size_t step) {
    std::vector<char> bytes(step);
    for (std::size_t total = 0;;) {
      const ssize_t count = recv(client_.get(), bytes.data(), bytes.size(), 0);
      if (count <= 0) return total;
      total += static_cast<std::size_t>(count);
      std::this_thread::sleep_for(pace);
    }
  }

  RecordingLog log_;
  host::FileDescriptor client_;
  std::optional<host::LinuxTransport> transport_;
  std::shared_ptr<host::FeedbackConnection> connection_;
};

host::TransportLimits shortLimits() {
  host::TransportLimits limits;
  limits.waitingFeedbackBytes = 1 << 20;
  limits.feedbackStall = 300ms;
  return limits;
}

TEST_F(FeedbackConnectionTest, ASlowReaderLosesNothingAndItsSenderWaits) {
  open(shortLimits());
  answerHandshake();
  std::atomic<int> sent = 0;
  constexpr int kCount = 800;  // 50 megabytes: more than the socket and the bound hold
  std::thread sender([&] {
    for (int i = 0; i < kCount; ++i, ++sent) connection_->processPrivilegedOperationFeedback(chunk(1));
    connection_.reset();
  });
  std::this_thread::sleep_for(100ms);
  EXPECT_LT(sent, kCount);
  // Three seconds and more, ten times the time that a client has that takes nothing.
  const std::size_t read = readSlowly(8ms, 131072);
  sender.join();
  EXPECT_GE(read, std::size_t{kCount} * 65536);
  EXPECT_EQ(sent, kCount);
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(FeedbackConnectionTest, AClientThatTakesNothingCountsAsGone) {
  open(shortLimits());
  answerHandshake();
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 2000; ++i) connection_->processPrivilegedOperationFeedback(chunk(1));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
  EXPECT_TRUE(connection_->isClientGone());
  EXPECT_THAT(log_.entries(), ElementsAre(RecordingLog::Entry{
                                  host::LogLevel::Error, "", "",
                                  "A client takes no feedback and counts as gone: its messages are dropped."}));
}

TEST_F(FeedbackConnectionTest, AClientThatNeverShakesHandsCountsAsGone) {
  open(shortLimits());
  for (int i = 0; i < 40; ++i) connection_->processPrivilegedOperationFeedback(chunk(1));
  EXPECT_TRUE(connection_->isClientGone());
}

TEST_F(FeedbackConnectionTest, AClientThatTakesNothingWhileNobodyWaitsIsStillThere) {
  open(shortLimits());
  answerHandshake();
  connection_->processPrivilegedOperationFeedback(chunk(1));
  std::this_thread::sleep_for(500ms);
  EXPECT_FALSE(connection_->isClientGone());
}

TEST_F(FeedbackConnectionTest, AClientThatClosesIsGoneAndSendersDoNotWait) {
  open();
  answerHandshake();
  connection_->processPrivilegedOperationFeedback(chunk(1));
  client_.reset();
  for (int i = 0; i < 2000; ++i) connection_->processPrivilegedOperationFeedback(chunk(1));
  for (int i = 0; i < 2000 && !connection_->isClientGone(); ++i) std::this_thread::sleep_for(10ms);
  EXPECT_TRUE(connection_->isClientGone());
}

TEST_F(FeedbackConnectionTest, AClientThatClosesReleasesAWaitingSender) {
  open();
  answerHandshake();
  std::thread sender([&] {
    while (!connection_->isClientGone()) connection_->processPrivilegedOperationFeedback(chunk(1));
  });
  std::this_thread::sleep_for(200ms);
  client_.reset();
  sender.join();
}

TEST_F(FeedbackConnectionTest, DeliversWhatWasSentBeforeItWasInvalidated) {
  open(shortLimits());
  answerHandshake();
  std::thread sender([&] {
    for (int i = 0; i < 300; ++i) connection_->processPrivilegedOperationFeedback(chunk(1));
    const auto begin = std::chrono::steady_clock::now();
    connection_->suspend();
    connection_->invalidate();
    connection_->processPrivilegedOperationFeedback(chunk(1));  // too late
    connection_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 200ms);
  });
  const std::size_t read = readSlowly(1ms, 65536);
  sender.join();
  EXPECT_GE(read, std::size_t{300} * 65536);
  EXPECT_LT(read, std::size_t{300} * 66000);
}

TEST_F(FeedbackConnectionTest, GivesUpOnTheRestOfAnInvalidatedConnectionThatNobodyReads) {
  open(shortLimits());
  answerHandshake();
  std::thread sender([&] {
    for (int i = 0; i < 2000 && !connection_->isClientGone(); ++i)
      connection_->processPrivilegedOperationFeedback(chunk(1));
    connection_->invalidate();
  });
  sender.join();
  connection_.reset();
  EXPECT_TRUE(log_.waitForMessageContaining("counts as gone"));
}

TEST_F(FeedbackConnectionTest, ASuspendedConnectionKeepsItsMessages) {
  open();
  answerHandshake();
  connection_->suspend();
  connection_->processPrivilegedOperationFeedback(chunk(1));
  std::this_thread::sleep_for(50ms);
  char byte;
  EXPECT_EQ(recv(client_.get(), &byte, 1, MSG_DONTWAIT), -1);
  connection_->resume();
  EXPECT_EQ(recv(client_.get(), &byte, 1, 0), 1);
}

TEST_F(FeedbackConnectionTest, AClientThatSendsGarbageIsGone) {
  open();
  answerHandshake();
  sendAll(client_.get(), std::string(4096, '\xA5'));
  for (int i = 0; i < 2000 && !connection_->isClientGone(); ++i) std::this_thread::sleep_for(10ms);
  EXPECT_TRUE(connection_->isClientGone());
  connection_->processPrivilegedOperationFeedback(chunk(1));
}

TEST_F(FeedbackConnectionTest, EndsWithTheTransportAtOnce) {
  open();
  answerHandshake();
  std::thread sender([&] {
    for (int i = 0; i < 2000; ++i) connection_->processPrivilegedOperationFeedback(chunk(1));
  });
  std::this_thread::sleep_for(100ms);
  const auto begin = std::chrono::steady_clock::now();
  transport_.reset();
  sender.join();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

TEST(FeedbackTransport, RefusesAnEndpointOfAnotherKind) {
  RecordingLog log;
  host::LinuxTransport transport(log);
  class Other final : public host::Endpoint {};
  EXPECT_FALSE(transport.connectionToEndpoint(std::make_unique<Other>()).has_value());
  EXPECT_FALSE(transport.connectionToEndpoint(nullptr).has_value());
}

TEST(FeedbackTransport, MessagesWithHitsAlwaysHaveOneSignature) {
  RecordingLog log;
  host::LinuxTransport transport(log);
  for (const Array& hits : {Array{}, Array{Value(Dictionary{{"Path", "/"}})}}) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const host::FileDescriptor client(ends[0]);
    auto connection =
        transport.connectionToEndpoint(std::make_unique<host::DescriptorEndpoint>(host::FileDescriptor(ends[1])));
    ASSERT_TRUE(connection.has_value());
    (*connection)->resume();
    (*connection)->processPrivilegedOperationFeedback({{"FileObjectInfo", hits}});
    connection->reset();
    sendAll(client.get(), "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
    std::string bytes;
    char part[4096];
    for (ssize_t count = 0; (count = recv(client.get(), part, sizeof part, 0)) > 0;) {
      bytes.append(part, static_cast<std::size_t>(count));
    }
    using namespace std::string_literals;
    EXPECT_NE(bytes.find("FileObjectInfo\0\6aa{sv}\0"s), std::string::npos);
    EXPECT_NE(bytes.find("/com/vantrell/PrivilegedOperationFeedback"), std::string::npos);
    EXPECT_NE(bytes.find("com.vantrell.QELPrivilegedOperationFeedbackProtocol"), std::string::npos);
    EXPECT_NE(bytes.find("processPrivilegedOperationFeedback"), std::string::npos);
  }
}

}  // namespace
}  // namespace vantrell::tests
