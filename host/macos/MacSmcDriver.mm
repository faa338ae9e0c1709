// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacSmcDriver.h"

#include "host/macos/IOObject.h"
#include "host/macos/MainPort.h"

namespace vantrell::host {
namespace {

constexpr char kDriverClass[] = "AppleSMC";
constexpr std::uint32_t kConnectionType = 1;
// The driver's methods.
constexpr std::uint32_t kOpenUserClient = 0;
constexpr std::uint32_t kCloseUserClient = 1;
constexpr std::uint32_t kCallController = 2;

constexpr SmcReturnCode codeFrom(kern_return_t code) {
  return static_cast<SmcReturnCode>(code);
}

class DriverConnection final : public SmcConnection {
 public:
  DriverConnection() = default;
  DriverConnection(const DriverConnection&) = delete;
  DriverConnection& operator=(const DriverConnection&) = delete;
  ~DriverConnection() override {
    if (connection_ != IO_OBJECT_NULL) IOServiceClose(connection_);
  }

  kern_return_t open(io_service_t service) {
    return IOServiceOpen(service, mach_task_self(), kConnectionType, &connection_);
  }

  SmcReturnCode openUserClient() override { return callWithoutArguments(kOpenUserClient); }
  SmcReturnCode closeUserClient() override { return callWithoutArguments(kCloseUserClient); }

  SmcReturnCode call(const SmcRecord& input, SmcRecord& output) override {
    output = {};
    std::size_t outputSize = sizeof output;
    return codeFrom(
        IOConnectCallStructMethod(connection_, kCallController, &input, sizeof input, &output, &outputSize));
  }

 private:
  SmcReturnCode callWithoutArguments(std::uint32_t method) {
    // A count of this call's own: for none at all, the framework takes one that all threads share.
    std::uint32_t outputCount = 0;
    return codeFrom(IOConnectCallScalarMethod(connection_, method, nullptr, 0, nullptr, &outputCount));
  }

  io_connect_t connection_ = IO_OBJECT_NULL;
};

/// The first service of the driver's class, or none.
IOObject findService(const MainPort& port) {
  const CFMutableDictionaryRef matching = IOServiceMatching(kDriverClass);
  if (!matching) return IOObject();
  IOObject services;
  // Takes the dictionary over, whatever comes of it.
  if (IOServiceGetMatchingServices(port.port(), matching, services.out()) != KERN_SUCCESS || !services)
    return IOObject();
  return IOObject(IOIteratorNext(services.get()));
}

}  // namespace

std::expected<std::unique_ptr<SmcConnection>, SmcReturnCode> MacSmcDriver::connect() {
  const auto port = MainPort::get();
  if (!port) return std::unexpected(codeFrom(port.error()));
  const auto service = findService(*port);
  if (!service) return std::unexpected(kSmcGeneralError);
  auto connection = std::make_unique<DriverConnection>();
  if (const auto code = connection->open(service.get()); code != KERN_SUCCESS) return std::unexpected(codeFrom(code));
  return connection;
}

}  // namespace vantrell::host
