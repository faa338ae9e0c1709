// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "host/Applications.h"
#include "host/ChildProcesses.h"
#include "host/ClientTransport.h"
#include "host/CodeSignatures.h"
#include "host/Cryptography.h"
#include "host/CurrentProcess.h"
#include "host/ExecutableDescriptor.h"
#include "host/FileSystem.h"
#include "host/FirmwareVariables.h"
#include "host/Identities.h"
#include "host/KernelSettings.h"
#include "host/MainBundle.h"
#include "host/Mounts.h"
#include "host/Preferences.h"
#include "host/ProcessSignals.h"
#include "host/ProcessTable.h"
#include "host/SmcDriver.h"
#include "host/StorageDevices.h"
#include "host/SystemConfiguration.h"
#include "host/SystemLog.h"
#include "host/Transport.h"

namespace vantrell::host {

/// Everything that the operating system supplies, one of each role. Made once by the program's entry and handed down by
/// reference; a test composes its own from real parts and fakes.
struct Host {
  std::unique_ptr<SystemLog> systemLog;
  std::unique_ptr<Cryptography> cryptography;
  std::unique_ptr<CurrentProcess> currentProcess;
  std::unique_ptr<MainBundle> mainBundle;
  std::unique_ptr<ExecutableDescriptor> executableDescriptor;
  std::unique_ptr<FileSystem> fileSystem;
  std::unique_ptr<CodeSignatures> codeSignatures;
  std::unique_ptr<Identities> identities;
  std::unique_ptr<ProcessTable> processTable;
  std::unique_ptr<ChildProcesses> childProcesses;
  std::unique_ptr<SmcDriver> smcDriver;
  std::unique_ptr<Transport> transport;
  std::unique_ptr<ClientTransport> clientTransport;
  std::unique_ptr<KernelSettings> kernelSettings;
  std::unique_ptr<FirmwareVariables> firmwareVariables;
  std::unique_ptr<Preferences> preferences;
  std::unique_ptr<SystemConfiguration> systemConfiguration;
  std::unique_ptr<ProcessSignals> processSignals;
  std::unique_ptr<StorageDevices> storageDevices;
  std::unique_ptr<Applications> applications;
  std::unique_ptr<Mounts> mounts;
};

/// The real host of the platform that this was built for.
Host makeHost();

}  // namespace vantrell::host
