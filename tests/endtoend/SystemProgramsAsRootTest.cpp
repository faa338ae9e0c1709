// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Utilities of the operating system, run by the real helper over the real wire. The machine's own folders of programs
// stay as they are: the helper sees private ones.

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "catalogue/ErrorModel.h"
#include "foundation/PosixCodes.h"
#include "tests/endtoend/SystemProgramsFixture.h"
#include "tests/support/RunProgram.h"

namespace vantrell {
namespace {

using namespace tests;

class SystemProgramsAsRoot : public SystemProgramsFixture {};

Error failedWithStatus(const std::string& status) {
  return {kOperationErrors, 3,
          Dictionary{{"NSLocalizedDescription", "It was not possible to complete the operation successfully."},
                     {"QELLocalizedRecoverySuggestionTemplate",
                      "The operating system could not perform the requested operation. It returned error code $1$."},
                     {"QELLocalizedRecoverySuggestionParameters", Array{status}}}};
}

Error missingUtility(const std::string& name, const std::string& path) {
  return {
      kOperationErrors, 1,
      Dictionary{{"NSLocalizedDescription", "A required component of macOS is missing in your system installation."},
                 {"QELLocalizedRecoverySuggestionTemplate",
                  "Please verify that the UNIX program $1$ is present at its standard path '$2$'."},
                 {"QELLocalizedRecoverySuggestionParameters", Array{name, path}},
                 {"NSFilePath", path}}};
}

Error unsafeUtility(const std::string& path) {
  return {kOperationErrors, 2,
          Dictionary{{"NSLocalizedDescription",
                      "Permission settings for a system utility at the Unix level are unsafe. The command cannot be "
                      "executed for security reasons."},
                     {"QELLocalizedRecoverySuggestionTemplate",
                      "Please verify that the executable '$1$' and its parent folder are owned by the operating system "
                      "and cannot be modified by any user."},
                     {"QELLocalizedRecoverySuggestionParameters", Array{path}},
                     {"NSFilePath", path}}};
}

TEST_F(SystemProgramsAsRoot, TheSystemsOwnChmodChangesAFilesMode) {
  const auto file = folder_.makeFile("file");
  const auto heard = execute("chmod", {"0641", file});
  EXPECT_EQ(heard.result, std::nullopt);
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0641u);
  EXPECT_EQ(heard.text(true) + heard.text(false), "");
  heard.expectEachStreamEndsOnce();
}

TEST_F(SystemProgramsAsRoot, AFailedUtilityIsReportedWithItsStatusAndItsMessageArrives) {
  const auto missing = folder_.path("missing");
  const auto heard = execute("chmod", {"0641", missing});
  EXPECT_EQ(heard.result, failedWithStatus("1"));
  EXPECT_NE(heard.text(true).find(missing), std::string::npos) << heard.text(true);
  EXPECT_EQ(heard.text(false), "");

  folders_->putScript("/usr/bin/ditto", "exit 42");
  EXPECT_EQ(execute("ditto", {}).result, failedWithStatus("42"));
}

TEST_F(SystemProgramsAsRoot, AUtilityThatASignalEndedIsReportedWithTheSignalsNumber) {
  folders_->putScript("/usr/bin/ditto", "kill -TERM $$");
  EXPECT_EQ(execute("ditto", {}).result, failedWithStatus("15"));
}

TEST_F(SystemProgramsAsRoot, WritingToStandardErrorIsNoFailure) {
  folders_->putScript("/usr/bin/ditto", "echo complaint >&2");
  const auto heard = execute("ditto", {});
  EXPECT_EQ(heard.result, std::nullopt);
  EXPECT_EQ(heard.text(true), "complaint\n");
}

TEST_F(SystemProgramsAsRoot, TheUtilityGetsItsArgumentsInOrderAndUnchanged) {
  folders_->putScript("/usr/sbin/diskutil", R"(for word in "$0" "$@"; do printf '[%s]' "$word"; done)");
  const auto heard = execute("diskutil", {"a b", "", "$HOME;`id`", "-x", "ü\n"});
  EXPECT_EQ(heard.result, std::nullopt);
  EXPECT_EQ(heard.text(false), "[/usr/sbin/diskutil][a b][][$HOME;`id`][-x][ü\n]");
}

TEST_F(SystemProgramsAsRoot, WhatIsNotInTheTableIsRefusedAndNothingRuns) {
  const auto mark = putMarkingProgram("/usr/bin/rm");
  putMarkingProgram("/usr/bin/ditto");
  const std::vector<Array> refused{{kApplication, "rm"},
                                   {kApplication, "/bin/rm"},
                                   {kApplication, "/usr/bin/ditto"},
                                   {kApplication, "../bin/ditto"},
                                   {kApplication, "periodic"},
                                   {kApplication, ""},
                                   {"", "ditto"},
                                   {kApplication},
                                   {}};
  for (const auto& arguments : refused) {
    EXPECT_EQ(perform(kExecuteUtility, arguments), Error::posix(posix::kInvalidArgument))
        << testing::PrintToString(arguments.size());
  }
  EXPECT_FALSE(exists(mark));
  EXPECT_EQ(perform(kExecuteUtility, {kApplication, "ditto"}), std::nullopt);
  EXPECT_TRUE(exists(mark)) << "then the refusals show nothing";
}

TEST_F(SystemProgramsAsRoot, AMissingUtilityIsNamedWithItsPlace) {
  std::filesystem::remove_all("/usr/sbin/asr");
  EXPECT_EQ(execute("asr", {}).result, missingUtility("asr", "/usr/sbin/asr"));
  std::filesystem::create_directory("/usr/sbin/asr");
  EXPECT_EQ(execute("asr", {}).result, missingUtility("asr", "/usr/sbin/asr"));
}

TEST_F(SystemProgramsAsRoot, AUtilityThatOthersMayChangeDoesNotRun) {
  const auto mark = putMarkingProgram("/usr/bin/ditto");
  for (const mode_t mode : {0775u, 0757u}) {
    ASSERT_EQ(chmod("/usr/bin/ditto", mode), 0);
    EXPECT_EQ(execute("ditto", {}).result, unsafeUtility("/usr/bin/ditto"));
  }
  ASSERT_EQ(chmod("/usr/bin/ditto", 0755), 0);
  ASSERT_EQ(chown("/usr/bin/ditto", 65534, 0), 0);
  EXPECT_EQ(execute("ditto", {}).result, unsafeUtility("/usr/bin/ditto"));
  ASSERT_EQ(chown("/usr/bin/ditto", 0, 0), 0);
  ASSERT_EQ(chmod("/usr/bin", 0775), 0);
  EXPECT_EQ(execute("ditto", {}).result, unsafeUtility("/usr/bin/ditto"));
  ASSERT_EQ(chmod("/usr/bin", 0755), 0);
  EXPECT_FALSE(exists(mark));
  EXPECT_EQ(execute("ditto", {}).result, std::nullopt);
  EXPECT_TRUE(exists(mark)) << "then the refusals show nothing";
}

TEST_F(SystemProgramsAsRoot, AUtilityThatCannotBeExecutedRaisesWhichIsError8) {
  folders_->putScript("/usr/bin/ditto", "exit 0");
  ASSERT_EQ(chmod("/usr/bin/ditto", 0644), 0);
  const auto result = execute("ditto", {}).result;
  EXPECT_EQ(result, privileged_tool_error::unhandledException("execute-utility", "NSInvalidArgumentException",
                                                              "launch path not accessible"));
}

TEST_F(SystemProgramsAsRoot, BothStreamsShareOneCountWhichBeginsAnewWithEachRun) {
  folders_->putScript("/usr/bin/ditto", R"(
for number in 1 2 3 4 5; do
  printf "out$number "
  sleep 0.02
  printf "err$number " >&2
  sleep 0.02
done)");
  for (int run = 0; run < 2; ++run) {
    const auto heard = execute("ditto", {});
    EXPECT_EQ(heard.result, std::nullopt);
    EXPECT_EQ(heard.text(false), "out1 out2 out3 out4 out5 ");
    EXPECT_EQ(heard.text(true), "err1 err2 err3 err4 err5 ");
    heard.expectEachStreamEndsOnce();
    // Opening, the numbered pieces without a gap, final message: nothing else.
    ASSERT_GE(heard.messages.size(), 2u);
    EXPECT_EQ(heard.messages.size(), heard.pieces().size() + 2);
    EXPECT_EQ(heard.messages.front(), (Dictionary{{"OutputData", Data{}}, {"ErrorData", Data{}}}));
    EXPECT_EQ(heard.messages.back(), (Dictionary{{"FinalFeedbackMessage", true}}));
  }
}

TEST_F(SystemProgramsAsRoot, MuchOutputArrivesWholeAndInOrder) {
  folders_->putScript("/usr/bin/ditto", "seq 1 400000; seq 1 1000 >&2");
  const auto heard = execute("ditto", {});
  EXPECT_EQ(heard.result, std::nullopt);
  std::string expected;
  for (int number = 1; number <= 400'000; ++number) expected += std::to_string(number) + "\n";
  EXPECT_TRUE(heard.text(false) == expected);
  EXPECT_TRUE(heard.text(true) == expected.substr(0, expected.find("1001\n")));
  heard.expectEachStreamEndsOnce();
}

TEST_F(SystemProgramsAsRoot, ACancellationInterruptsTheUtility) {
  const auto mark = folder_.path("signal");
  folders_->putScript("/usr/bin/ditto", "trap 'echo INT >> " + mark + "; exit 0' INT\n" + "trap 'echo TERM >> " + mark +
                                            "; exit 0' TERM\necho ready\n"
                                            "while :; do sleep 0.05; done");
  OperationCancellation cancellation;
  const auto heard = execute(
      "ditto", {},
      [&](const std::string& output) {
        if (output == "ready\n") cancellation.request();
      },
      &cancellation);
  EXPECT_EQ(heard.result, Error::posix(posix::kCanceled));
  EXPECT_EQ(contentOf(mark), "INT\n");
  ASSERT_FALSE(heard.messages.empty());
  EXPECT_EQ(heard.messages.back(), (Dictionary{{"FinalFeedbackMessage", true}}));
}

TEST_F(SystemProgramsAsRoot, AUtilityThatIgnoresTheInterruptIsWaitedFor) {
  const auto mark = folder_.path("done");
  folders_->putScript("/usr/bin/ditto", "trap '' INT\necho ready\nsleep 1\necho late\ntouch " + mark);
  OperationCancellation cancellation;
  const auto heard = execute(
      "ditto", {},
      [&](const std::string& output) {
        if (output == "ready\n") cancellation.request();
      },
      &cancellation);
  EXPECT_EQ(heard.result, Error::posix(posix::kCanceled));
  EXPECT_TRUE(exists(mark));
  EXPECT_EQ(heard.text(false), "ready\nlate\n");
}

TEST_F(SystemProgramsAsRoot, TheUtilityHasNoSearchPathButTheRestOfTheEnvironment) {
  ASSERT_EQ(setenv("VANTRELL_TEST_VARIABLE", "kept", 1), 0);
  startHelper();
  unsetenv("VANTRELL_TEST_VARIABLE");
  ASSERT_NE(getenv("PATH"), nullptr) << "the helper had none from the start";
  // The shell's own environment as it was handed over; the shell makes up a search path where it finds none.
  folders_->putScript("/usr/bin/ditto", "/usr/bin/cat /proc/$$/environ");
  const auto environment = '\0' + execute("ditto", {}).text(false);
  using namespace std::string_literals;
  EXPECT_NE(environment.find("\0VANTRELL_TEST_VARIABLE=kept\0"s), std::string::npos) << environment;
  EXPECT_EQ(environment.find("\0PATH="s), std::string::npos) << environment;
}

TEST_F(SystemProgramsAsRoot, TheCommandShowsBothStreamsByteByByte) {
  folders_->putScript("/usr/bin/ditto", R"(printf 'a\000b\377\n'; printf 'oops\376' >&2; exit "$1")");
  for (const char* status : {"0", "5"}) {
    const auto result =
        runProgram(kProgram, {"--spawn", kHelper, "run", "execute-utility", kApplication, "ditto", status});
    EXPECT_EQ(result.output, std::string("a\0b\377\n", 5));
    EXPECT_EQ(result.status, *status == '0' ? 0 : 1);
    EXPECT_TRUE(result.error.starts_with("oops\376")) << result.error;
    EXPECT_EQ(result.error.size() == 5, *status == '0') << result.error;
  }
}

TEST_F(SystemProgramsAsRoot, TheCommandShowsOutputWhileTheUtilityRuns) {
  const auto signal = folder_.path("go");
  folders_->putScript("/usr/bin/ditto", "echo first\nwhile [ ! -e " + signal + " ]; do sleep 0.02; done\necho second");
  const auto line = kProgram + " --spawn " + kHelper + " run execute-utility " + kApplication + " ditto";
  FILE* output = popen(line.c_str(), "re");
  ASSERT_TRUE(output);
  char text[64] = "";
  EXPECT_TRUE(fgets(text, sizeof text, output));
  EXPECT_STREQ(text, "first\n");
  folder_.makeFile("go");
  EXPECT_TRUE(fgets(text, sizeof text, output));
  EXPECT_STREQ(text, "second\n");
  EXPECT_EQ(pclose(output), 0);
}

}  // namespace
}  // namespace vantrell
