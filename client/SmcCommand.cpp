// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/SmcCommand.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "client/JsonOutput.h"
#include "client/StreamLog.h"
#include "client/TerminalText.h"
#include "system/QELSystemManagementController.h"
#include "system/SimulatedSmc.h"

namespace vantrell {

namespace {

constexpr std::size_t kColumns = 4;
using Row = std::array<std::string, kColumns>;
using Controller = QELSystemManagementController;

Json jsonOf(const std::string& key, const std::optional<Dictionary>& entry) {
  const auto member = [&](const char* name) {
    const auto* value = entry ? entry->find(name) : nullptr;
    return value ? jsonFromValue(*value) : Json(nullptr);
  };
  auto object = Json::object();
  object["key"] = key;
  object["type"] = member("Type");
  object["writeOnly"] = member("IsWriteOnly");
  object["value"] = member("Value");
  return object;
}

/// Texts as they stand, everything else as JSON has it. A row is one line, whatever the controller says.
std::string cell(const Json& value) {
  if (value.is_null()) return "-";
  return terminalSafe(value.is_string() ? value.get<std::string>() : jsonLine(value));
}

Row rowOf(const Json& object) {
  const auto& writeOnly = object["writeOnly"];
  const char* access = writeOnly.is_null() ? "-" : writeOnly.get<bool>() ? "write-only" : "read";
  return {cell(object["key"]), cell(object["type"]), access, cell(object["value"])};
}

void printTable(std::ostream& out, const std::vector<Json>& objects) {
  std::vector<Row> rows{{"Key", "Type", "Access", "Value"}};
  for (const auto& object : objects) rows.push_back(rowOf(object));
  std::array<std::size_t, kColumns> widths{};
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  for (const auto& row : rows) {
    for (std::size_t i = 0; i + 1 < kColumns; ++i) out << row[i] << std::string(widths[i] - row[i].size() + 2, ' ');
    out << row.back() << '\n';
  }
}

ExitStatus printKeys(const CommandContext& context, const Controller& controller) {
  std::vector<Json> objects;
  for (const auto& key : controller.availableKeys()) {
    objects.push_back(jsonOf(key, controller.updateCacheForProperty(key)));
  }
  if (context.json) {
    for (const auto& object : objects) context.out << jsonLine(object) << '\n';
  } else {
    printTable(context.out, objects);
  }
  context.out.flush();
  return context.out ? ExitStatus::Success : ExitStatus::Failure;
}

ExitStatus printKeysOf(const CommandContext& context, host::SmcDriver& driver) {
  StreamLog log(context.err, context.terminal.isTerminal(host::StandardStream::Error));
  const auto controller = Controller::init(driver, log);
  if (controller) return printKeys(context, *controller);
  context.complain(
      "The System Management Controller doesn't tell its keys. It may take the superuser to ask for them.");
  return ExitStatus::Failure;
}

}  // namespace

ExitStatus printSmcKeys(const CommandContext& context, bool simulated) {
  if (simulated) {
    SimulatedSmc smc;
    return printKeysOf(context, smc);
  }
  if (!context.host.smcDriver->connect()) {
    context.complain(
        "This computer has no System Management Controller, or no driver for it. \"smc --simulated\" shows one that is "
        "made up.");
    return ExitStatus::Failure;
  }
  return printKeysOf(context, *context.host.smcDriver);
}

}  // namespace vantrell
