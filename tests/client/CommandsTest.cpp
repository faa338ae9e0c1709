// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The commands on a host whose service is the test's.

#include <algorithm>
#include <memory>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogue/ErrorModel.h"
#include "client/MachOCommand.h"
#include "client/ResultPrinter.h"
#include "client/RunCommand.h"
#include "client/Vantrellctl.h"
#include "foundation/PosixCodes.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeService.h"
#include "tests/client/FakeTerminal.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

constexpr char kHelper[] = "/fake/helper";

class Commands : public testing::Test {
 protected:
  Commands() {
    client_.executables->descriptors[kHelper] = std::string(40, '0');
    client_.host.clientTransport = std::make_unique<tests::FakeClientTransport>(service_);
  }

  CommandContext context(bool json = false) { return {client_.host, terminal_, operations_, out_, err_, json, true}; }
  ExitStatus run(const std::string& identifier, const Words& words, bool json = false) {
    return runOperation(context(json), {.address = "unix:path=/x", .helper = kHelper}, identifier, words);
  }
  void answerWith(Result<ErrorOrNil> answer) {
    service_.answer = [answer](const tests::FakeService::Request& request) {
      if (request.feedback) request.feedback->close();
      return answer;
    };
  }

  tests::ClientHost client_;
  QELPrivilegedToolOperationSetLM4 operations_{*client_.host.systemLog};
  tests::FakeService service_{client_.host, operations_, Data(20, 0)};
  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(Commands, SuccessIsSilent) {
  EXPECT_EQ(run("nop", {}), ExitStatus::Success);
  EXPECT_EQ(out_.str() + err_.str(), "");
  EXPECT_EQ(service_.unregistrations(), 1);
}

TEST_F(Commands, SuccessIsANullResultWithJson) {
  EXPECT_EQ(run("nop", {}, true), ExitStatus::Success);
  EXPECT_EQ(out_.str(), "{\"result\":null}\n");
}

TEST_F(Commands, PrintsTheValuesOfAResult) {
  answerWith(ErrorOrNil(Error(privilegedOperationErrorDomain(), 0, Dictionary{{"ObjectExistence", 1U}})));
  EXPECT_EQ(run("inspect-fileobject", {"/tmp"}), ExitStatus::Success);
  EXPECT_EQ(out_.str(), "ObjectExistence: 1 (folder)\n");
  EXPECT_EQ(err_.str(), "");
}

TEST_F(Commands, PrintsAFailureWithItsSuggestionAndOrigin) {
  answerWith(ErrorOrNil(Error(privilegedOperationErrorDomain(), 6,
                              Dictionary{{NSLocalizedDescriptionKey, "It failed."},
                                         {QELLocalizedRecoverySuggestionTemplateKey, "Look at '$1$'."},
                                         {QELLocalizedRecoverySuggestionParametersKey, Array{"/x"}},
                                         {NSUnderlyingErrorKey, Error::posix(66)}})));
  EXPECT_EQ(run("delete-fileobjects", {"1", "0", "/x"}), ExitStatus::Failure);
  EXPECT_EQ(out_.str(), "");
  EXPECT_EQ(err_.str(), "vantrellctl: It failed.\nLook at '/x'.\n(" + privilegedOperationErrorDomain() +
                            ", code 6)\ncaused by: Directory not empty (NSPOSIXErrorDomain, code 66)\n");
}

TEST_F(Commands, ARefusedTokenIsNotAuthorised) {
  answerWith(ErrorOrNil(privileged_tool_error::authorizationProblem(1)));
  EXPECT_EQ(run("nop", {}), ExitStatus::NoConnection);
  EXPECT_THAT(err_.str(), HasSubstr("issue of type 1"));
  answerWith(ErrorOrNil(privileged_tool_error::notImplemented("nop")));
  EXPECT_EQ(run("nop", {}), ExitStatus::Failure);
  answerWith(ErrorOrNil(Error("Other", 2)));
  EXPECT_EQ(run("nop", {}), ExitStatus::Failure);
}

TEST_F(Commands, WithoutAnAnswerThereIsNoConnection) {
  answerWith(posixFailure(posix::kConnectionReset));
  EXPECT_EQ(run("nop", {}, true), ExitStatus::NoConnection);
  EXPECT_EQ(out_.str(), "");
  EXPECT_THAT(err_.str(), StartsWith("vantrellctl: Connection reset by peer\n"));
}

TEST_F(Commands, AnUninstalledServiceNeedNotAnswer) {
  const tests::TemporaryFolder folder;
  const Words words{"1", folder.path("gone-1"), folder.path("gone-2")};
  answerWith(posixFailure(posix::kConnectionReset));
  EXPECT_EQ(run("perform-uninstall", words), ExitStatus::Success);
  folder.makeFile("gone-2");
  EXPECT_EQ(run("perform-uninstall", words), ExitStatus::NoConnection) << "a file is left: it ended before its work";
}

TEST_F(Commands, ComplainsAboutTheCommandLineBeforeItConnects) {
  EXPECT_EQ(run("no-such-operation", {}), ExitStatus::Usage);
  EXPECT_EQ(run("nop", {"one too many"}), ExitStatus::Usage);
  EXPECT_EQ(run("signal-process", {"1", "x"}), ExitStatus::Usage);
  EXPECT_EQ(service_.connections(), 0);
  EXPECT_THAT(err_.str(), HasSubstr("no-such-operation"));
  EXPECT_EQ(out_.str(), "");
}

TEST_F(Commands, AnExecutableWithoutAKeyIsNoConnection) {
  EXPECT_EQ(runOperation(context(), {.address = "unix:path=/x", .helper = "/etc/hostname"}, "nop", {}),
            ExitStatus::NoConnection);
  EXPECT_THAT(err_.str(), HasSubstr("/etc/hostname"));
}

TEST_F(Commands, StopsAnOperationWhoseOutputNobodyReads) {
  service_.answer = [this](const tests::FakeService::Request& request) -> Result<ErrorOrNil> {
    out_.setstate(std::ios::badbit);
    request.feedback->deliver({{"FileObjectInfo", Array{Dictionary{{"Path", "/x"}}}}});
    const auto cancelled = !service_.waitForCancellations(1).empty();
    request.feedback->close();
    return cancelled ? ErrorOrNil(Error::posix(posix::kCanceled)) : std::nullopt;
  };
  EXPECT_EQ(run("search-agedfiles", {"/x", "1", "1"}), ExitStatus::Failure);
  EXPECT_EQ(service_.unregistrations(), 1);
}

TEST_F(Commands, VersionRegistersSoThatTheServiceMayEnd) {
  EXPECT_EQ(printServiceVersion(context(), {.address = "unix:path=/x", .helper = kHelper}), ExitStatus::Success);
  EXPECT_EQ(out_.str(), "2.5\n");
  EXPECT_EQ(service_.unregistrations(), 1);
  out_.str("");
  EXPECT_EQ(printServiceVersion(context(true), {.address = "unix:path=/x", .helper = "/none"}), ExitStatus::Success);
  EXPECT_EQ(out_.str(), "{\"version\":\"2.5\"}\n");
}

TEST_F(Commands, ListGoesWithoutAService) {
  EXPECT_EQ(carryOut({.command = CommandLine::Command::List}, context()), ExitStatus::Success);
  EXPECT_THAT(out_.str(), HasSubstr("delete-fileobjects"));
  EXPECT_EQ(service_.connections(), 0);
}

TEST_F(Commands, DescribesExecutablesInTheHostsFormat) {
  const tests::TemporaryFolder folder;
  const auto file = folder.makeFile("program", "not really");
  client_.executables->descriptors[file] = std::string(40, 'a');
  EXPECT_EQ(describeExecutable(context(), file), ExitStatus::Success);
  EXPECT_THAT(out_.str(), HasSubstr("No Mach-O file"));
  EXPECT_THAT(out_.str(), HasSubstr("Descriptor: " + std::string(40, 'a') + "\n"));
  out_.str("");
  EXPECT_EQ(describeExecutable(context(true), file), ExitStatus::Success);
  EXPECT_EQ(out_.str(),
            R"({"file":")" + file + R"(","format":"host","descriptors":[")" + std::string(40, 'a') + "\"]}\n");
}

TEST_F(Commands, FailsOnAFileThatIsNoExecutable) {
  const tests::TemporaryFolder folder;
  for (const auto& file : {folder.makeFile("text"), folder.path("missing"), folder.path()}) {
    EXPECT_EQ(describeExecutable(context(), file), ExitStatus::Failure);
  }
  EXPECT_EQ(out_.str(), "");
  EXPECT_THAT(err_.str(), HasSubstr("missing\" can't be read as an executable."));
}

TEST_F(Commands, GivesTheReadersMessagesOnStandardError) {
  const tests::TemporaryFolder folder;
  // A 64-bit header that announces one load command, which is not there.
  std::string content(32, '\0');
  content.replace(0, 4, "\xCF\xFA\xED\xFE");
  content[16] = 1;
  EXPECT_EQ(describeExecutable(context(), folder.makeFile("cut", content)), ExitStatus::Failure);
  EXPECT_GE(std::ranges::count(err_.str(), '\n'), 2) << err_.str();
}

TEST(ResultValueText, ExplainsKnownNumbers) {
  EXPECT_EQ(resultValueText("ObjectExistence", 0U), "0 (nothing)");
  EXPECT_EQ(resultValueText("ObjectExistence", 2U), "2 (no folder)");
  EXPECT_EQ(resultValueText("ObjectExistence", 3U), "3");
  EXPECT_EQ(resultValueText("Size", std::uint64_t{12'345}), "12345");
  EXPECT_EQ(resultValueText(QELSecurityPolicyCheckResultKey, 1), "1 (access denied)");
  EXPECT_EQ(resultValueText("Other", "text"), "text");
  EXPECT_EQ(resultValueText("Other", Array{1, 2}), "[1,2]");
}

TEST(ResultExitStatus, CountsCode0AsSuccessWhateverTheDomain) {
  EXPECT_EQ(exitStatusForResult(std::nullopt), ExitStatus::Success);
  EXPECT_EQ(exitStatusForResult(Error("Any", 0)), ExitStatus::Success);
  EXPECT_EQ(exitStatusForResult(Error::posix(2)), ExitStatus::Failure);
}

}  // namespace
}  // namespace vantrell
