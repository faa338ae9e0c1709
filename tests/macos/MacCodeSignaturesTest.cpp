// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/PosixCodes.h"
#include "foundation/Value.h"
#include "host/macos/MacCodeSignatures.h"
#include "host/macos/ResolvedPath.h"
#include "tests/macos/SignedBundle.h"

namespace vantrell::tests {
namespace {

using namespace host::code_signing_error;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr host::CodeValidityOptions kEverything{
    .checkAllArchitectures = true, .checkNestedCode = true, .enforceRevocationChecks = true};
constexpr char kFinder[] = "/System/Library/CoreServices/Finder.app";

std::unique_ptr<host::StaticCode> codeAt(const std::string& path) {
  auto code = host::MacCodeSignatures().staticCodeAtPath(path);
  EXPECT_TRUE(code) << path;
  return code ? *std::move(code) : nullptr;
}

/// 0 for success, the code of the platform's error domain, 1 for any other domain.
std::int64_t codeOf(const ErrorOrNil& error) {
  return !error ? 0 : error->domain() == host::kCodeSigningErrorDomain ? error->code() : 1;
}
template <class T>
std::int64_t codeOf(const Result<T>& result) {
  return result ? 0 : codeOf(ErrorOrNil(result.error()));
}

std::string descriptionOf(const Error& error) {
  const Value* value = error.userInfo().find(NSLocalizedDescriptionKey);
  return value && value->asString() ? *value->asString() : "";
}

/// The paths under `key` in a failure that tells of nothing but sealed resources.
std::vector<std::string> pathsIn(const ErrorOrNil& error, const char* key) {
  EXPECT_EQ(codeOf(error), kBadResource);
  const Value* value = error ? error->userInfo().find(key) : nullptr;
  const Array* array = value ? value->asArray() : nullptr;
  std::vector<std::string> paths;
  if (array) {
    for (const Value& path : *array) paths.push_back(path.asString() ? *path.asString() : "no text");
  }
  return paths;
}

}  // namespace

TEST(MacCodeSignatures, TellsWhoSignedAProgramOfTheSystem) {
  const auto information = codeAt("/bin/ls")->signingInformation();
  ASSERT_TRUE(information);
  EXPECT_EQ(information->identifier, "com.apple.ls");
  EXPECT_EQ(information->teamIdentifier, std::nullopt);
  EXPECT_FALSE(information->isAdHoc);
  EXPECT_THAT(information->authorities,
              ElementsAre("Software Signing", "Apple Code Signing Certification Authority", "Apple Root CA"));
}

TEST(MacCodeSignatures, FindsThatTheSystemsOwnCodeIsWhole) {
  for (const std::string path : {"/bin/ls", "/usr/bin/true", kFinder}) {
    const auto code = codeAt(path);
    EXPECT_EQ(code->checkValidity(kEverything, host::kAnchorAppleGeneric), std::nullopt) << path;
    EXPECT_EQ(code->checkValidity({}, ""), std::nullopt) << path;
    EXPECT_THAT(code->findings(), IsEmpty());
  }
}

TEST(MacCodeSignatures, RefusesAnotherSignerThanTheRequired) {
  const auto code = codeAt("/bin/ls");
  const auto error = code->checkValidity({}, "anchor apple and identifier \"com.example.other\"");
  EXPECT_EQ(codeOf(error), kRequirementFailed);
  ASSERT_TRUE(error);
  EXPECT_THAT(descriptionOf(*error), Not(IsEmpty()));
  EXPECT_THAT(code->findings(), ElementsAre(descriptionOf(*error)));
}

TEST(MacCodeSignatures, RefusesARequirementThatIsNotUnderstood) {
  const auto code = codeAt("/bin/ls");
  for (const std::string requirement : {"anchor apple generic and", "nonsense", "\xFF"}) {
    const auto error = code->checkValidity({}, requirement);
    EXPECT_EQ(codeOf(error), kBadRequirementSyntax) << requirement;
    EXPECT_THAT(code->findings(), Not(IsEmpty())) << requirement;
  }
  EXPECT_EQ(code->checkValidity({}, "anchor apple"), std::nullopt);
  EXPECT_THAT(code->findings(), IsEmpty());
}

TEST(MacCodeSignatures, TellsCodeWithoutASignature) {
  const TemporaryFolder folder;
  const auto code = codeAt(folder.makeFile("script", "#!/bin/sh\n"));
  EXPECT_EQ(codeOf(code->signingInformation()), kUnsigned);
  EXPECT_EQ(codeOf(code->checkValidity({}, host::kAnchorAppleGeneric)), kUnsigned);
  EXPECT_EQ(codeOf(code->checkValidity({}, "")), kUnsigned);
}

TEST(MacCodeSignatures, RefuseWhatCannotBeCode) {
  const TemporaryFolder folder;
  host::MacCodeSignatures signatures;
  const auto missing = signatures.staticCodeAtPath(folder.path("missing"));
  ASSERT_FALSE(missing);
  EXPECT_TRUE(missing.error().isPosix(posix::kNoEntry));
  EXPECT_FALSE(signatures.staticCodeAtPath(""));
  EXPECT_FALSE(signatures.staticCodeAtPath(std::string("/bin/ls\0x", 9)));
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(codeOf(signatures.staticCodeAtPath(folder.path("pipe"))), kBadObject);
  EXPECT_EQ(codeOf(signatures.staticCodeAtPath("/dev/null")), kBadObject);
  EXPECT_EQ(codeOf(signatures.staticCodeAtPath(folder.makeFolder("folder"))), kBadObject);
}

TEST(MacCodeSignatures, BelieveAnAdHocSignatureWhereNothingIsRequired) {
  const SignedBundle bundle;
  const auto code = codeAt(bundle.path());
  const auto information = code->signingInformation();
  ASSERT_TRUE(information);
  EXPECT_EQ(information->identifier, SignedBundle::kIdentifier);
  EXPECT_EQ(information->teamIdentifier, std::nullopt);
  EXPECT_TRUE(information->isAdHoc);
  EXPECT_THAT(information->authorities, IsEmpty());
  EXPECT_EQ(code->checkValidity(kEverything, ""), std::nullopt);
  EXPECT_EQ(codeOf(code->checkValidity(kEverything, host::kAnchorAppleGeneric)), kRequirementFailed);
}

TEST(MacCodeSignatures, ListWhatHasBecomeOfSealedResources) {
  const SignedBundle bundle;
  bundle.write("Resources/added.txt", "added");
  bundle.write("Resources/one.txt", "other");
  bundle.remove("Resources/two.txt");
  const auto code = codeAt(bundle.path());
  const auto error = code->checkValidity({}, "");
  EXPECT_THAT(pathsIn(error, host::SecCSResourceAdded), ElementsAre(EndsWith("Contents/Resources/added.txt")));
  EXPECT_THAT(pathsIn(error, host::SecCSResourceAltered), ElementsAre(EndsWith("Contents/Resources/one.txt")));
  EXPECT_THAT(pathsIn(error, host::SecCSResourceMissing), ElementsAre(EndsWith("Contents/Resources/two.txt")));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->userInfo().size(), 3U);
  EXPECT_THAT(code->findings(), testing::SizeIs(3));
}

TEST(MacCodeSignatures, GiveTheWholePathOfAnAddedResourceAndNothingElse) {
  const SignedBundle bundle;
  bundle.write("Resources/added.txt", "added");
  const auto error = codeAt(bundle.path())->checkValidity(kEverything, "");
  EXPECT_THAT(pathsIn(error, host::SecCSResourceAdded),
              ElementsAre(host::resolvedPath(bundle.path("Resources/added.txt")).value()));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->userInfo().size(), 1U);
}

TEST(MacCodeSignatures, AnswerAboutTheCodeAsItIsEachTime) {
  const SignedBundle bundle;
  const auto code = codeAt(bundle.path());
  EXPECT_EQ(code->checkValidity({}, ""), std::nullopt);
  bundle.write("Resources/added.txt", "added");
  EXPECT_EQ(codeOf(code->checkValidity({}, "")), kBadResource);
  bundle.remove("Resources/added.txt");
  EXPECT_EQ(code->checkValidity({}, ""), std::nullopt);
  EXPECT_THAT(code->findings(), IsEmpty());
}

TEST(MacCodeSignatures, PutAChangedExecutableBeforeChangedResources) {
  const SignedBundle bundle;
  bundle.write("MacOS/run", "#!/bin/ls\n");
  bundle.write("Resources/added.txt", "added");
  const auto error = codeAt(bundle.path())->checkValidity({}, "");
  ASSERT_TRUE(error);
  EXPECT_EQ(codeOf(error), kSignatureFailed);
  EXPECT_THAT(descriptionOf(*error), Not(IsEmpty()));
  EXPECT_EQ(error->userInfo().size(), 1U);
}

// Else what was added to nested code would look like an addition to the bundle itself.
TEST(MacCodeSignatures, TellNestedCodesResourcesFromTheBundlesOwn) {
  const SignedBundle bundle;
  bundle.write("PlugIns/Inner.app/Contents/Resources/added.txt", "added");
  const auto code = codeAt(bundle.path());
  const auto error = code->checkValidity({.checkNestedCode = true}, "");
  ASSERT_TRUE(error);
  EXPECT_NE(codeOf(error), 1);
  EXPECT_THAT(descriptionOf(*error), HasSubstr("Inner.app"));
  EXPECT_EQ(error->userInfo().size(), 1U);
  EXPECT_EQ(code->checkValidity({}, ""), std::nullopt);
}

}  // namespace vantrell::tests
