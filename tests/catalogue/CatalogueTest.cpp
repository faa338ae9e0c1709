// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <optional>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

enum class Feedback { None, Progress, LiveOutput };
constexpr std::uint64_t kAny = 0x7FFFFFFFFFFFFFFF;

struct Row {
  std::uint64_t code;
  std::string identifier;
  int policy;
  Feedback feedback;
  std::uint64_t argumentCount;
  std::optional<std::string> types;
  std::string presentation;
};

// Written down a second time on purpose: clients are built against these rows, so a change must show.
std::vector<Row> expectedRows() {
  return {
      // clang-format off
      {9998, "nop", 0, Feedback::None, 0, std::nullopt, "perform an empty operation to contact its privileged component"},
      {9997, "discard-auth", 0, Feedback::None, 0, std::nullopt, "enforce that future privileged commands require new authorization"},
      {9996, "delete-files", 1, Feedback::None, kAny, std::nullopt, "delete files of the privileged auxiliary program"},
      {9995, "perform-uninstall", 1, Feedback::None, 3, "NSS", "uninstall the privileged auxiliary program"},
      {9994, "check-securitypolicy", 0, Feedback::None, 0, "", "check the security policy of the operating system"},
      {0, "modify-systemfile", 1, Feedback::None, 3, "SDN", "modify a file owned by the operating system"},
      {1, "create-fileobject", 1, Feedback::None, 2, "SS", "create a file system object in a possibly protected folder"},
      {2, "rename-fileobject", 1, Feedback::None, 2, "SS", "rename a file system object in a possibly protected folder"},
      {3, "delete-fileobjects", 1, Feedback::Progress, kAny, std::nullopt, "delete file system objects independent of their permission settings"},
      {4, "delete-foldercontents", 1, Feedback::Progress, kAny, std::nullopt, "delete the contents of one or more folders"},
      {5, "inspect-fileobject", 1, Feedback::None, 1, "S", "check whether a file is present in a possibly protected folder"},
      {6, "touch-fileobject", 1, Feedback::None, 1, "S", "set the modification time of a file in a possibly protected folder"},
      {7, "modify-protection", 1, Feedback::None, 4, "SNNN", "modify the protection setting of a file system object"},
      {8, "modify-hfsattr", 1, Feedback::None, 4, "SNNN", "modify the classic HFS attributes of a file system object"},
      {9, "create-link", 1, Feedback::None, 3, "SSN", "create a file system link in a possibly protected folder"},
      {10, "search-agedfiles", 1, Feedback::Progress, 3, "SNN", "search for files of a certain age in a possibly protected folder"},
      {11, "search-filenames", 1, Feedback::Progress, 4, "SSSN", "search for files with a name pattern in a possible protected folder"},
      {12, "search-patterns", 1, Feedback::Progress, kAny, std::nullopt, "search for files that match certain name patterns"},
      {13, "search-fileorphans", 1, Feedback::Progress, 2, "SN", "search for file system objects which have unknown owners"},
      {14, "inspect-storagesize", 1, Feedback::None, 1, "S", "determine the storage size of a hierarchy of possible protected folders"},
      {15, "modify-kernelsetting", 1, Feedback::None, 2, "SN", "change a setting in the running operating system kernel"},
      {16, "modify-nvram", 1, Feedback::None, 2, "SS", "change a setting in non-volatile memory"},
      {17, "modify-preferences", 1, Feedback::None, 5, "SSSSS", "change a preference value affecting a different user or all users"},
      {18, "modify-sysconf", 1, Feedback::None, 4, "SSSS", "change a system configuration setting"},
      {19, "signal-process", 1, Feedback::None, 2, "NN", "send a signal to a running process"},
      {20, "modify-acl", 1, Feedback::None, 2, "SD", "change the Access Control List for a file system object"},
      {21, "prop-permissions", 1, Feedback::Progress, 3, "SNN", "propagate permission settings for a hierarchy of files and folders"},
      {22, "execute-utility", 1, Feedback::LiveOutput, kAny, std::nullopt, "run a utility program of the operating system"},
      {23, "enable-ipvsix", 1, Feedback::None, 3, "SSN", "control IPv6 support of a network interface"},
      {24, "rename-stashfolder", 1, Feedback::None, 3, "SSN", "move a possibly protected folder"},
      {25, "create-installmedia", 1, Feedback::LiveOutput, 2, "SS", "let an Apple OS installer create install media"},
      {26, "erase-diskblocks", 1, Feedback::None, 2, "SN", "erase blocks of a physical storage device"},
      {27, "write-smcvalue", 1, Feedback::None, 2, "SD", "modify a value of the System Management Controller"},
      // clang-format on
  };
}

class Catalogue : public testing::Test {
 protected:
  tests::RecordingLog log_;
  QELPrivilegedToolOperationSetLM4 set_{log_};
};

TEST_F(Catalogue, HasExactlyItsRows) {
  const auto rows = expectedRows();
  EXPECT_EQ(rows.size(), 33u);
  EXPECT_EQ(set_.implementedOperations().size(), rows.size());
  EXPECT_EQ(set_.opIdentifiersByCode().size(), rows.size());
  EXPECT_TRUE(log_.entries().empty());
  for (const auto& row : rows) {
    SCOPED_TRACE(row.identifier);
    const auto operation = set_.operationWithCode(row.code);
    ASSERT_TRUE(operation);
    EXPECT_EQ(set_.opIdentifiersByCode().at(row.code), row.identifier);
    EXPECT_EQ(operation->identifier(), row.identifier);
    EXPECT_EQ(operation->authenticationPolicy(),
              row.policy == 0 ? Value("allow") : Value(Dictionary{{"rule", "default"}}));
    EXPECT_EQ(operation->isSupportingProgressFeedback(), row.feedback == Feedback::Progress);
    EXPECT_EQ(operation->isSupportingLiveOutput(), row.feedback == Feedback::LiveOutput);
    EXPECT_EQ(operation->argumentCount(), row.argumentCount);
    EXPECT_EQ(operation->argumentTypeCodes(), row.types);
    EXPECT_EQ(operation->presentationString(), row.presentation);
    EXPECT_EQ(set_.opCodeForOperation(operation.get()), row.code);
  }
}

TEST_F(Catalogue, IsNamedAndNumbered) {
  EXPECT_EQ(set_.implementationCode(), "lm4");
  EXPECT_EQ(set_.implementationVersion(), "2.5");
  EXPECT_EQ(set_.serviceIdentifierForHelper(), VANTRELL_VENDOR_DOMAIN_PREFIX ".system.privilegedtool-lm4");
  EXPECT_EQ(set_.fileNameForHelper(), "Vantrell-PrivilegedTool");
  EXPECT_EQ(set_.nameOfImplementationClass(), "QELPrivilegedOperationSetImplementorLm4");
}

TEST_F(Catalogue, RightNamesDeriveFromIdentifiers) {
  EXPECT_EQ(set_.authorizationRightNameForOperationWithIdentifier("delete-fileobjects"),
            VANTRELL_VENDOR_DOMAIN_PREFIX ".lm4.delete-fileobjects");
  EXPECT_EQ(set_.authorizationRightNameForOperationWithIdentifier("no-such"), std::nullopt);
  EXPECT_EQ(set_.operationWithCode(3)->authorizationRightNameForImplementationIdentifier(""), std::nullopt);
}

TEST_F(Catalogue, SelectorsDeriveFromIdentifiers) {
  EXPECT_EQ(set_.selectorForExecutionOfPrivilegedOperationWithCode(3, true),
            "performOperationDeleteFileobjectsWithArguments:feedbackConnection:");
  EXPECT_EQ(set_.selectorForExecutionOfPrivilegedOperationWithCode(16, false),
            "performOperationModifyNvramWithArguments:");
  EXPECT_EQ(set_.selectorForExecutionOfPrivilegedOperationWithCode(23, false),
            "performOperationEnableIpvsixWithArguments:");
  EXPECT_EQ(set_.selectorForExecutionOfPrivilegedOperationWithCode(4711, false), std::nullopt);
}

TEST_F(Catalogue, SelectorsAreAllDifferent) {
  std::set<std::string> selectors;
  for (const auto& [code, identifier] : set_.opIdentifiersByCode()) {
    selectors.insert(*set_.selectorForExecutionOfPrivilegedOperationWithCode(code, false));
  }
  EXPECT_EQ(selectors.size(), set_.opIdentifiersByCode().size());
}

TEST_F(Catalogue, UnknownDescriptorsHaveNoCode) {
  EXPECT_EQ(set_.opCodeForOperation(nullptr), kAny);
  const auto stranger =
      QELPrivilegedOperation::initWithIdentifier("stranger", "allow", false, false, 0, std::nullopt, "be strange");
  ASSERT_TRUE(stranger);
  EXPECT_EQ(set_.opCodeForOperation(stranger.get()), kAny);
  EXPECT_EQ(set_.operationWithCode(9999), nullptr);
}

TEST_F(Catalogue, TheSharedInstanceIsOne) {
  EXPECT_EQ(&QELPrivilegedToolOperationSetLM4::privilegedOperationSet(log_),
            &QELPrivilegedToolOperationSetLM4::privilegedOperationSet(log_));
}

// A set made of rows of a test's own.
class RowsOperationSet : public QELPrivilegedToolOperationSet {
 public:
  RowsOperationSet(const StaticOperationDescription* rows, host::SystemLog& log) {
    implementationCode_ = "tst";
    enterOperations(rows, log);
  }
};

constexpr StaticOperationDescription kEnd{kEndOfCatalogueCode, nullptr, 0, 0, 0, nullptr, nullptr};

struct BadRow {
  std::string why;
  StaticOperationDescription row;
  bool isLogged;
};

class InconsistentRow : public testing::TestWithParam<BadRow> {};

TEST_P(InconsistentRow, IsLeftOut) {
  tests::RecordingLog log;
  const StaticOperationDescription rows[] = {
      {1, "before", 0, 0, 0, nullptr, "x"}, GetParam().row, {3, "after", 0, 0, 0, "", "x"}, kEnd};
  const RowsOperationSet set(rows, log);
  EXPECT_EQ(set.implementedOperations().size(), 2u);
  EXPECT_EQ(set.operationWithCode(2), nullptr);
  EXPECT_TRUE(set.operationWithCode(3));
  ASSERT_EQ(log.entries().size(), GetParam().isLogged ? 1u : 0u);
  if (GetParam().isLogged) {
    const auto entry = log.entries().front();
    EXPECT_EQ(entry.level, host::LogLevel::Error);
    EXPECT_EQ(entry.subsystem, "");
    EXPECT_EQ(
        entry.message,
        "QELPrivilegedOperation: implementation error - static description with code 2 contains inconsistent data "
        "and was not accepted.");
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, InconsistentRow,
    testing::Values(BadRow{"both feedback kinds", {2, "a", 0, 257, 0, nullptr, "x"}, true},
                    BadRow{"empty presentation", {2, "a", 0, 0, 0, nullptr, ""}, true},
                    BadRow{"empty identifier", {2, "", 0, 0, 0, nullptr, "x"}, true},
                    BadRow{"too few type codes", {2, "a", 0, 0, 2, "S", "x"}, true},
                    BadRow{"too many type codes", {2, "a", 0, 0, 1, "SS", "x"}, true},
                    BadRow{"missing type codes", {2, "a", 0, 0, 1, nullptr, "x"}, true},
                    BadRow{"variable count with type codes", {2, "a", 0, 0, kAny, "S", "x"}, true},
                    BadRow{"variable count with empty type codes", {2, "a", 0, 0, kAny, "", "x"}, true},
                    BadRow{"unknown policy", {2, "a", 3, 0, 0, nullptr, "x"}, false},
                    BadRow{"null identifier", {2, nullptr, 0, 0, 0, nullptr, "x"}, false},
                    BadRow{"null presentation", {2, "a", 0, 0, 0, nullptr, nullptr}, false}),
    [](const auto& info) {
      std::string name = info.param.why;
      std::replace(name.begin(), name.end(), ' ', '_');
      return name;
    });

TEST(CatalogueTable, TheFirstRowIsAlwaysProcessed) {
  tests::RecordingLog log;
  const StaticOperationDescription rows[] = {{kEndOfCatalogueCode, "first", 0, 0, 0, nullptr, "x"}, kEnd};
  EXPECT_TRUE(RowsOperationSet(rows, log).operationWithCode(kEndOfCatalogueCode));
}

TEST(CatalogueTable, TheFileNameIsTheServiceIdentifierByDefault) {
  tests::RecordingLog log;
  const StaticOperationDescription rows[] = {{1, "a", 2, 256, 0, nullptr, "x"}, kEnd};
  const RowsOperationSet set(rows, log);
  EXPECT_EQ(set.fileNameForHelper(), VANTRELL_VENDOR_DOMAIN_PREFIX ".system.privilegedtool-tst");
  EXPECT_EQ(set.nameOfImplementationClass(), "QELPrivilegedOperationSetImplementorTst");
  EXPECT_EQ(set.operationWithCode(1)->authenticationPolicy(), Value("authenticate-admin"));
  EXPECT_TRUE(set.operationWithCode(1)->isSupportingLiveOutput());
}

TEST(OperationDescriptor, AnEmptyRuleIsRefused) {
  EXPECT_FALSE(QELPrivilegedOperation::initWithIdentifier("a", "", false, false, 0, std::nullopt, "x"));
  EXPECT_FALSE(QELPrivilegedOperation::initWithIdentifier("a", Dictionary{}, false, false, 0, std::nullopt, "x"));
  EXPECT_FALSE(QELPrivilegedOperation::initWithIdentifier("a", 1, false, false, 0, std::nullopt, "x"));
}

TEST(OperationDescriptor, DigitsAreLostInTheSelectorForm) {
  const auto operation = QELPrivilegedOperation::initWithIdentifier("a-b2c", "allow", false, false, 0, "", "x");
  ASSERT_TRUE(operation);
  EXPECT_EQ(operation->operationIdentifierForExecutionSelector(), "ABc");
}

TEST(OperationDescriptor, EmptyComponentsVanishFromTheSelectorForm) {
  const auto operation = QELPrivilegedOperation::initWithIdentifier("-MIXED--case-", "allow", false, false, 0, "", "x");
  ASSERT_TRUE(operation);
  EXPECT_EQ(operation->operationIdentifierForExecutionSelector(), "MixedCase");
}

}  // namespace
}  // namespace vantrell
