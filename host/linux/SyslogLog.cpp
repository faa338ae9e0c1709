// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/SyslogLog.h"

#include <cerrno>
#include <string>

#include <syslog.h>

#include "host/linux/LinuxSystemLog.h"

namespace vantrell::host {

namespace {

void appendPrintable(std::string& line, std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      line += c;
    } else {
      line += '#';
      for (int shift = 6; shift >= 0; shift -= 3) line += static_cast<char>('0' + ((byte >> shift) & 7));
    }
  }
}

}  // namespace

// Neither LOG_CONS nor LOG_PERROR: what the daemon does not take is lost rather than written elsewhere.
SyslogLog::SyslogLog() {
  openlog(kLogIdentifier, LOG_PID, LOG_DAEMON);
}

SyslogLog::~SyslogLog() {
  closelog();
}

void SyslogLog::write(std::string_view subsystem, std::string_view category, LogLevel level,
                      std::string_view message) noexcept try {
  const int callersErrno = errno;
  std::string line;
  if (!subsystem.empty() || !category.empty()) {
    line += '[';
    appendPrintable(line, subsystem);
    line += ':';
    appendPrintable(line, category);
    line += "] ";
  }
  appendPrintable(line, withoutFinalNewline(message));
  syslog(syslogPriority(level), "%s", line.c_str());
  errno = callersErrno;
} catch (...) {
  // No memory for the entry: it is lost.
}

}  // namespace vantrell::host
