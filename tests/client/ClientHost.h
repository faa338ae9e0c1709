// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/Host.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/NettleCryptography.h"
#include "host/posix/PosixCurrentProcess.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/FakeHostParts.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/RecordingLog.h"

namespace vantrell::tests {

/// Every file named here is an executable with that descriptor; there are no others.
struct FakeExecutableDescriptor final : host::ExecutableDescriptor {
  std::map<std::string, std::string, std::less<>> descriptors;

  Result<std::vector<std::string>> descriptorsForFileAtPath(std::string_view path) override {
    const auto found = descriptors.find(path);
    if (found == descriptors.end()) return posixFailure(posix::kWrongFormat);
    return std::vector{found->second};
  }
};

/// Some paths as the test wants them, the rest real.
struct OverlaidFileSystem final : ForwardingFileSystem {
  OverlaidFileSystem() noexcept : ForwardingFileSystem(linuxFileSystem) {}

  host::LinuxFileSystem linuxFileSystem;
  std::map<std::string, host::FileType, std::less<>> objects;  // Unknown: nothing is there

  Result<host::FileStatus> status(const std::string& path, host::FollowLinks follow) override {
    const auto found = objects.find(path);
    if (found == objects.end()) return real().status(path, follow);
    if (found->second == host::FileType::Unknown) return posixFailure(posix::kNoEntry);
    return host::FileStatus{.type = found->second};
  }
};

/// A host whose parts are real but for those that a test of the requesting side decides about.
struct ClientHost {
  ClientHost() {
    host.systemLog = std::make_unique<RecordingLog>();
    host.cryptography = std::make_unique<host::NettleCryptography>();
    auto fakeProcess = std::make_unique<FakeCurrentProcess>(std::make_unique<host::PosixCurrentProcess>());
    process = fakeProcess.get();
    host.currentProcess = std::move(fakeProcess);
    host.mainBundle = std::make_unique<FakeMainBundle>("/fake/bin/vantrellctl", std::nullopt);
    auto fakeDescriptor = std::make_unique<FakeExecutableDescriptor>();
    executables = fakeDescriptor.get();
    host.executableDescriptor = std::move(fakeDescriptor);
    auto fakeFiles = std::make_unique<OverlaidFileSystem>();
    files = fakeFiles.get();
    host.fileSystem = std::move(fakeFiles);
    auto fakeApplications = std::make_unique<FakeApplications>();
    applications = fakeApplications.get();
    host.applications = std::move(fakeApplications);
  }

  host::Host host;
  FakeCurrentProcess* process;
  FakeExecutableDescriptor* executables;
  OverlaidFileSystem* files;
  FakeApplications* applications;
};

}  // namespace vantrell::tests
