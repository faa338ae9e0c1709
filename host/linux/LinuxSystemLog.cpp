// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxSystemLog.h"

#include <sys/stat.h>

#include "host/linux/JournalLog.h"
#include "host/linux/NoLog.h"
#include "host/linux/SyslogLog.h"

namespace vantrell::host {

namespace {
// /dev/log is a symbolic link to a socket on most systems.
bool isSocket(const char* path) {
  struct stat status {};
  return stat(path, &status) == 0 && S_ISSOCK(status.st_mode);
}
}  // namespace

std::unique_ptr<SystemLog> makeSystemLog() {
  if (isSocket("/run/systemd/journal/socket")) return std::make_unique<JournalLog>();
  if (isSocket("/dev/log")) return std::make_unique<SyslogLog>();
  return std::make_unique<NoLog>();
}

}  // namespace vantrell::host
