// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/socket.h>
#include <systemd/sd-bus.h>

#include "host/linux/BusChannel.h"
#include "host/linux/PeerBus.h"
#include "host/linux/ServiceObject.h"
#include "host/linux/WireFormat.h"
#include "host/linux/WireReader.h"
#include "host/linux/WireWriter.h"

// The input is the body of a request, byte by byte as a client would put it on the wire, behind a sound header. The
// service's side takes it from the socket, reads it and hands it to an object that checks what a reader must keep.

namespace {

using namespace vantrell;

void require(bool condition) {
  if (!condition) std::abort();
}

int depthOf(const Value& value) {
  int deepest = 0;
  const auto look = [&](const Value& inner) { deepest = std::max(deepest, depthOf(inner)); };
  if (const Array* array = value.asArray()) {
    for (const Value& element : *array) look(element);
  } else if (const Dictionary* dictionary = value.asDictionary()) {
    for (const DictionaryEntry& entry : *dictionary) look(entry.value);
  } else if (const Error* error = value.asError()) {
    for (const DictionaryEntry& entry : error->userInfo()) look(entry.value);
  } else {
    return 0;
  }
  return deepest + 1;
}

/// Takes requests; what was read has to be within bounds and fit for sending.
class Object final : public QELPrivilegedToolProtocol {
 public:
  void getVersionStringUsingReply(Reply<std::string> reply) override { reply(""); }
  void registerClientWithPID(std::int32_t, Reply<Data> saltReply) override { saltReply({}); }
  void unregisterClientWithPID(std::int32_t) override {}
  void performPrivilegedOperation(std::uint64_t, Data, std::unique_ptr<host::Endpoint>, std::optional<Array> arguments,
                                  Reply<ErrorOrNil> reply) override {
    for (const Value& value : *arguments) require(!value.isNull() && depthOf(value) <= host::kMaximumValueDepth);
    reply(std::nullopt);
  }
  void cancelPrivilegedOperation(std::uint64_t, Data, std::optional<Array> arguments) override {
    require(arguments.has_value());
  }
};

void appendNumber(std::string& bytes, std::uint32_t number) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof raw);
  bytes.append(raw, sizeof raw);
}

void appendField(std::string& header, char code, char type, const std::string& value) {
  header.resize((header.size() + 7) / 8 * 8);
  header += {code, '\1', type, '\0'};
  if (type == 'g') {
    header += static_cast<char>(value.size());
  } else {
    appendNumber(header, static_cast<std::uint32_t>(value.size()));
  }
  header += value;
  header += '\0';
}

std::string headerFor(const char* method, const char* signature, std::size_t bodySize) {
  std::string header{'l', '\1', '\0', '\1'};
  appendNumber(header, static_cast<std::uint32_t>(bodySize));
  appendNumber(header, 1);
  appendNumber(header, 0);
  appendField(header, 1, 'o', "/com/vantrell/PrivilegedTool");
  appendField(header, 2, 's', "com.vantrell.QELPrivilegedToolProtocol");
  appendField(header, 3, 's', method);
  appendField(header, 8, 'g', signature);
  const auto fields = static_cast<std::uint32_t>(header.size() - 16);
  std::memcpy(header.data() + 12, &fields, sizeof fields);
  header.resize((header.size() + 7) / 8 * 8);
  return header;
}

/// Both ends of a connection in one thread.
class Connection final : host::ServiceCallSink {
 public:
  Connection() {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0);
    client_.reset(ends[0]);
    Result<host::Bus> bus = host::makeServerBus(host::FileDescriptor(ends[1]));
    require(bus && host::exportServiceObject(bus->get(), *this) >= 0 && sd_bus_start(bus->get()) >= 0);
    const host::BusChannel::Lock lock = channel_->lock();
    channel_->attach(*std::move(bus));
    constexpr char kHandshake[] = "\0AUTH EXTERNAL\r\nDATA\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n";
    sendToService({kHandshake, sizeof kHandshake - 1});
    while (channel_->process(true, SIZE_MAX) > 0) {
    }
  }

  void request(const std::string& message) {
    sendToService(message);
    for (;;) {
      std::vector<host::IncomingCall> calls;
      int processed = 0;
      {
        const host::BusChannel::Lock lock = channel_->lock();
        processed = channel_->process(true, SIZE_MAX);
        calls.swap(arrived_);
      }
      require(processed >= 0);  // a broken body must not end the connection
      for (host::IncomingCall& call : calls) host::deliver(std::move(call), object_);
      if (processed == 0 && calls.empty()) break;
    }
    char answers[65536];
    while (recv(client_.get(), answers, sizeof answers, 0) > 0) {
    }
  }

 private:
  int callArrived(host::ServiceMethod method, sd_bus_message* message, sd_bus_error*) override {
    arrived_.emplace_back(channel_, account_, method, message);
    return 1;
  }
  void sendToService(const std::string& bytes) {
    require(send(client_.get(), bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
  }

  Object object_;
  std::shared_ptr<host::BusChannel> channel_ = std::make_shared<host::BusChannel>();
  std::shared_ptr<host::ClientAccount> account_ = std::make_shared<host::ClientAccount>();
  std::vector<host::IncomingCall> arrived_;
  host::FileDescriptor client_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Connection connection;
  if (size == 0 || size > 65536) return 0;
  // The first byte chooses the method.
  const bool performs = (data[0] & 1) != 0;
  const std::string body(reinterpret_cast<const char*>(data + 1), size - 1);
  const char* method = performs ? "performPrivilegedOperation" : "cancelPrivilegedOperation";
  connection.request(headerFor(method, performs ? "tayahav" : "tayav", body.size()) + body);
  return 0;
}
