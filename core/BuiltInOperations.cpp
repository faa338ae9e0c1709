// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The operations that the service carries out itself: contact, deletion of its own files, uninstallation, and the probe
// of the privacy protection.

#include <utility>

#include "catalogue/ErrorModel.h"
#include "core/QELPrivilegedTool.h"
#include "fileops/ForcedRemoval.h"
#include "foundation/Exception.h"
#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"
#include "process/QELTaskExecutor.h"

namespace vantrell {

namespace {

constexpr char kLaunchControl[] = "/bin/launchctl";

// Guarded by the privacy protection, and never empty where it exists.
constexpr char kGuardedFolder[] = "/var/db/Sandbox";           // 10.15 and later
constexpr char kGuardedFolderOfMojave[] = "/.Spotlight-V100";  // 10.14

// Values under QELSecurityPolicyCheckResult.
constexpr unsigned kPolicyUnknown = 0;
constexpr unsigned kPolicyDenies = 1;
constexpr unsigned kPolicyAllows = 2;

std::string textAt(const Array& arguments, std::size_t index) {
  const auto* text = index < arguments.size() ? arguments[index].asString() : nullptr;
  return text ? *text : std::string();
}

bool isDenial(const Error& error) {
  return error.isPosix(posix::kNotPermitted) || error.isPosix(posix::kAccessDenied);
}

}  // namespace

ErrorOrNil QELPrivilegedTool::doNothingWithArguments(const Array&) {
  return std::nullopt;
}

ErrorOrNil QELPrivilegedTool::enforceRemovalOfFileSystemObjectAtPath(const std::string& path) {
  const auto failure = removeInSpiteOfUserFlags(*host_.fileSystem, path);
  return failure ? ErrorOrNil(failure->error) : std::nullopt;
}

ErrorOrNil QELPrivilegedTool::deleteFileSystemObjectsWithPaths(const Array& paths) {
  ErrorOrNil result;
  for (const auto& value : paths) {
    const auto* path = value.asString();
    if (!path) continue;
    sysLog_.info("Deleting file system object '{}'.", *path);
    if (auto error = enforceRemovalOfFileSystemObjectAtPath(*path)) result = std::move(error);
  }
  return result;
}

ErrorOrNil QELPrivilegedTool::refuseUninstallForOtherClients(std::int32_t requester) {
  for (const auto other : clients_.registeredClients()) {
    if (other == requester) continue;
    const auto process = processInfo_.processNameForProcessID(other);
    if (!process) continue;  // left without a word
    sysLog_.error(
        "Uninstall request from PID {} was rejected because client '{}' with PID {} is still working with us.",
        requester, process->name, other);
    return privileged_tool_error::busyWithOtherClient(requester, process->name, other);
  }
  return std::nullopt;
}

void QELPrivilegedTool::removeFromServiceManagement() {
  QELTaskExecutor executor(*host_.childProcesses, Log(*host_.systemLog));
  try {
    const auto status = executor.executeProgramAtPath(
        kLaunchControl, std::vector<std::string>{"remove", operationSet_.fileNameForHelper()});
    if (status != 0) {
      sysLog_.error("Removal from Launch Services management failed with error code {}.", status);
    }
  } catch (const Exception& exception) {
    // The files are gone and the registry is locked: there is no way back, and no client to tell.
    sysLog_.error("Removal from Launch Services management failed: {}", exception.reason());
  }
}

ErrorOrNil QELPrivilegedTool::performUninstallWithArguments(const Array& arguments) {
  const auto* number = arguments.empty() ? nullptr : arguments.front().asNumber();
  const auto firstPath = textAt(arguments, 1);
  const auto secondPath = textAt(arguments, 2);
  if (!number || firstPath.empty() || secondPath.empty()) return Error::posix(posix::kInvalidArgument);
  const auto requester = number->int32Value();

  if (auto refusal = refuseUninstallForOtherClients(requester)) return refusal;
  FileManager fileManager(*host_.fileSystem);
  if (!QELTaskExecutor::hasExecutableSafePermissionsAtPath(kLaunchControl, fileManager, *host_.fileSystem)) {
    return privileged_tool_error::unsafeLaunchControl();
  }
  if (auto error = deleteFileSystemObjectsWithPaths({firstPath, secondPath}); error && error->code() != 0) return error;

  clients_.removeClientAndStayLocked(requester);
  sysLog_.info(
      "Processing uninstall request for PID {}. The executable files have been deleted, the point of no return was "
      "passed.",
      requester);
  removeFromServiceManagement();
  terminatePrivilegedHelper();
  return std::nullopt;
}

unsigned QELPrivilegedTool::securityPolicyCheckResult() {
  if (!processInfo_.isOperatingSystemAtLeastVersion(10, 14, 0)) return kPolicyAllows;
  const auto* path = processInfo_.isOperatingSystemAtLeastVersion(10, 15, 0) ? kGuardedFolder : kGuardedFolderOfMojave;
  const auto folder = host_.fileSystem->openDirectory(path, host::FollowLinks::Yes);
  if (!folder) return isDenial(folder.error()) ? kPolicyDenies : kPolicyUnknown;
  const auto entry = (*folder)->next();
  if (!entry) return isDenial(entry.error()) ? kPolicyDenies : kPolicyUnknown;
  return *entry ? kPolicyAllows : kPolicyUnknown;
}

ErrorOrNil QELPrivilegedTool::checkSecurityPolicyWithArguments(const Array&) {
  return Error(privilegedOperationErrorDomain(), 0, {{QELSecurityPolicyCheckResultKey, securityPolicyCheckResult()}});
}

}  // namespace vantrell
