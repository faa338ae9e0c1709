// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Install media from installers that are really signed, by an authority of the test's own whose root the verifier takes
// for the vendor's: real signatures, a real tool, a real mount point.

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "catalogue/ErrorModel.h"
#include "foundation/FileManager.h"
#include "host/linux/LinuxApplications.h"
#include "host/linux/LinuxMounts.h"
#include "host/posix/PosixChildProcesses.h"
#include "process/SystemProgramRunner.h"
#include "system/InstallMedia.h"
#include "tests/codesign/SignatureFixture.h"
#include "tests/codesign/TestBundle.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

using namespace tests;

constexpr char kPrintArguments[] = "#!/bin/sh\nfor argument in \"$@\"; do echo \"$argument\"; done\n";
constexpr char kVendorTeam[] = "K36BKF7T3D";

class CollectedOutput final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override {
    const std::lock_guard lock(mutex_);
    if (const auto* output = message.find("OutputData")) text_ += textOf(*output->asData());
  }
  std::string text() const {
    const std::lock_guard lock(mutex_);
    return text_;
  }

 private:
  mutable std::mutex mutex_;
  std::string text_;
};

class SignedInstallerAsRoot : public SignatureFixture {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may mount";
    volume_ = folder_.makeFolder("Stick");
    memory_.emplace(volume_);
  }

  TestBundle installer(const std::string& name) {
    TestBundle bundle(folder_.path("Install.app"), {{"CFBundleDisplayName", "Install OS X " + name},
                                                    {"CFBundleIdentifier", "com.apple.InstallAssistant." + name}});
    bundle.file("Resources/createinstallmedia", kPrintArguments);
    std::filesystem::permissions(bundle.contents() + "/Resources/createinstallmedia", std::filesystem::perms(0755));
    return bundle;
  }
  TestBundle installerOfVersion(const char* version) {
    auto bundle = installer("Catalina");
    const Dictionary info{{"System Image Info", Dictionary{{"version", version}}}};
    bundle.file("SharedSupport/InstallInfo.plist", textOf(xmlPropertyListFromValue(info).value()));
    return bundle;
  }
  static SigningOptions byTeam(const char* team) {
    auto options = bySigner();
    options.team = team;
    return options;
  }

  ErrorOrNil create(const TestBundle& bundle) {
    FileManager fileManager(fileSystem_);
    host::PosixChildProcesses children;
    host::LinuxMounts mounts;
    host::LinuxCodeSignatures signatures(fileSystem_, trust());
    FakeApplications applications;
    SystemProgramRunner runner(children, fileManager, fileSystem_, Log(log_), nullptr);
    return InstallMedia({fileSystem_, applications, signatures}, mounts, runner)
        .createInstallmedia({bundle.path(), volume_}, &output_);
  }
  void expectRefusal(const TestBundle& bundle) {
    const auto error = create(bundle);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), privilegedOperationErrorDomain());
    EXPECT_EQ(error->code(), 18);
    EXPECT_EQ(output_.text(), "") << "the tool has run";
  }

  RecordingLog log_;
  CollectedOutput output_;
  std::string volume_;
  std::optional<MountedFileSystem> memory_;
};

TEST_F(SignedInstallerAsRoot, RunsTheToolOfAWholeInstallerWhateverItsTeamFromGeneration13On) {
  auto bundle = installerOfVersion("10.15.7");
  bundle.sign(byTeam("SOMEOTHER1"));
  EXPECT_EQ(create(bundle), std::nullopt);
  EXPECT_EQ(output_.text(), "--volume\n" + volume_ + "\n--nointeraction\n");
}

TEST_F(SignedInstallerAsRoot, WantsTheVendorsTeamOfOtherGenerations) {
  auto bundle = installerOfVersion("11.2.3");  // generation 2 by the rules
  bundle.sign(byTeam("SOMEOTHER1"));
  expectRefusal(bundle);
  bundle.sign(byTeam(kVendorTeam));
  EXPECT_EQ(create(bundle), std::nullopt);
  EXPECT_EQ(output_.text(), "--applicationpath\n" + bundle.path() + "\n--volume\n" + volume_ + "\n--nointeraction\n");
}

TEST_F(SignedInstallerAsRoot, RefusesOneWhoseToolWasChangedSinceItWasSigned) {
  auto bundle = installerOfVersion("10.15.7");
  bundle.sign(byTeam(kVendorTeam));
  bundle.file("Resources/createinstallmedia", std::string(kPrintArguments) + "# changed\n");
  expectRefusal(bundle);
}

TEST_F(SignedInstallerAsRoot, RefusesAnAdHocSignatureAndNone) {
  auto bundle = installerOfVersion("10.15.7");
  bundle.sign(SigningOptions{});
  expectRefusal(bundle);
}

TEST_F(SignedInstallerAsRoot, TakesTheImageAddedToAMavericksInstallerAndNothingElse) {
  auto bundle = installer("Mavericks");
  bundle.sign(byTeam("APPLECOMPUTER"));
  bundle.file("SharedSupport/InstallESD.dmg", "image");
  EXPECT_EQ(create(bundle), std::nullopt);
  EXPECT_NE(output_.text().find("--applicationpath"), std::string::npos);
  bundle.file("SharedSupport/Other.dmg", "image");
  const auto error = create(bundle);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), 18);
}

}  // namespace
}  // namespace vantrell
