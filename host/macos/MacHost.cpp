// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>

#include <limits.h>
#include <sys/resource.h>

#include "host/Host.h"
#include "host/macos/CommonCryptography.h"
#include "host/macos/MacApplications.h"
#include "host/macos/MacClientTransport.h"
#include "host/macos/MacCodeSignatures.h"
#include "host/macos/MacCurrentProcess.h"
#include "host/macos/MacExecutableDescriptor.h"
#include "host/macos/MacFileSystem.h"
#include "host/macos/MacFirmwareVariables.h"
#include "host/macos/MacIdentities.h"
#include "host/macos/MacKernelSettings.h"
#include "host/macos/MacMainBundle.h"
#include "host/macos/MacMounts.h"
#include "host/macos/MacPreferences.h"
#include "host/macos/MacProcessTable.h"
#include "host/macos/MacSmcDriver.h"
#include "host/macos/MacSystemConfiguration.h"
#include "host/macos/MacSystemLog.h"
#include "host/macos/MacTransport.h"
#include "host/posix/PosixChildProcesses.h"
#include "host/posix/PosixProcessSignals.h"
#include "host/posix/PosixStorageDevices.h"

namespace vantrell::host {

namespace {

/// launchd gives its services 256 descriptors unless told otherwise: few for several walks and children at once. More
/// than OPEN_MAX is refused.
void raiseDescriptorLimit() noexcept {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= OPEN_MAX) return;
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, OPEN_MAX);
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

// The parts that need others are made after them and let go of before them: members go in the reverse of their order.
Host makeHost() {
  raiseDescriptorLimit();
  Host host;
  host.systemLog = std::make_unique<MacSystemLog>();
  host.cryptography = std::make_unique<CommonCryptography>();
  host.currentProcess = std::make_unique<MacCurrentProcess>();
  host.fileSystem = std::make_unique<MacFileSystem>();
  host.codeSignatures = std::make_unique<MacCodeSignatures>();
  host.identities = std::make_unique<MacIdentities>();
  host.processTable = std::make_unique<MacProcessTable>();
  host.childProcesses = std::make_unique<PosixChildProcesses>();
  host.mainBundle = std::make_unique<MacMainBundle>();
  host.executableDescriptor = std::make_unique<MacExecutableDescriptor>();
  host.smcDriver = std::make_unique<MacSmcDriver>();
  host.transport = std::make_unique<MacTransport>(*host.systemLog);
  host.clientTransport = std::make_unique<MacClientTransport>();
  host.kernelSettings = std::make_unique<MacKernelSettings>();
  host.firmwareVariables = std::make_unique<MacFirmwareVariables>();
  host.preferences = std::make_unique<MacPreferences>();
  host.systemConfiguration = std::make_unique<MacSystemConfiguration>();
  host.processSignals = std::make_unique<PosixProcessSignals>();
  host.storageDevices = std::make_unique<PosixStorageDevices>();
  host.applications = std::make_unique<MacApplications>();
  host.mounts = std::make_unique<MacMounts>();
  return host;
}

}  // namespace vantrell::host
