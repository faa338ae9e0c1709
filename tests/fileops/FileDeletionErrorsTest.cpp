// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "fileops/FileDeletionErrors.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"
#include "tests/fileops/AdvancedOpsFixture.h"

namespace vantrell {
namespace {

using namespace tests;

TEST(FileDeletionErrors, HaveADomainOfTheirOwn) {
  EXPECT_EQ(fileDeletionErrorDomain(), kFileDeletionDomain);
  const TemporaryFolder folder;
  host::LinuxFileSystem fileSystem;
  AdvancedOps ops(fileSystem, folder);
  EXPECT_EQ(ops->fileDeletionErrorDomain(), kFileDeletionDomain);
}

TEST(FileDeletionErrors, CarryThePathAndWhatTheyRefine) {
  EXPECT_EQ(fileDeletionError(FileDeletionErrorCode::Whiteout, "/p"),
            Error(kFileDeletionDomain, 1, Dictionary{{"NSFilePath", "/p"}}));
  EXPECT_EQ(fileDeletionError(FileDeletionErrorCode::PrivacyControl, "/p", Error::posix(1)),
            Error(kFileDeletionDomain, 5, Dictionary{{"NSFilePath", "/p"}, {"NSUnderlyingError", Error::posix(1)}}));
}

TEST(FileDeletionErrors, AreTranslatedForTheClient) {
  struct Row {
    std::int64_t code;
    std::int64_t operationCode;
    const char* description;
    const char* suggestion;
  };
  const Row rows[] = {
      {1, 6, "It is not possible to delete a file system object of type 'whiteout'.",
       "Please check the type of the object located at '$1$'. Whiteouts cannot really exist in current versions of "
       "macOS."},
      {2, 7, "The operating system could not change protection flags.",
       "Please check if the file system storing the object '$1$' is working properly."},
      {3, 8, "Single User Mode is required to remove this object.",
       "The object located at '$1$' uses special protection which should only be deactivated when the system is not in "
       "full operation. Please restart the operating system in Single User Mode and remove the protection attribute."},
      {4, 17, "Your computer is protecting this file system object.",
       "The object at '$1$' cannot be modified because System Integrity Protection is active on this computer. It "
       "might be possible to deactivate this feature by changing a hardware setting via the recovery operating system. "
       "Please see the reference manual for more information."},
      {5, 24, "Your privacy policy is protecting this file system object.",
       "The object at '$1$' cannot be accessed because you haven't given your approval yet to allow the application to "
       "work with data which could be critical to your privacy. Please use System Preferences to give your consent for "
       "'Full Disk Access'."},
  };
  const Error underlying = Error::posix(posix::kNotPermitted);
  for (const auto& row : rows) {
    const Error error(kFileDeletionDomain, row.code,
                      Dictionary{{"NSFilePath", "/a/b"}, {"NSUnderlyingError", underlying}});
    EXPECT_EQ(privilegedOperationErrorForFileDeletionError(error),
              Error(kOperationDomain, row.operationCode,
                    Dictionary{{"NSFilePath", "/a/b"},
                               {"NSUnderlyingError", underlying},
                               {"NSLocalizedDescription", row.description},
                               {"QELLocalizedRecoverySuggestionTemplate", row.suggestion},
                               {"QELLocalizedRecoverySuggestionParameters", Array{"/a/b"}}}))
        << row.code;
  }
}

TEST(FileDeletionErrors, WithoutPathHaveAnEmptyParameter) {
  const auto translated =
      privilegedOperationErrorForFileDeletionError(Error(kFileDeletionDomain, 1, Dictionary{{"Other", 1}}));
  EXPECT_EQ(*translated.userInfo().find("QELLocalizedRecoverySuggestionParameters"), Value(Array{""}));
  EXPECT_FALSE(translated.userInfo().contains("NSFilePath"));
}

TEST(FileDeletionErrors, WithOtherCodesKeepTheirUserInfoOnly) {
  const Dictionary userInfo{{"NSFilePath", "/a"}};
  for (const std::int64_t code : {0, 6, -1})
    EXPECT_EQ(privilegedOperationErrorForFileDeletionError(Error(kFileDeletionDomain, code, userInfo)),
              Error(kOperationDomain, 0, userInfo));
}

TEST(FileDeletionErrors, WithoutUserInfoStayWithout) {
  const auto translated = privilegedOperationErrorForFileDeletionError(Error(kFileDeletionDomain, 3));
  EXPECT_EQ(translated, Error(kOperationDomain, 8));
  EXPECT_FALSE(translated.hasUserInfo());
}

TEST(FileDeletionErrors, OfOtherDomainsStayAsTheyAre) {
  for (const auto& error : {Error::posix(1), Error("NSCocoaErrorDomain", 513, Dictionary{{"NSFilePath", "/a"}}),
                            Error(kOperationDomain, 3)})
    EXPECT_EQ(privilegedOperationErrorForFileDeletionError(error), error);
}

}  // namespace
}  // namespace vantrell
