// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/Vantrellctl.h"

#include <iostream>
#include <variant>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/CommandLine.h"
#include "host/Host.h"
#include "host/Terminal.h"

int main(int count, char** words) {
  using namespace vantrell;
  const auto parsed = parseCommandLine(count, words, std::cout, std::cerr);
  if (const auto* status = std::get_if<ExitStatus>(&parsed)) return static_cast<int>(*status);
  const auto& line = std::get<CommandLine>(parsed);

  auto host = host::makeHost();
  const auto terminal = host::makeTerminal();
  const QELPrivilegedToolOperationSetLM4 operations(*host.systemLog);
  const CommandContext context{host, *terminal, operations, std::cout, std::cerr, line.json, line.progress};
  return static_cast<int>(carryOut(line, context));
}
