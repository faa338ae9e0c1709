// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/SmcDriver.h"
#include "system/SimulatedSmc.h"

namespace vantrell::tests {

/// A driver that notes every step and fails where a test wants it to; what is left alone, a simulated controller
/// answers. Used by one thread.
class ScriptedSmc final : public host::SmcDriver {
 public:
  explicit ScriptedSmc(std::vector<SimulatedSmc::Key> keys = SimulatedSmc::everyKindOfKey()) : smc(std::move(keys)) {}

  SimulatedSmc smc;
  host::SmcReturnCode connectCode = host::kSmcSuccess;
  host::SmcReturnCode openCode = host::kSmcSuccess;
  host::SmcReturnCode closeCode = host::kSmcSuccess;
  /// Asked before each call: true when it has set `output` and `code` itself.
  std::function<bool(const host::SmcRecord& input, host::SmcRecord& output, host::SmcReturnCode& code)> answer;

  std::vector<std::string> steps;
  std::vector<host::SmcRecord> calls;

  std::expected<std::unique_ptr<host::SmcConnection>, host::SmcReturnCode> connect() override {
    steps.emplace_back("connect");
    if (connectCode != host::kSmcSuccess) return std::unexpected(connectCode);
    return std::make_unique<Connection>(*this);
  }

  /// How many calls with this command were made.
  std::size_t callsWith(std::uint8_t command) const {
    std::size_t count = 0;
    for (const auto& call : calls) count += call.command == command ? 1 : 0;
    return count;
  }

 private:
  class Connection final : public host::SmcConnection {
   public:
    explicit Connection(ScriptedSmc& driver) : driver_(driver), inner_(std::move(driver.smc.connect().value())) {}
    ~Connection() override { driver_.steps.emplace_back("disconnect"); }

    host::SmcReturnCode openUserClient() override {
      driver_.steps.emplace_back("open");
      static_cast<void>(inner_->openUserClient());
      return driver_.openCode;
    }
    host::SmcReturnCode closeUserClient() override {
      driver_.steps.emplace_back("close");
      return driver_.closeCode;
    }
    host::SmcReturnCode call(const host::SmcRecord& input, host::SmcRecord& output) override {
      driver_.steps.emplace_back("call");
      driver_.calls.push_back(input);
      host::SmcReturnCode code = host::kSmcSuccess;
      if (driver_.answer && driver_.answer(input, output, code)) return code;
      return inner_->call(input, output);
    }

   private:
    ScriptedSmc& driver_;
    std::unique_ptr<host::SmcConnection> inner_;
  };
};

}  // namespace vantrell::tests
