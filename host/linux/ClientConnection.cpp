// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ClientConnection.h"

#include <cerrno>
#include <utility>

#include "foundation/PosixCodes.h"
#include "host/linux/DBusErrors.h"
#include "host/linux/LinuxFeedbackListener.h"
#include "host/linux/PeerBus.h"
#include "host/linux/UnixAddress.h"
#include "host/linux/WireFormat.h"
#include "host/linux/WireNames.h"
#include "host/linux/WireReader.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

/// How long the far end has for the handshake, as sd-bus gives its own.
constexpr std::chrono::seconds kHandshakeLimit{25};

int keepReply(sd_bus_message* reply, void* kept, sd_bus_error*) noexcept {
  static_cast<BusMessage*>(kept)->reset(sd_bus_message_ref(reply));
  return 0;
}

int nameOwnerChanged(sd_bus_message* signal, void* left, sd_bus_error*) noexcept {
  const char* name = nullptr;
  const char* before = nullptr;
  const char* after = nullptr;
  if (sd_bus_message_read(signal, "sss", &name, &before, &after) > 0) *static_cast<bool*>(left) = *after == '\0';
  return 0;
}

}  // namespace

Result<std::unique_ptr<ServiceConnection>> ClientConnection::toAddress(const std::string& address) {
  const Result<std::string> path = pathOfUnixAddress(address);
  if (!path) return failure(path.error());
  Result<FileDescriptor> socket = connectToSocket(*path);
  if (!socket) return failure(socket.error());
  Result<Bus> bus = makeClientBus(*std::move(socket));
  if (!bus) return failure(bus.error());
  if (const int started = sd_bus_start(bus->get()); started < 0) {
    return posixFailure(codeOfConnectionFailure(started));
  }
  auto connection = std::make_unique<ClientConnection>("");
  if (const ErrorOrNil problem = connection->open(*std::move(bus))) return failure(*problem);
  return connection;
}

Result<std::unique_ptr<ServiceConnection>> ClientConnection::toServiceOnBus(std::string_view serviceName) {
  auto connection = std::make_unique<ClientConnection>(std::string(serviceName));
  if (sd_bus_service_name_is_valid(connection->destination_.c_str()) <= 0) return errnoFailure(EINVAL);
  sd_bus* opened = nullptr;
  if (const int result = sd_bus_open_system(&opened); result < 0) return errnoFailure(-result);
  if (const ErrorOrNil problem = connection->open(Bus(opened))) return failure(*problem);
  if (const ErrorOrNil problem = connection->watchService()) return failure(*problem);
  return connection;
}

ErrorOrNil ClientConnection::open(Bus bus) {
  BusChannel::Lock lock = channel_.lock();
  channel_.attach(std::move(bus));
  if (pumpUntil(
          lock, [this] { return sd_bus_is_ready(channel_.bus()) > 0; }, Clock::now() + kHandshakeLimit)) {
    return std::nullopt;
  }
  return closed_ ? lossOfConnection() : Error::posix(posix::kTimedOut);
}

// The bus tells when the service leaves; on a socket of our own its end does.
ErrorOrNil ClientConnection::watchService() {
  const BusChannel::Lock lock = channel_.lock();
  const std::string match =
      "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
      "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
      destination_ + "'";
  const int result =
      sd_bus_add_match_async(channel_.bus(), nullptr, match.c_str(), nameOwnerChanged, nullptr, &serviceLeft_);
  return result < 0 ? ErrorOrNil(errorFromErrno(-result)) : std::nullopt;
}

Error ClientConnection::lossOfConnection() const {
  return Error::posix(failure_ == 0 ? posix::kConnectionReset : codeOfConnectionFailure(failure_));
}

Result<BusMessage> ClientConnection::request(const char* method, const Write& write) {
  if (closed_) return posixFailure(posix::kNotConnected);
  Result<BusMessage> message = makeMethodCall(channel_.bus(), destination_.empty() ? nullptr : destination_.c_str(),
                                              kServicePath.text, kServiceInterface, method);
  if (!message) return message;
  WireWriter writer(message->get(), Unsendable::Refuse);
  write(writer);
  if (writer.status() < 0) return errnoFailure(-writer.status());
  if (writer.bytes() > kMaximumMessageBytes) return errnoFailure(EMSGSIZE);
  return message;
}

Result<BusMessage> ClientConnection::answerTo(BusChannel::Lock& lock, BusMessage request) {
  BusMessage reply;
  sd_bus_slot* made = nullptr;
  const int sent = sd_bus_call_async(channel_.bus(), &made, request.get(), keepReply, &reply, UINT64_MAX);
  if (sent < 0) return posixFailure(codeOfConnectionFailure(sent));
  const BusSlot slot(made);
  // The message holds a duplicate of the endpoint: kept, it would keep the client from seeing the service close it.
  request.reset();
  if (led_) channel_.wakeForOutput();
  if (!pumpUntil(lock, [&] { return reply != nullptr; })) return failure(lossOfConnection());
  if (const sd_bus_error* error = sd_bus_message_get_error(reply.get())) return failure(errorOfReply(*error));
  return reply;
}

Result<BusMessage> ClientConnection::call(BusChannel::Lock& lock, const char* method, const Write& write) {
  Result<BusMessage> message = request(method, write);
  if (!message) return message;
  return answerTo(lock, *std::move(message));
}

Result<std::string> ClientConnection::getVersionString() {
  BusChannel::Lock lock = channel_.lock();
  const Result<BusMessage> reply = call(lock, kGetVersionMethod, [](WireWriter&) {});
  if (!reply) return failure(reply.error());
  std::string version;
  if (!WireReader(reply->get()).text(version)) return posixFailure(posix::kProtocol);
  return version;
}

Result<Data> ClientConnection::registerClientWithPID(std::int32_t pid) {
  BusChannel::Lock lock = channel_.lock();
  const Result<BusMessage> reply = call(lock, kRegisterMethod, [pid](WireWriter& writer) { writer.signed32(pid); });
  if (!reply) return failure(reply.error());
  Data salt;
  if (!WireReader(reply->get()).data(salt)) return posixFailure(posix::kProtocol);
  return salt;
}

ErrorOrNil ClientConnection::unregisterClientWithPID(std::int32_t pid) {
  return sendOneWay(kUnregisterMethod, [pid](WireWriter& writer) { writer.signed32(pid); });
}

Result<ErrorOrNil> ClientConnection::performPrivilegedOperation(std::uint64_t code, DataView token,
                                                                FeedbackListener* feedback, const Array& arguments) {
  FileDescriptor endpoint;
  if (feedback) {
    auto* listener = dynamic_cast<LinuxFeedbackListener*>(feedback);
    if (listener) endpoint = listener->takeEndpoint();
    if (!endpoint) return posixFailure(posix::kInvalidArgument);
  }
  BusChannel::Lock lock = channel_.lock();
  Result<BusMessage> message = request(kPerformMethod, [&](WireWriter& writer) {
    writer.unsignedNumber(code);
    writer.data(token);
    writer.descriptors(endpoint.get());
    writer.array(arguments);
  });
  endpoint.reset();
  if (!message) return failure(message.error());
  const Result<BusMessage> reply = answerTo(lock, *std::move(message));
  if (!reply) return failure(reply.error());
  ErrorOrNil result;
  if (!WireReader(reply->get()).errorOrNil(result)) return posixFailure(posix::kProtocol);
  return result;
}

ErrorOrNil ClientConnection::cancelPrivilegedOperation(std::uint64_t code, DataView token, const Array& arguments) {
  return sendOneWay(kCancelMethod, [&](WireWriter& writer) {
    writer.unsignedNumber(code);
    writer.data(token);
    writer.array(arguments);
  });
}

ErrorOrNil ClientConnection::sendOneWay(const char* method, const Write& write) {
  BusChannel::Lock lock = channel_.lock();
  const Result<BusMessage> message = request(method, write);
  if (!message) return message.error();
  if (const int sent = sd_bus_send(channel_.bus(), message->get(), nullptr); sent < 0) {
    return Error::posix(codeOfConnectionFailure(sent));
  }
  if (channel_.isDrained()) return std::nullopt;
  // Someone has to write the rest: whoever leads, or this thread.
  if (led_) channel_.wakeForOutput();
  if (!pumpUntil(lock, [this] { return channel_.isDrained(); })) return lossOfConnection();
  return std::nullopt;
}

bool ClientConnection::waitUntilClosed(std::chrono::milliseconds limit) {
  BusChannel::Lock lock = channel_.lock();
  pumpUntil(
      lock, [this] { return serviceLeft_; }, Clock::now() + limit);
  return closed_ || serviceLeft_;
}

bool ClientConnection::pumpUntil(BusChannel::Lock& lock, const std::function<bool()>& done,
                                 std::optional<Clock::time_point> until) {
  while (!done() && !closed_ && (!until || Clock::now() < *until)) {
    if (led_) {
      follow(lock, until);
    } else {
      lead(lock, done, until);
    }
  }
  return done();
}

void ClientConnection::follow(BusChannel::Lock& lock, std::optional<Clock::time_point> until) {
  ++followers_;
  if (until) {
    changed_.wait_until(lock, *until);
  } else {
    changed_.wait(lock);
  }
  --followers_;
}

void ClientConnection::lead(BusChannel::Lock& lock, const std::function<bool()>& done,
                            std::optional<Clock::time_point> until) {
  led_ = true;
  while (!done() && !closed_) {
    const int processed = channel_.process(true, SIZE_MAX);
    if (processed < 0) {
      failure_ = processed;
      closed_ = true;
    } else if (processed > 0) {
      if (followers_ != 0) changed_.notify_all();
    } else if (!until) {
      channel_.wait(lock);
    } else {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now());
      if (left.count() <= 0) break;
      channel_.wait(lock, left);
    }
  }
  led_ = false;
  // One of the others leads from here on.
  if (followers_ != 0) changed_.notify_all();
}

}  // namespace vantrell::host
