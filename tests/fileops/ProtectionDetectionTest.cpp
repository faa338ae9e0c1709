// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What a failure is put down to: System Integrity Protection, the privacy control, or neither.

#include <string>

#include <gtest/gtest.h>

#include "foundation/Value.h"
#include "tests/fileops/AdvancedOpsFixture.h"

namespace vantrell {
namespace {

using namespace tests;
namespace file_flags = host::file_flags;

constexpr char kNoErrorObjectMessage[] =
    "Check for security protection was initiated during a failed delete operation, but no error object was provided.";

class ProtectionDetection : public OverlayFixture {
 protected:
  void SetUp() override {
    folder_.makeFile("plain");
    folder_.makeFile("restricted");
    folder_.makeFolder("guarded");
    folder_.makeFile("guarded/plain");
    force("restricted", file_flags::kSystemRestricted);
    force("guarded", file_flags::kDataVault);
  }
  Error refined(std::int64_t code, const std::string& name, const Error& underlying) {
    return {kFileDeletionDomain, code,
            Dictionary{{"NSFilePath", folder_.path(name)}, {"NSUnderlyingError", underlying}}};
  }
  // The answer, and the error that it leaves behind.
  std::pair<bool, ErrorOrNil> detect(AdvancedOps& ops, const std::string& name, ErrorOrNil error) {
    const bool answer = ops->isSecurityProtectedObjectAtPath(folder_.path(name), &error);
    return {answer, error};
  }
  static std::pair<bool, ErrorOrNil> outcome(bool answer, ErrorOrNil error) { return {answer, std::move(error)}; }

  const Error notPermitted_ = Error::posix(posix::kNotPermitted);
  const Error accessDenied_ = Error::posix(posix::kAccessDenied);
};

TEST_F(ProtectionDetection, KnowsTheRestrictionFlags) {
  AdvancedOps ops(fileSystem_, lists_, "10.13.6");
  for (const auto flag : {file_flags::kSystemRestricted, file_flags::kSystemNoUnlink, file_flags::kDataVault}) {
    force("plain", flag);
    EXPECT_EQ(detect(ops, "plain", accessDenied_), outcome(true, refined(4, "plain", accessDenied_)));
  }
  for (const auto flag : {file_flags::kSystemImmutable, file_flags::kSystemAppend, file_flags::kUserImmutable,
                          file_flags::kUserAppend, file_flags::kUserNoDump}) {
    force("plain", flag);
    EXPECT_EQ(detect(ops, "plain", accessDenied_), outcome(false, accessDenied_));
  }
}

TEST_F(ProtectionDetection, AFoldersRestrictionCoversWhatItContains) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  EXPECT_EQ(detect(ops, "guarded/plain", notPermitted_), outcome(true, refined(4, "guarded/plain", notPermitted_)));
  folder_.makeFolder("guarded/inner");
  EXPECT_EQ(detect(ops, "guarded/inner//", notPermitted_).first, true);
  EXPECT_EQ(detect(ops, "plain", notPermitted_), outcome(false, notPermitted_));
}

TEST_F(ProtectionDetection, BeganWithVersion1011) {
  for (const char* version : {"", "10.6.8", "10.10.5"}) {
    AdvancedOps ops(fileSystem_, lists_, version);
    ops.policy().answer = 1;
    EXPECT_EQ(detect(ops, "restricted", notPermitted_), outcome(false, notPermitted_)) << version;
  }
  AdvancedOps ops(fileSystem_, lists_, "10.11");
  EXPECT_EQ(detect(ops, "restricted", notPermitted_), outcome(true, refined(4, "restricted", notPermitted_)));
}

TEST_F(ProtectionDetection, OtherPosixErrorsAreNeverRefined) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  ops.policy().answer = 1;
  for (const auto code : {posix::kNoEntry, posix::kNotEmpty, posix::kBusy, posix::kReadOnlyFileSystem}) {
    EXPECT_EQ(detect(ops, "restricted", Error::posix(code)), outcome(false, Error::posix(code)));
  }
  EXPECT_EQ(ops.policy().askedForRoot, 0);
}

TEST_F(ProtectionDetection, ErrorsOfOtherDomainsAndDeniedAccessGoPastThePrivacyControl) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  ops.policy().answer = 1;
  const Error cocoa("NSCocoaErrorDomain", 513);
  EXPECT_EQ(detect(ops, "restricted", cocoa), outcome(true, refined(4, "restricted", cocoa)));
  EXPECT_EQ(detect(ops, "plain", cocoa), outcome(false, cocoa));
  EXPECT_EQ(detect(ops, "restricted", accessDenied_), outcome(true, refined(4, "restricted", accessDenied_)));
  EXPECT_EQ(detect(ops, "plain", accessDenied_), outcome(false, accessDenied_));
  EXPECT_EQ(ops.policy().askedForRoot, 0);
}

TEST_F(ProtectionDetection, ThePrivacyControlIsNamedWithoutTheAnswerBeingTrue) {
  AdvancedOps ops(fileSystem_, lists_, "10.14");
  ops.policy().answer = 1;
  EXPECT_EQ(detect(ops, "plain", notPermitted_), outcome(false, refined(5, "plain", notPermitted_)));
}

TEST_F(ProtectionDetection, ThePrivacyControlBeganWithVersion1014) {
  AdvancedOps ops(fileSystem_, lists_, "10.13.6");
  ops.policy().answer = 1;
  EXPECT_EQ(detect(ops, "plain", notPermitted_), outcome(false, notPermitted_));
  EXPECT_EQ(ops.policy().askedForRoot, 0);
}

TEST_F(ProtectionDetection, OnlyDeniedAccessCounts) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  for (const int answer : {0, 2, -1}) {
    ops.policy().answer = answer;
    EXPECT_EQ(detect(ops, "plain", notPermitted_), outcome(false, notPermitted_)) << answer;
  }
}

TEST_F(ProtectionDetection, SystemIntegrityProtectionWinsOverThePrivacyControl) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  ops.policy().answer = 1;
  EXPECT_EQ(detect(ops, "restricted", notPermitted_), outcome(true, refined(4, "restricted", notPermitted_)));
  EXPECT_EQ(ops.policy().askedForRoot, 1);
}

TEST_F(ProtectionDetection, AnObjectThatCannotBeExaminedKeepsThePrivacyControlsError) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  EXPECT_EQ(detect(ops, "guarded/missing", notPermitted_), outcome(false, notPermitted_));
  ops.policy().answer = 1;
  EXPECT_EQ(detect(ops, "guarded/missing", notPermitted_),
            outcome(false, refined(5, "guarded/missing", notPermitted_)));
}

TEST_F(ProtectionDetection, AsksForTheUserThatItRunsAs) {
  AdvancedOps root(fileSystem_, lists_, "10.15.7", 0);
  detect(root, "plain", notPermitted_);
  EXPECT_EQ(root.policy().askedForRoot, 1);
  EXPECT_EQ(root.policy().askedForUser, 0);
  AdvancedOps user(fileSystem_, lists_, "10.15.7", 501);
  detect(user, "plain", notPermitted_);
  EXPECT_EQ(user.policy().askedForRoot, 0);
  EXPECT_EQ(user.policy().askedForUser, 1);
}

TEST_F(ProtectionDetection, WorksWithoutAPrivacyPolicy) {
  FileManager fileManager(fileSystem_);
  host::LinuxProcessTable processTable;
  NSProcessInfoQELAdditions processInfo(fileSystem_, processTable, makeVersionList(lists_, "10.15.7"));
  RecordingLog log;
  AdvancedOpsAdditions ops(fileManager, fileSystem_, processInfo, Log(log), 0);
  ErrorOrNil error = notPermitted_;
  EXPECT_FALSE(ops.isSecurityProtectedObjectAtPath(folder_.path("plain"), &error));
  EXPECT_EQ(error, notPermitted_);
}

TEST_F(ProtectionDetection, AnEmptyPathIsNotProtected) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  ops.policy().answer = 1;
  ErrorOrNil error = notPermitted_;
  EXPECT_FALSE(ops->isSecurityProtectedObjectAtPath("", &error));
  EXPECT_EQ(error, notPermitted_);
}

TEST_F(ProtectionDetection, WithoutIncomingErrorThereIsNoUnderlyingOne) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  EXPECT_EQ(detect(ops, "restricted", std::nullopt),
            outcome(true, Error(kFileDeletionDomain, 4, Dictionary{{"NSFilePath", folder_.path("restricted")}})));
  EXPECT_TRUE(ops.log().entries().empty());
}

TEST_F(ProtectionDetection, AMissingErrorObjectIsLogged) {
  AdvancedOps ops(fileSystem_, lists_, "10.15.7");
  EXPECT_TRUE(ops->isSecurityProtectedObjectAtPath(folder_.path("restricted"), nullptr));
  EXPECT_FALSE(ops->isSecurityProtectedObjectAtPath(folder_.path("plain"), nullptr));
  const RecordingLog::Entry entry{host::LogLevel::Default, "", "", kNoErrorObjectMessage};
  EXPECT_EQ(ops.log().entries(), (std::vector{entry, entry}));

  AdvancedOps older(fileSystem_, lists_, "10.10");
  EXPECT_FALSE(older->isSecurityProtectedObjectAtPath(folder_.path("restricted"), nullptr));
  EXPECT_TRUE(older.log().entries().empty());
}

}  // namespace
}  // namespace vantrell
