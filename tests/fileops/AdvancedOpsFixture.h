// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "fileops/AdvancedOpsAdditions.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxProcessTable.h"
#include "platform/NSProcessInfoQELAdditions.h"
#include "tests/support/FlagOverlayFileSystem.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VersionList.h"

namespace vantrell::tests {

inline const std::string kFileDeletionDomain = VANTRELL_VENDOR_DOMAIN_PREFIX ".error.file-deletion";
inline const std::string kOperationDomain = VANTRELL_VENDOR_DOMAIN_PREFIX ".error.privileged-operation";

/// A privacy policy that counts who asks it.
class ScriptedPrivacyPolicy final : public PrivacyPolicy {
 public:
  int privacyPolicyOfCurrentUserForFullDiskAccess() override {
    ++askedForUser;
    return answer;
  }
  int privacyPolicyOfRootForFullDiskAccess() override {
    ++askedForRoot;
    return answer;
  }
  int answer = 0;
  int askedForUser = 0;
  int askedForRoot = 0;
};

/// The operations on one file system and operating-system version; an empty version is that of a system without list.
class AdvancedOps {
 public:
  AdvancedOps(host::FileSystem& fileSystem, const TemporaryFolder& folder, const std::string& version = "",
              std::uint32_t effectiveUserID = 0)
      : fileManager_(fileSystem),
        processInfo_(fileSystem, processTable_,
                     version.empty() ? folder.path("no list") : makeVersionList(folder, version)),
        ops_(fileManager_, fileSystem, processInfo_, Log(log_), effectiveUserID, &policy_) {}

  AdvancedOpsAdditions* operator->() { return &ops_; }
  AdvancedOpsAdditions& ops() { return ops_; }
  FileManager& fileManager() { return fileManager_; }
  ScriptedPrivacyPolicy& policy() { return policy_; }
  RecordingLog& log() { return log_; }

 private:
  FileManager fileManager_;
  host::LinuxProcessTable processTable_;
  NSProcessInfoQELAdditions processInfo_;
  RecordingLog log_;
  ScriptedPrivacyPolicy policy_;
  AdvancedOpsAdditions ops_;
};

/// Real objects that bear all of BSD's flags.
class OverlayFixture : public testing::Test {
 protected:
  bool isThere(const std::string& name) {
    return fileSystem_.status(folder_.path(name), host::FollowLinks::No).has_value();
  }
  std::uint32_t flagsOf(const std::string& name) {
    return fileSystem_.status(folder_.path(name), host::FollowLinks::No).value().flags;
  }
  void force(const std::string& name, std::uint32_t flags) { fileSystem_.forceFlags(folder_.path(name), flags); }

  host::LinuxFileSystem linux_;
  FlagOverlayFileSystem fileSystem_{linux_};
  TemporaryFolder folder_;
  TemporaryFolder lists_;
};

}  // namespace vantrell::tests
