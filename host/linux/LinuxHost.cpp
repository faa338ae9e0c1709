// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/Host.h"
#include "host/linux/ElfExecutableDescriptor.h"
#include "host/linux/LinuxChildProcesses.h"
#include "host/linux/LinuxClientTransport.h"
#include "host/linux/LinuxCurrentProcess.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxMainBundle.h"
#include "host/linux/LinuxProcessTable.h"
#include "host/linux/LinuxSystemLog.h"
#include "host/linux/LinuxTransport.h"
#include "host/linux/NettleCryptography.h"

namespace vantrell::host {

// The parts that need others are made after them and let go of before them: members go in the reverse of their order.
Host makeHost() {
  Host host;
  host.systemLog = makeSystemLog();
  host.cryptography = std::make_unique<NettleCryptography>();
  host.currentProcess = std::make_unique<LinuxCurrentProcess>();
  host.fileSystem = std::make_unique<LinuxFileSystem>();
  host.processTable = std::make_unique<LinuxProcessTable>();
  host.childProcesses = std::make_unique<LinuxChildProcesses>();
  host.mainBundle = std::make_unique<LinuxMainBundle>(*host.fileSystem);
  host.executableDescriptor = std::make_unique<ElfExecutableDescriptor>(*host.fileSystem, *host.cryptography);
  host.transport = std::make_unique<LinuxTransport>(*host.systemLog);
  host.clientTransport = std::make_unique<LinuxClientTransport>();
  return host;
}

}  // namespace vantrell::host
