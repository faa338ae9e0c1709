// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacProcessTable.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/param.h>
#include <sys/sysctl.h>
#include <sys/types.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

using Request = std::array<int, 4>;

// Between the question for the size and the reading processes may start. A table that outgrows the room so many times,
// each time more generous, is not outgrown by chance.
constexpr int kAttempts = 10;

ProcessRecord recordFrom(const kinfo_proc& process) {
  const auto& name = process.kp_proc.p_comm;
  return {process.kp_proc.p_pid, std::string(name, strnlen(name, sizeof name)), process.kp_eproc.e_ucred.cr_uid};
}

std::vector<ProcessRecord> recordsFrom(const std::vector<kinfo_proc>& processes, std::size_t count) {
  std::vector<ProcessRecord> records;
  records.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    if (processes[i].kp_proc.p_pid > 0) records.push_back(recordFrom(processes[i]));
  }
  return records;
}

int query(Request& request, void* buffer, std::size_t& size) noexcept {
  return sysctl(request.data(), static_cast<unsigned>(request.size()), buffer, &size, nullptr, 0);
}

}  // namespace

std::size_t MacProcessTable::nameLength() const noexcept {
  return MAXCOMLEN;
}

Result<std::vector<ProcessRecord>> MacProcessTable::processes() {
  Request request{CTL_KERN, KERN_PROC, KERN_PROC_ALL, 0};
  std::vector<kinfo_proc> processes;
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    std::size_t size = 0;
    if (query(request, nullptr, size) != 0) return errnoFailure();
    const auto count = size / sizeof(kinfo_proc);
    processes.resize(count + count / 8 * static_cast<std::size_t>(attempt) + 16);
    size = processes.size() * sizeof(kinfo_proc);
    if (query(request, processes.data(), size) == 0) return recordsFrom(processes, size / sizeof(kinfo_proc));
    if (errno != ENOMEM) return errnoFailure();
  }
  return errnoFailure(ENOMEM);
}

Result<std::optional<ProcessRecord>> MacProcessTable::processWithIdentifier(std::int32_t identifier) {
  if (identifier <= 0) return std::nullopt;
  Request request{CTL_KERN, KERN_PROC, KERN_PROC_PID, identifier};
  kinfo_proc process{};
  std::size_t size = sizeof process;
  if (query(request, &process, size) != 0) {
    if (errno == ESRCH) return std::nullopt;
    return errnoFailure();
  }
  // Without such a process there is nothing, and that is no failure.
  if (size < sizeof process || process.kp_proc.p_pid != identifier) return std::nullopt;
  return recordFrom(process);
}

}  // namespace vantrell::host
