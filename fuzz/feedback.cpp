// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <sys/socket.h>
#include <systemd/sd-bus.h>

#include "foundation/Value.h"
#include "host/linux/FeedbackCall.h"
#include "host/linux/FeedbackReceiver.h"
#include "host/linux/MarshalledReader.h"
#include "host/linux/PeerBus.h"
#include "host/linux/ValueReader.h"
#include "host/linux/WireNames.h"
#include "host/linux/WireReader.h"
#include "host/posix/FileDescriptor.h"

// The first byte chooses: the rest is what a service sends from the first byte on, what it sends behind the handshake,
// or the body of a message behind a sound header. In the last case sd-bus, which reads the same body, has to come to
// the same result; it takes more, though: booleans other than 0 and 1, and bytes behind the last value.

namespace {

using namespace vantrell;

void require(bool condition) {
  if (!condition) std::abort();
}

constexpr char kHandshakeText[] = "\0AUTH EXTERNAL\r\nDATA\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n";
constexpr std::string_view kHandshake(kHandshakeText, sizeof kHandshakeText - 1);

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

std::string bytesOfCall(const Dictionary& dictionary) {
  host::MarshalledMessage message;
  require(host::FeedbackCall().write(dictionary, 1, message));
  return std::string(message.bytes());
}

// In pieces of `step` bytes; the last message.
std::optional<Dictionary> receive(host::FeedbackReceiver& receiver, std::string_view bytes, std::size_t step) {
  std::optional<Dictionary> last;
  while (!bytes.empty() && !receiver.isBroken()) {
    const auto room = receiver.room();
    const std::size_t count = std::min({room.size(), bytes.size(), step});
    require(count != 0);
    std::memcpy(room.data(), bytes.data(), count);
    receiver.arrived(count);
    bytes.remove_prefix(count);
    while (auto message = receiver.next()) last = std::move(message);
  }
  return last;
}

std::string sizedBody(std::string_view body) {
  // Any message has the same header but for the body's length.
  std::string message = bytesOfCall({}).substr(0, bytesOfCall({}).size() - 8);
  const auto size = static_cast<std::uint32_t>(body.size());
  std::memcpy(message.data() + 4, &size, sizeof size);
  return message.append(body);
}

/// What sd-bus makes of the same bytes.
class PlainReader {
 public:
  PlainReader() {
    int ends[2];
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0);
    service_.reset(ends[0]);
    Result<host::Bus> bus = host::makeServerBus(host::FileDescriptor(ends[1]));
    static const sd_bus_vtable kMethods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD(host::kFeedbackMethod, "a{sv}", "", arrived, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    require(bus && sd_bus_add_object_vtable(bus->get(), nullptr, host::kFeedbackPath.text, host::kFeedbackInterface,
                                            kMethods, this) >= 0);
    require(sd_bus_start(bus->get()) >= 0);
    bus_ = *std::move(bus);
    write(kHandshake);
    char answers[256];
    require(recv(service_.get(), answers, sizeof answers, 0) > 0);
  }

  std::optional<Dictionary> read(std::string_view message) {
    last_.reset();
    write(message);
    return std::exchange(last_, std::nullopt);
  }

 private:
  static int arrived(sd_bus_message* message, void* self, sd_bus_error*) {
    Dictionary dictionary;
    if (host::WireReader(message).dictionary(dictionary)) {
      static_cast<PlainReader*>(self)->last_ = std::move(dictionary);
    }
    return 1;
  }
  void write(std::string_view bytes) {
    require(send(service_.get(), bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
    int processed = 0;
    while ((processed = sd_bus_process(bus_.get(), nullptr)) > 0) {
    }
    require(processed == 0);
  }

  host::FileDescriptor service_;
  host::Bus bus_;
  std::optional<Dictionary> last_;
};

void checkBody(std::string_view body) {
  static PlainReader plain;
  host::FeedbackReceiver receiver("");
  receive(receiver, kHandshake, SIZE_MAX);
  const std::string message = sizedBody(body);
  const auto read = receive(receiver, message, SIZE_MAX);
  const auto expected = plain.read(message);
  host::MarshalledReader bytes(message, message.size() - body.size(), false);
  Dictionary dictionary;
  const bool isReadable = host::ValueReader(bytes).dictionary(dictionary);
  require(!isReadable || expected.has_value());
  require(!receiver.isBroken() && read.has_value() == (isReadable && !bytes.more()));
  if (!read) return;
  require(depthOf(Value(*read)) <= host::kMaximumValueDepth + 1);
  const std::string written = bytesOfCall(*read);
  require(written == bytesOfCall(*expected));
  const auto again = receive(receiver, written, 7);
  require(again && bytesOfCall(*again) == written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 65536) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  if (data[0] % 3 == 2) {
    checkBody(bytes);
    return 0;
  }
  host::FeedbackReceiver receiver("");
  if (data[0] % 3 == 1) receive(receiver, kHandshake, SIZE_MAX);
  const auto message = receive(receiver, bytes, 1 + data[0] / 3U);
  if (message) require(depthOf(Value(*message)) <= host::kMaximumValueDepth + 1);
  return 0;
}
