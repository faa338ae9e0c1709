// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ServiceObject.h"

#include <cerrno>
#include <memory>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>

#include "host/linux/DescriptorEndpoint.h"
#include "host/linux/WireNames.h"
#include "host/linux/WireReader.h"
#include "host/posix/MessageSize.h"

namespace vantrell::host {

namespace {

template <ServiceMethod kMethod>
int arrived(sd_bus_message* message, void* sink, sd_bus_error* error) noexcept try {
  return static_cast<ServiceCallSink*>(sink)->callArrived(kMethod, message, error);
} catch (...) {
  return -ENOMEM;
}

constexpr auto kAnyone = SD_BUS_VTABLE_UNPRIVILEGED;
constexpr auto kAnyoneOneWay = SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY;

const sd_bus_vtable kServiceMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES(kGetVersionMethod, "", , "s", SD_BUS_PARAM(result), arrived<ServiceMethod::GetVersion>,
                             kAnyone),
    SD_BUS_METHOD_WITH_NAMES(kRegisterMethod, "i", SD_BUS_PARAM(pid), "ay", SD_BUS_PARAM(salt),
                             arrived<ServiceMethod::Register>, kAnyone),
    SD_BUS_METHOD_WITH_NAMES(kUnregisterMethod, "i", SD_BUS_PARAM(pid), "", , arrived<ServiceMethod::Unregister>,
                             kAnyoneOneWay),
    SD_BUS_METHOD_WITH_NAMES(kPerformMethod, "tayahav",
                             SD_BUS_PARAM(code) SD_BUS_PARAM(token) SD_BUS_PARAM(feedbackEndpoint)
                                 SD_BUS_PARAM(arguments),
                             "a(sxa{sv})", SD_BUS_PARAM(result), arrived<ServiceMethod::Perform>, kAnyone),
    SD_BUS_METHOD_WITH_NAMES(kCancelMethod, "tayav", SD_BUS_PARAM(code) SD_BUS_PARAM(token) SD_BUS_PARAM(arguments), "",
                             , arrived<ServiceMethod::Cancel>, kAnyoneOneWay),
    SD_BUS_VTABLE_END,
};

bool isUnixStreamSocket(int descriptor) noexcept {
  int domain = 0;
  int type = 0;
  socklen_t size = sizeof domain;
  if (getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &size) != 0 || domain != AF_UNIX) return false;
  size = sizeof type;
  return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

// None or one descriptor, of a stream socket; it belongs to the message and is duplicated.
bool readEndpoint(sd_bus_message* message, std::unique_ptr<Endpoint>& endpoint) {
  if (sd_bus_message_enter_container(message, 'a', "h") < 0) return false;
  const int atEnd = sd_bus_message_at_end(message, 0);
  if (atEnd < 0) return false;
  if (atEnd == 0) {
    int passed = -1;
    if (sd_bus_message_read_basic(message, 'h', &passed) <= 0 || !isUnixStreamSocket(passed)) return false;
    FileDescriptor own(fcntl(passed, F_DUPFD_CLOEXEC, 3));
    if (!own) return false;
    endpoint = std::make_unique<DescriptorEndpoint>(std::move(own));
  }
  return sd_bus_message_exit_container(message) >= 0;
}

struct OperationRequest {
  std::uint64_t code = 0;
  Data token;
  std::unique_ptr<Endpoint> endpoint;
  Array arguments;
};

bool readRequest(sd_bus_message* message, bool hasEndpoint, OperationRequest& request) {
  WireReader reader(message);
  return reader.unsignedNumber(request.code) && reader.data(request.token) &&
         (!hasEndpoint || readEndpoint(message, request.endpoint)) && reader.array(request.arguments);
}

// The message itself is held as well, in about the same size.
std::size_t bytesOf(const OperationRequest& request) noexcept {
  return request.token.size() + heldBytes(request.arguments);
}

void refuseArguments(IncomingCall call) {
  call.refuse(SD_BUS_ERROR_INVALID_ARGS, "The arguments hold what this method does not take.");
}

void deliverRegistration(IncomingCall call, QELPrivilegedToolProtocol& object) {
  std::int32_t pid = 0;
  if (!WireReader(call.message()).signed32(pid)) return refuseArguments(std::move(call));
  if (call.method() == ServiceMethod::Unregister) return object.unregisterClientWithPID(pid);
  object.registerClientWithPID(pid, [call = std::move(call)](const Data& salt) mutable {
    call.answer([&](WireWriter& writer) { writer.data(salt); });
  });
}

void deliverOperation(IncomingCall call, QELPrivilegedToolProtocol& object) {
  const bool performs = call.method() == ServiceMethod::Perform;
  OperationRequest request;
  if (!readRequest(call.message(), performs, request)) return refuseArguments(std::move(call));
  if (!performs) {
    return object.cancelPrivilegedOperation(request.code, std::move(request.token), std::move(request.arguments));
  }
  if (!call.charge(bytesOf(request)))
    return call.refuse(SD_BUS_ERROR_LIMITS_EXCEEDED, "The requests that wait for their answers are too large.");
  object.performPrivilegedOperation(request.code, std::move(request.token), std::move(request.endpoint),
                                    std::move(request.arguments),
                                    [call = std::move(call)](const ErrorOrNil& result) mutable {
                                      call.answer([&](WireWriter& writer) { writer.errorOrNil(result); });
                                    });
}

}  // namespace

int exportServiceObject(sd_bus* bus, ServiceCallSink& sink) noexcept {
  return sd_bus_add_object_vtable(bus, nullptr, kServicePath.text, kServiceInterface, kServiceMethods, &sink);
}

void deliver(IncomingCall call, QELPrivilegedToolProtocol& object) {
  switch (call.method()) {
    case ServiceMethod::GetVersion:
      return object.getVersionStringUsingReply([call = std::move(call)](const std::string& version) mutable {
        call.answer([&](WireWriter& writer) { writer.text(version); });
      });
    case ServiceMethod::Register:
    case ServiceMethod::Unregister:
      return deliverRegistration(std::move(call), object);
    case ServiceMethod::Perform:
    case ServiceMethod::Cancel:
      return deliverOperation(std::move(call), object);
  }
}

}  // namespace vantrell::host
