// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "client/ErrorText.h"
#include "client/PosixMessages.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

Error cocoa(std::int64_t code, Dictionary userInfo = {}) {
  return {std::string(kCocoaErrorDomain), code, std::move(userInfo)};
}

TEST(PosixMessage, FollowsDarwinsNumbers) {
  EXPECT_EQ(posixMessage(2), "No such file or directory");
  EXPECT_EQ(posixMessage(22), "Invalid argument");
  EXPECT_EQ(posixMessage(35), "Resource temporarily unavailable");
  EXPECT_EQ(posixMessage(45), "Operation not supported");
  EXPECT_EQ(posixMessage(54), "Connection reset by peer");
  EXPECT_EQ(posixMessage(62), "Too many levels of symbolic links");
  EXPECT_EQ(posixMessage(66), "Directory not empty");
  EXPECT_EQ(posixMessage(79), "Inappropriate file type or format");
  EXPECT_EQ(posixMessage(84), "Value too large to be stored in data type");
  EXPECT_EQ(posixMessage(89), "Operation canceled");
  EXPECT_EQ(posixMessage(93), "Attribute not found");
  EXPECT_EQ(posixMessage(100), "Protocol error");
  EXPECT_EQ(posixMessage(106), "Interface output queue is full");
}

TEST(PosixMessage, IsEmptyForANumberWithoutMeaning) {
  for (const std::int64_t code : {std::int64_t{-1}, std::int64_t{0}, std::int64_t{107}, INT64_MAX, INT64_MIN}) {
    EXPECT_EQ(posixMessage(code), "");
  }
}

TEST(ErrorText, PrefersTheErrorsOwnDescription) {
  const Error error(std::string(kPosixErrorDomain), 2, Dictionary{{NSLocalizedDescriptionKey, "Own words."}});
  EXPECT_EQ(textOfError(error).description, "Own words.");
}

TEST(ErrorText, FillsTemplatesIn) {
  const auto text = textOfError(privileged_tool_error::authorizationProblem(104));
  EXPECT_EQ(text.description, "Communication with the security component failed.");
  EXPECT_EQ(text.recoverySuggestion,
            "An authorization or trust issue of type 104 was detected. The operation was rejected to avoid a security "
            "breach. Uninstall the security component and try again.");
}

TEST(ErrorText, NamesThePathOfASystemError) {
  EXPECT_EQ(textOfError(Error::posix(22)).description, "Invalid argument");
  const Error withPath(std::string(kPosixErrorDomain), 17, Dictionary{{NSFilePathErrorKey, "/x"}});
  EXPECT_EQ(textOfError(withPath).description, "/x: File exists");
}

TEST(ErrorText, HasASentenceForEachFileManagerFailure) {
  for (const int code : {4, 256, 257, 258, 260, 263, 512, 513, 514, 516, 640, 642}) {
    const auto text = textOfError(cocoa(code, {{NSFilePathErrorKey, "/x"}})).description;
    EXPECT_TRUE(text.starts_with("/x: ")) << code << ": " << text;
  }
  EXPECT_EQ(textOfError(cocoa(516, {{NSSourceFilePathErrorKey, "/from"}})).description,
            "/from: A file or folder with this name exists already.");
}

TEST(ErrorText, IsNeverEmptyForAFailure) {
  EXPECT_EQ(textOfError(Error("Other", 5)).description, "The operation could not be completed.");
  EXPECT_EQ(textOfError(Error::posix(4711)).description, "The operation could not be completed.");
  EXPECT_EQ(textOfError(cocoa(1)).description, "The operation could not be completed.");
}

TEST(ErrorText, IsEmptyForAResultWithCode0) {
  EXPECT_EQ(textOfError(Error("D", 0, Dictionary{{"Size", 1}})).description, "");
}

TEST(CausesOfError, ListsWhatStandsBeneath) {
  const auto middle = cocoa(513, {{NSUnderlyingErrorKey, Error::posix(66)}, {NSFilePathErrorKey, "/x"}});
  const Error outer("D", 1, Dictionary{{NSUnderlyingErrorKey, middle}});
  EXPECT_EQ(causesOfError(outer),
            (std::vector<std::string>{"/x: The file or folder could not be changed because the permission is missing. "
                                      "(NSCocoaErrorDomain, code 513)",
                                      "Directory not empty (NSPOSIXErrorDomain, code 66)"}));
  EXPECT_TRUE(causesOfError(Error::posix(1)).empty());
}

TEST(CausesOfError, StopsSomewhere) {
  Error error = Error::posix(1);
  for (int i = 0; i < 100; ++i) error = Error("D", i, Dictionary{{NSUnderlyingErrorKey, error}});
  EXPECT_LT(causesOfError(error).size(), 20u);
}

}  // namespace
}  // namespace vantrell
