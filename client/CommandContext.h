// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <iosfwd>
#include <string>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "foundation/Error.h"
#include "host/Host.h"
#include "host/Terminal.h"

namespace vantrell {

/// What every command of vantrellctl works with.
struct CommandContext {
  host::Host& host;
  const host::Terminal& terminal;
  const QELPrivilegedToolOperationSet& operations;
  std::ostream& out;  // standard output
  std::ostream& err;  // standard error
  bool json = false;
  bool progress = true;

  /// Prints "vantrellctl: " and the message to standard error.
  void complain(const std::string& message) const;
  /// Prints the error's description, its suggestion, its origin and its causes to standard error.
  void complain(const Error& error) const;
};

}  // namespace vantrell
