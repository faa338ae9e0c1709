// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacFirmwareVariables.h"

#include <utility>

#include "host/macos/CoreFoundationRef.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/IOObject.h"
#include "host/macos/MainPort.h"

namespace vantrell::host {
namespace {

constexpr char kOptionsPath[] = "IODeviceTree:/options";
constexpr IOOptionBits kNoOptions = 0;

bool canBeName(std::string_view name) {
  return !name.empty() && name.find('\0') == std::string_view::npos;
}

class RegistryOptions final : public FirmwareOptions {
 public:
  explicit RegistryOptions(IOObject entry) : entry_(std::move(entry)) {}

  std::optional<Value> value(std::string_view name) override {
    @autoreleasepool {
      if (!canBeName(name)) return std::nullopt;
      const auto key = bridgedRef<CFStringRef>(stringFrom(name));
      const CoreFoundationRef<CFTypeRef> property(
          IORegistryEntryCreateCFProperty(entry_.get(), key.get(), kCFAllocatorDefault, kNoOptions));
      if (!property) return std::nullopt;
      auto value = valueFrom((__bridge id)property.get());
      // There is a variable, if of a kind that this system has none for.
      return value ? std::move(value) : std::optional<Value>(Null());
    }
  }

  DeviceReturnCode setValue(std::string_view name, const Value& value) override {
    @autoreleasepool {
      if (!canBeName(name)) return kIOReturnBadArgument;
      const auto key = bridgedRef<CFStringRef>(stringFrom(name));
      const auto property = bridgedRef<CFTypeRef>(objectFrom(value));
      if (!key || !property) return kIOReturnBadArgument;
      return IORegistryEntrySetCFProperty(entry_.get(), key.get(), property.get());
    }
  }

 private:
  const IOObject entry_;
};

}  // namespace

DeviceReturnCode MacFirmwareVariables::connect() {
  const auto port = MainPort::get();
  return port ? kDeviceSuccess : port.error();
}

std::unique_ptr<FirmwareOptions> MacFirmwareVariables::options() {
  // No port stands for the main one.
  IOObject entry(IORegistryEntryFromPath(MACH_PORT_NULL, kOptionsPath));
  if (!entry) return nullptr;
  return std::make_unique<RegistryOptions>(std::move(entry));
}

}  // namespace vantrell::host
