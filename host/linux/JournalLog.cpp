// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/JournalLog.h"

#include <array>
#include <cerrno>
#include <string>

#include <sys/uio.h>

// The place in this file that calls the journal tells nobody anything.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

#include "host/linux/LinuxSystemLog.h"

namespace vantrell::host {

void JournalLog::write(std::string_view subsystem, std::string_view category, LogLevel level,
                       std::string_view message) noexcept try {
  const int callersErrno = errno;
  std::array<std::string, 5> fields{"MESSAGE=", "PRIORITY=", "SYSLOG_IDENTIFIER="};
  fields[0] += withoutFinalNewline(message);
  fields[1] += static_cast<char>('0' + syslogPriority(level));
  fields[2] += kLogIdentifier;
  std::size_t count = 3;
  if (!subsystem.empty()) fields[count++] = "SUBSYSTEM=" + std::string(subsystem);
  if (!category.empty()) fields[count++] = "CATEGORY=" + std::string(category);
  std::array<iovec, 5> parts{};
  for (std::size_t i = 0; i < count; ++i) parts[i] = {fields[i].data(), fields[i].size()};
  sd_journal_sendv(parts.data(), static_cast<int>(count));
  errno = callersErrno;
} catch (...) {
  // No memory for the entry: it is lost, as it is when the journal is gone.
}

}  // namespace vantrell::host
