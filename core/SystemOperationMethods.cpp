// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What changes settings of the running system and its hardware, and what runs programs.

#include "core/QELPrivilegedOperationSetImplementorLm4.h"
#include "core/QELPrivilegedTool.h"
#include "foundation/FileManager.h"
#include "process/SystemProgramRunner.h"
#include "system/InstallMedia.h"
#include "system/SmcOperations.h"
#include "system/SystemSettingOperations.h"

namespace vantrell {

namespace {

struct Programs {
  Programs(host::Host& host, BlockOperation* operation)
      : fileManager(*host.fileSystem),
        runner(*host.childProcesses, fileManager, *host.fileSystem, Log(*host.systemLog), operation) {}

  FileManager fileManager;
  SystemProgramRunner runner;
};

}  // namespace

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifyKernelsetting(const Array& arguments) {
  return modifyKernelsetting(arguments, *privilegedTool().host().kernelSettings);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifyNvram(const Array& arguments) {
  return modifyNvram(arguments, *privilegedTool().host().firmwareVariables);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifyPreferences(const Array& arguments) {
  return modifyPreferences(arguments, *privilegedTool().host().preferences);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifySysconf(const Array& arguments) {
  return modifySysconf(arguments, *privilegedTool().host().systemConfiguration);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationSignalProcess(const Array& arguments) {
  return signalProcess(arguments, *privilegedTool().host().processSignals);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationEnableIpvsix(const Array& arguments) {
  return enableIpvsix(arguments, *privilegedTool().host().systemConfiguration, privilegedTool().sysLog());
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationEraseDiskblocks(const Array& arguments) {
  return eraseDiskblocks(arguments, *privilegedTool().host().storageDevices);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationWriteSmcvalue(const Array& arguments) {
  return SmcOperations(privilegedTool().smcController()).writeSmcvalue(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationExecuteUtility(const Array& arguments,
                                                                                   Feedback* feedbackConnection) {
  return Programs(privilegedTool().host(), concreteOperation()).runner.executeUtility(arguments, feedbackConnection);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationCreateInstallmedia(const Array& arguments,
                                                                                       Feedback* feedbackConnection) {
  auto& host = privilegedTool().host();
  Programs programs(host, concreteOperation());
  InstallMedia installMedia({*host.fileSystem, *host.applications, *host.codeSignatures}, *host.mounts,
                            programs.runner);
  return installMedia.createInstallmedia(arguments, feedbackConnection);
}

}  // namespace vantrell
