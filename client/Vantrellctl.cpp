// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/Vantrellctl.h"

#include <ostream>

#include "client/BundleCommand.h"
#include "client/CatalogueTable.h"
#include "client/MachOCommand.h"
#include "client/RunCommand.h"
#include "client/SignatureCommand.h"
#include "client/SmcCommand.h"

namespace vantrell {

namespace {

ExitStatus listOperations(const CommandContext& context) {
  if (context.json) {
    printCatalogueJson(context.out, context.operations);
  } else {
    printCatalogueTable(context.out, context.operations);
  }
  context.out.flush();
  return context.out ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace

ExitStatus carryOut(const CommandLine& line, const CommandContext& context) {
  switch (line.command) {
    case CommandLine::Command::List:
      return listOperations(context);
    case CommandLine::Command::Version:
      return printServiceVersion(context, line.connection);
    case CommandLine::Command::Run:
      return runOperation(context, line.connection, line.identifier, line.arguments);
    case CommandLine::Command::Signature:
      return describeSignature(context, line.file);
    case CommandLine::Command::Smc:
      return printSmcKeys(context, line.simulated);
    case CommandLine::Command::Bundle:
      return describeBundle(context, line.file);
    default:
      return describeExecutable(context, line.file);
  }
}

}  // namespace vantrell
