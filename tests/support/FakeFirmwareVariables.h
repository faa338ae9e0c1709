// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/FirmwareVariables.h"

namespace vantrell::tests {

/// Firmware that knows types, and fails as it is told to.
class FakeFirmwareVariables final : public host::FirmwareVariables {
 public:
  using Variables = std::map<std::string, Value, std::less<>>;

  host::DeviceReturnCode connect() override { return connectCode; }
  std::unique_ptr<host::FirmwareOptions> options() override {
    return hasOptions ? std::make_unique<Options>(*this) : nullptr;
  }

  host::DeviceReturnCode connectCode = host::kDeviceSuccess;
  bool hasOptions = true;
  host::DeviceReturnCode setCode = host::kDeviceSuccess;
  Variables variables;
  int changes = 0;

 private:
  static constexpr auto kBadArgument = static_cast<host::DeviceReturnCode>(0xE00002C2U);

  class Options final : public host::FirmwareOptions {
   public:
    explicit Options(FakeFirmwareVariables& firmware) : firmware_(firmware) {}

    std::optional<Value> value(std::string_view name) override {
      const std::lock_guard lock(firmware_.mutex_);
      const auto found = firmware_.variables.find(name);
      return found == firmware_.variables.end() ? std::nullopt : std::optional(found->second);
    }
    host::DeviceReturnCode setValue(std::string_view name, const Value& value) override {
      const std::lock_guard lock(firmware_.mutex_);
      if (name.empty() || name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) return kBadArgument;
      if (firmware_.setCode != host::kDeviceSuccess) return firmware_.setCode;
      firmware_.variables.insert_or_assign(std::string(name), value);
      ++firmware_.changes;
      return host::kDeviceSuccess;
    }

   private:
    FakeFirmwareVariables& firmware_;
  };

  std::mutex mutex_;
};

}  // namespace vantrell::tests
