// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

#include "client/ExitStatus.h"
#include "client/HelperLocation.h"

namespace vantrell {

/// What a command line of vantrellctl asks for.
struct CommandLine {
  enum class Command : std::uint8_t { List, Version, Run, MachO, Bundle, Signature, Smc };

  Command command = Command::List;
  ConnectionOptions connection;
  bool json = false;
  bool progress = true;
  std::string identifier;              // run
  std::vector<std::string> arguments;  // run: every word after the identifier, whatever it begins with
  std::string file;                    // macho, bundle, signature
  bool simulated = false;              // smc
};

/// The command line, or the status to end with: Success once help was printed to `out`, Usage after a message on `err`.
std::variant<CommandLine, ExitStatus> parseCommandLine(int count, const char* const* words, std::ostream& out,
                                                       std::ostream& err);

}  // namespace vantrell
