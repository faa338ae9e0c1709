// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "catalogue/ErrorModel.h"
#include "foundation/OperationQueue.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxMounts.h"
#include "host/posix/PosixChildProcesses.h"
#include "system/InstallMedia.h"
#include "tests/support/FakeApplications.h"
#include "tests/support/FakeCodeSignatures.h"
#include "tests/support/FakeMounts.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/RecordingLog.h"
#include "tests/system/InstallerMaker.h"

namespace vantrell {
namespace {

constexpr char kPrintArguments[] = "#!/bin/sh\nfor argument in \"$@\"; do echo \"$argument\"; done\n";

class Feedback final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override {
    const std::lock_guard lock(mutex_);
    messages_.push_back(message);
  }
  std::vector<Dictionary> messages() const {
    const std::lock_guard lock(mutex_);
    return messages_;
  }
  /// All that came under a key, joined.
  std::string text(const char* key = "OutputData") const {
    std::string all;
    for (const auto& message : messages()) {
      if (const auto* value = message.find(key)) all += textOf(*value->asData());
    }
    return all;
  }
  bool waitForText(const std::string& wanted) const {
    for (int i = 0; i < 20'000; ++i) {
      if (text().find(wanted) != std::string::npos) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Dictionary> messages_;
};

class InstallMediaFixture : public testing::Test {
 protected:
  InstallMediaFixture() {
    installer_.makeInstallInfo("10.15.7");
    installer_.makeMediaUtility(kPrintArguments);
    sign();
    volume_ = folder_.makeFolder("My Stick");
  }

  void sign(const std::string& team = "K36BKF7T3D") {
    signatures_.code[installer_.path()] = {.information = host::CodeSigningInformation{.teamIdentifier = team}};
  }
  ErrorOrNil create(const Array& arguments, BlockOperation* operation = nullptr) {
    return create(arguments, signatures_, operation);
  }
  ErrorOrNil create(const Array& arguments, host::CodeSignatures& signatures, BlockOperation* operation = nullptr) {
    FileManager fileManager(fileSystem_);
    SystemProgramRunner runner(children_, fileManager, fileSystem_, Log(log_), operation);
    InstallMedia media({fileSystem_, applications_, signatures}, mounts(), runner);
    return media.createInstallmedia(arguments, &feedback_);
  }
  virtual host::Mounts& mounts() { return mounts_; }

  static Error operationError(std::int64_t code, const char* description, const char* suggestion,
                              const std::string& path) {
    return {
        privilegedOperationErrorDomain(),
        code,
        {{"NSLocalizedDescription", description}, {"NSLocalizedRecoverySuggestion", suggestion}, {"NSFilePath", path}}};
  }
  static Error invalidInstaller(const std::string& path) {
    return operationError(18, "The installer App is invalid or not authentic.",
                          "Please select a valid copy of an operating system installer from the App Store.", path);
  }
  static Error invalidVolume(const std::string& path) {
    return operationError(19, "The destination volume is invalid.",
                          "Please select a valid storage medium onto which the operating system should be copied.",
                          path);
  }

  tests::InstallerMaker installer_;
  tests::TemporaryFolder folder_;
  std::string volume_;
  host::LinuxFileSystem fileSystem_;
  host::PosixChildProcesses children_;
  tests::FakeApplications applications_;
  tests::FakeCodeSignatures signatures_;
  tests::FakeMounts mounts_;
  tests::RecordingLog log_;
  Feedback feedback_;
};

class CreateInstallmedia : public InstallMediaFixture {
 protected:
  CreateInstallmedia() { mounts_.addMountPoint(std::filesystem::canonical(volume_)); }
};

TEST_F(CreateInstallmedia, TakesTwoTexts) {
  for (const Array& arguments : {Array{}, Array{installer_.path()}, Array{installer_.path(), volume_, volume_},
                                 Array{installer_.path(), 7}, Array{Data(), volume_}}) {
    EXPECT_EQ(create(arguments), Error::posix(22));
  }
  EXPECT_TRUE(feedback_.messages().empty());
}

TEST_F(CreateInstallmedia, InstallerThatIsNotAuthenticIsError18) {
  signatures_.code.clear();
  EXPECT_EQ(create({installer_.path(), volume_}), invalidInstaller(installer_.path()));
  for (const std::string path : {"", "relative.app", "/missing.app", "/"}) {
    EXPECT_EQ(create({path, volume_}), invalidInstaller(path));
  }
  EXPECT_TRUE(feedback_.messages().empty());
}

TEST_F(CreateInstallmedia, InstallerIsLookedAtBeforeTheVolume) {
  signatures_.code.clear();
  EXPECT_EQ(create({installer_.path(), "/missing"}), invalidInstaller(installer_.path()));
}

TEST_F(CreateInstallmedia, DestinationThatIsNoMountPointLetterByLetterIsError19) {
  const auto link = folder_.makeLink("link", volume_);
  const auto inside = folder_.makeFolder("My Stick/inside");
  for (const std::string& path :
       {folder_.path(), inside, link, volume_ + "/", volume_ + "/.", inside + "/..", "/" + volume_,
        folder_.path("missing"), std::string(), std::string("relative"), volume_ + std::string("\0", 1)}) {
    EXPECT_EQ(create({installer_.path(), path}), invalidVolume(path));
  }
  EXPECT_TRUE(feedback_.messages().empty());
}

TEST_F(CreateInstallmedia, RunsTheToolWithItsArgumentsAndForwardsItsOutput) {
  EXPECT_EQ(create({installer_.path(), volume_}), std::nullopt);
  EXPECT_EQ(feedback_.text(), "--volume\n" + volume_ + "\n--nointeraction\n");
  const auto messages = feedback_.messages();
  for (std::size_t i = 0; i < messages.size(); ++i) EXPECT_EQ(*messages[i].find("SequenceNumber"), Value(i));
}

TEST_F(CreateInstallmedia, OlderGenerationsAreToldWhereTheInstallerIs) {
  for (const auto* version : {"10.12.6", "11.2.3", "unknown"}) {
    installer_.makeInstallInfo(version);
    const auto before = feedback_.text();
    EXPECT_EQ(create({installer_.path(), volume_}), std::nullopt) << version;
    EXPECT_EQ(feedback_.text().substr(before.size()),
              "--applicationpath\n" + installer_.path() + "\n--volume\n" + volume_ + "\n--nointeraction\n")
        << version;
  }
}

TEST(MediaUtilityArguments, ChangeWithGeneration13) {
  using Words = std::vector<std::string>;
  const Words older{"--applicationpath", "/a.app", "--volume", "/v", "--nointeraction"};
  const Words newer{"--volume", "/v", "--nointeraction"};
  for (int generation = -128; generation <= 127; ++generation) {
    EXPECT_EQ(InstallMedia::mediaUtilityArguments(static_cast<std::int8_t>(generation), "/a.app", "/v"),
              generation < 13 ? older : newer)
        << generation;
  }
}

TEST_F(CreateInstallmedia, FailureOfTheToolIsError3) {
  installer_.makeMediaUtility("#!/bin/sh\necho sorry >&2\nexit 17\n");
  const auto error = create({installer_.path(), volume_});
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), 3);
  EXPECT_EQ(*error->userInfo().find(QELLocalizedRecoverySuggestionParametersKey), Value(Array{"17"}));
  EXPECT_EQ(feedback_.text("ErrorData"), "sorry\n");
}

TEST_F(CreateInstallmedia, ToolRunsWithoutASearchPath) {
  installer_.makeMediaUtility("#!/bin/sh\n/usr/bin/tr '\\0' '\\n' </proc/$$/environ\n");
  EXPECT_EQ(create({installer_.path(), volume_}), std::nullopt);
  EXPECT_EQ(("\n" + feedback_.text()).find("\nPATH="), std::string::npos);
  children_.setSearchPath("/usr/bin:/bin");
}

TEST_F(CreateInstallmedia, ToolThatAnyoneMayChangeIsRunSinceItsSignatureWasChecked) {
  std::filesystem::permissions(installer_.mediaUtilityPath(), std::filesystem::perms(0777));
  EXPECT_EQ(create({installer_.path(), volume_}), std::nullopt);
}

TEST_F(CreateInstallmedia, OutputComesWhileTheToolRunsAndCancellationInterruptsIt) {
  installer_.makeMediaUtility(
      "#!/bin/sh\ntrap 'echo interrupted; exit 0' INT\necho 'Erasing disk: 0%... 10%...'\n"
      "while :; do /bin/sleep .01; done\n");
  ErrorOrNil result;
  auto* body = &result;
  std::shared_ptr<BlockOperation> operation;
  operation = std::make_shared<BlockOperation>([&, body] {
    *body = create({installer_.path(), volume_}, operation.get());
  });
  std::thread worker([&] { operation->run(); });
  EXPECT_TRUE(feedback_.waitForText("Erasing disk: 0%... 10%...\n"));
  operation->cancel();
  worker.join();
  EXPECT_EQ(result, Error::posix(89));
  EXPECT_TRUE(feedback_.text().ends_with("interrupted\n"));
}

/// Valid signatures, whose check gives others the time to do something.
class SlowSignatures final : public host::CodeSignatures {
 public:
  explicit SlowSignatures(std::function<void()> meanwhile) : meanwhile_(std::move(meanwhile)) {}

  Result<std::unique_ptr<host::StaticCode>> staticCodeAtPath(const std::string&) override {
    return std::make_unique<Code>(meanwhile_);
  }

 private:
  class Code final : public host::StaticCode {
   public:
    explicit Code(std::function<void()> meanwhile) : meanwhile_(std::move(meanwhile)) {}
    Result<host::CodeSigningInformation> signingInformation() override {
      return host::CodeSigningInformation{.teamIdentifier = "K36BKF7T3D"};
    }
    ErrorOrNil checkValidity(const host::CodeValidityOptions&, const std::string&) override {
      meanwhile_();
      return std::nullopt;
    }

   private:
    std::function<void()> meanwhile_;
  };

  std::function<void()> meanwhile_;
};

TEST_F(CreateInstallmedia, ToolThatIsExchangedDuringTheCheckDoesNotRun) {
  const auto evil = folder_.makeFile("evil", "#!/bin/sh\necho evil\n");
  std::filesystem::permissions(evil, std::filesystem::perms(0755));
  SlowSignatures renaming([&] { std::filesystem::rename(evil, installer_.mediaUtilityPath()); });
  EXPECT_EQ(create({installer_.path(), volume_}, renaming), invalidInstaller(installer_.path()));

  SlowSignatures rewriting([&] { installer_.makeMediaUtility("#!/bin/sh\necho rewritten\n"); });
  EXPECT_EQ(create({installer_.path(), volume_}, rewriting), invalidInstaller(installer_.path()));
  EXPECT_TRUE(feedback_.messages().empty());
}

TEST_F(CreateInstallmedia, InstallerThatIsExchangedAsAWholeDuringTheCheckDoesNotRun) {
  const tests::InstallerMaker other("Other.app");
  SlowSignatures signatures([&] {
    std::filesystem::rename(installer_.path(), folder_.path("aside.app"));
    std::filesystem::create_directory_symlink(other.path(), installer_.path());
  });
  EXPECT_EQ(create({installer_.path(), volume_}, signatures), invalidInstaller(installer_.path()));
  EXPECT_TRUE(feedback_.messages().empty());
}

class CreateInstallmediaAsRoot : public InstallMediaFixture {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "mounting takes root";
    volume_ = std::filesystem::canonical(volume_);
    mounted_ = std::make_unique<tests::MountedFileSystem>(volume_);
  }
  host::Mounts& mounts() override { return realMounts_; }

  host::LinuxMounts realMounts_;
  std::unique_ptr<tests::MountedFileSystem> mounted_;
};

TEST_F(CreateInstallmediaAsRoot, WritesToTheMountedVolume) {
  installer_.makeMediaUtility(
      "#!/bin/sh\necho 'Copying to disk: 0%...'\necho system > \"$2/system\"\necho 'Copying to disk: 100%'\n"
      "echo 'Install media now available.'\n");
  EXPECT_EQ(create({installer_.path(), volume_}), std::nullopt);
  EXPECT_TRUE(std::filesystem::exists(volume_ + "/system"));
  EXPECT_EQ(feedback_.text(), "Copying to disk: 0%...\nCopying to disk: 100%\nInstall media now available.\n");
}

TEST_F(CreateInstallmediaAsRoot, VolumesPathWithASlashAtTheEndIsRejected) {
  EXPECT_EQ(create({installer_.path(), volume_ + "/"}), invalidVolume(volume_ + "/"));
}

TEST_F(CreateInstallmediaAsRoot, FolderOnTheVolumeIsRejectedAndSoIsTheVolumeOnceUnmounted) {
  std::filesystem::create_directory(volume_ + "/folder");
  EXPECT_EQ(create({installer_.path(), volume_ + "/folder"}), invalidVolume(volume_ + "/folder"));
  mounted_.reset();
  EXPECT_EQ(create({installer_.path(), volume_}), invalidVolume(volume_));
}

}  // namespace
}  // namespace vantrell
