// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/InstallMedia.h"

#include "catalogue/ErrorModel.h"
#include "foundation/PosixCodes.h"
#include "system/FileUrl.h"

namespace vantrell {
namespace {

constexpr std::int8_t kFirstWithoutApplicationPath = 13;

Error operationError(std::int64_t code, const char* description, const char* suggestion, const std::string& path) {
  return {privilegedOperationErrorDomain(), code,
          Dictionary{{NSLocalizedDescriptionKey, description},
                     {NSLocalizedRecoverySuggestionErrorKey, suggestion},
                     {NSFilePathErrorKey, path}}};
}

Error invalidInstaller(const std::string& path) {
  return operationError(18, "The installer App is invalid or not authentic.",
                        "Please select a valid copy of an operating system installer from the App Store.", path);
}

Error invalidDestination(const std::string& path) {
  return operationError(19, "The destination volume is invalid.",
                        "Please select a valid storage medium onto which the operating system should be copied.", path);
}

}  // namespace

ErrorOrNil InstallMedia::createInstallmedia(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback) {
  const auto* installerPath = arguments.size() == 2 ? arguments[0].asString() : nullptr;
  const auto* volumePath = arguments.size() == 2 ? arguments[1].asString() : nullptr;
  if (!installerPath || !volumePath) return Error::posix(posix::kInvalidArgument);

  const auto validator = OSInstallAppValidator::initWithURL(fileURLWithPath(*installerPath), environment_);
  if (!validator || !validator->isAuthentic()) return invalidInstaller(*installerPath);
  if (!isMountPoint(*volumePath)) return invalidDestination(*volumePath);
  // The check of the signature takes minutes, enough to put another program into the place of the tool.
  if (!validator->isMediaUtilityUnchanged()) return invalidInstaller(*installerPath);
  return runner_.executeTrusted(true, *validator->mediaUtilityPath(),
                                mediaUtilityArguments(validator->minorOSVersion(), *installerPath, *volumePath), false,
                                feedback);
}

std::vector<std::string> InstallMedia::mediaUtilityArguments(std::int8_t minorOSVersion,
                                                             const std::string& installerPath,
                                                             const std::string& volumePath) {
  std::vector<std::string> arguments;
  if (minorOSVersion < kFirstWithoutApplicationPath) arguments = {"--applicationpath", installerPath};
  arguments.insert(arguments.end(), {"--volume", volumePath, "--nointeraction"});
  return arguments;
}

bool InstallMedia::isMountPoint(const std::string& volumePath) {
  const auto name = mounts_.mountPointNameForPath(volumePath);
  return name && !name->empty() && *name == volumePath;
}

}  // namespace vantrell
