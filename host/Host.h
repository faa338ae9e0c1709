// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "host/ChildProcesses.h"
#include "host/ClientTransport.h"
#include "host/Cryptography.h"
#include "host/CurrentProcess.h"
#include "host/ExecutableDescriptor.h"
#include "host/FileSystem.h"
#include "host/MainBundle.h"
#include "host/ProcessTable.h"
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
  std::unique_ptr<ProcessTable> processTable;
  std::unique_ptr<ChildProcesses> childProcesses;
  std::unique_ptr<Transport> transport;
  std::unique_ptr<ClientTransport> clientTransport;
};

/// The real host of the platform that this was built for.
Host makeHost();

}  // namespace vantrell::host
