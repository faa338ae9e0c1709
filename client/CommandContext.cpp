// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/CommandContext.h"

#include <ostream>

#include "client/ErrorText.h"
#include "client/TerminalText.h"

namespace vantrell {

void CommandContext::complain(const std::string& message) const {
  const bool escape = terminal.isTerminal(host::StandardStream::Error);
  err << "vantrellctl: " << (escape ? terminalSafe(message, LineBreaks::Keep) : message) << std::endl;
}

void CommandContext::complain(const Error& error) const {
  const auto text = textOfError(error);
  auto message = text.description;
  if (!text.recoverySuggestion.empty()) message += "\n" + text.recoverySuggestion;
  message += "\n" + originOfError(error);
  for (const auto& cause : causesOfError(error)) message += "\ncaused by: " + cause;
  complain(message);
}

}  // namespace vantrell
