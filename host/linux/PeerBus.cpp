// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PeerBus.h"

#include <systemd/sd-id128.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

Result<Bus> makePeerBus(FileDescriptor socket) {
  sd_bus* made = nullptr;
  int result = sd_bus_new(&made);
  Bus bus(made);
  if (result >= 0) result = sd_bus_set_fd(made, socket.get(), socket.get());
  if (result >= 0) static_cast<void>(socket.release());  // the bus closes it
  if (result >= 0) result = sd_bus_negotiate_fds(made, 1);
  if (result < 0) return errnoFailure(-result);
  return bus;
}

}  // namespace

Result<Bus> makeServerBus(FileDescriptor socket) {
  Result<Bus> bus = makePeerBus(std::move(socket));
  if (!bus) return bus;
  sd_id128_t identifier{};
  int result = sd_id128_randomize(&identifier);
  if (result >= 0) result = sd_bus_set_server(bus->get(), 1, identifier);
  if (result < 0) return errnoFailure(-result);
  return bus;
}

Result<Bus> makeClientBus(FileDescriptor socket) {
  return makePeerBus(std::move(socket));
}

Result<BusMessage> makeMethodCall(sd_bus* bus, const char* destination, const char* path, const char* interface,
                                  const char* method) {
  sd_bus_message* made = nullptr;
  const int result = sd_bus_message_new_method_call(bus, &made, destination, path, interface, method);
  if (result < 0) return errnoFailure(-result);
  return BusMessage(made);
}

}  // namespace vantrell::host
