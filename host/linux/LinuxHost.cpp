// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/Host.h"
#include "host/linux/AppleSmcDriver.h"
#include "host/linux/ElfExecutableDescriptor.h"
#include "host/linux/LinuxApplications.h"
#include "host/linux/LinuxClientTransport.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxFirmwareVariables.h"
#include "host/linux/LinuxIdentities.h"
#include "host/linux/LinuxKernelSettings.h"
#include "host/linux/LinuxMainBundle.h"
#include "host/linux/LinuxMounts.h"
#include "host/linux/LinuxPreferences.h"
#include "host/linux/LinuxProcessTable.h"
#include "host/linux/LinuxSystemConfiguration.h"
#include "host/linux/LinuxSystemLog.h"
#include "host/linux/LinuxTransport.h"
#include "host/linux/NettleCryptography.h"
#include "host/linux/codesign/LinuxCodeSignatures.h"
#include "host/posix/PosixChildProcesses.h"
#include "host/posix/PosixCurrentProcess.h"
#include "host/posix/PosixProcessSignals.h"
#include "host/posix/PosixStorageDevices.h"

namespace vantrell::host {

// The parts that need others are made after them and let go of before them: members go in the reverse of their order.
Host makeHost() {
  Host host;
  host.systemLog = makeSystemLog();
  host.cryptography = std::make_unique<NettleCryptography>();
  host.currentProcess = std::make_unique<PosixCurrentProcess>();
  host.fileSystem = std::make_unique<LinuxFileSystem>();
  host.codeSignatures = std::make_unique<LinuxCodeSignatures>(*host.fileSystem);
  host.identities = std::make_unique<LinuxIdentities>();
  host.processTable = std::make_unique<LinuxProcessTable>();
  host.childProcesses = std::make_unique<PosixChildProcesses>();
  host.mainBundle = std::make_unique<LinuxMainBundle>(*host.fileSystem);
  host.executableDescriptor = std::make_unique<ElfExecutableDescriptor>(*host.fileSystem, *host.cryptography);
  host.smcDriver = std::make_unique<AppleSmcDriver>();
  host.transport = std::make_unique<LinuxTransport>(*host.systemLog);
  host.clientTransport = std::make_unique<LinuxClientTransport>();
  host.kernelSettings = std::make_unique<LinuxKernelSettings>();
  host.firmwareVariables = std::make_unique<LinuxFirmwareVariables>();
  host.preferences = std::make_unique<LinuxPreferences>();
  host.systemConfiguration = std::make_unique<LinuxSystemConfiguration>();
  host.processSignals = std::make_unique<PosixProcessSignals>();
  host.storageDevices = std::make_unique<PosixStorageDevices>();
  host.applications = std::make_unique<LinuxApplications>(*host.fileSystem);
  host.mounts = std::make_unique<LinuxMounts>();
  return host;
}

}  // namespace vantrell::host
