// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixTerminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace vantrell::host {

namespace {
int descriptorOf(StandardStream stream) {
  return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}
}  // namespace

bool PosixTerminal::isTerminal(StandardStream stream) const {
  return isatty(descriptorOf(stream)) == 1;
}

std::optional<unsigned> PosixTerminal::columns(StandardStream stream) const {
  winsize size{};
  // A terminal whose size nobody set (a serial line, say) reports 0.
  if (ioctl(descriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

std::unique_ptr<Terminal> makeTerminal() {
  return std::make_unique<PosixTerminal>();
}

}  // namespace vantrell::host
