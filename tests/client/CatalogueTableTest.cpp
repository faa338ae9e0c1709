// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/CatalogueTable.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

class CatalogueTable : public testing::Test {
 protected:
  static std::vector<std::string> linesOf(const std::ostringstream& stream) {
    std::vector<std::string> lines;
    std::istringstream input(stream.str());
    for (std::string line; std::getline(input, line);) lines.push_back(line);
    return lines;
  }

  tests::RecordingLog log_;
  QELPrivilegedToolOperationSetLM4 operations_{log_};
};

TEST_F(CatalogueTable, HasALineForEachOperationInTheOrderOfTheCodes) {
  std::ostringstream out;
  printCatalogueTable(out, operations_);
  const auto lines = linesOf(out);
  ASSERT_EQ(lines.size(), 1 + operations_.opIdentifiersByCode().size());
  EXPECT_EQ(lines[0], "Code  Identifier             Rule     Feedback  Arguments  Presentation");
  EXPECT_EQ(lines[1],
            "   0  modify-systemfile      default  -         SDN        modify a file owned by the operating system");
  EXPECT_EQ(
      lines[4],
      "   3  delete-fileobjects     default  progress  S...       delete file system objects independent of their "
      "permission settings");
  EXPECT_EQ(lines[23],
            "  22  execute-utility        default  output    S...       run a utility program of the operating system");
  EXPECT_EQ(lines.back(),
            "9998  nop                    allow    -         -          perform an empty operation to contact its "
            "privileged component");
}

TEST_F(CatalogueTable, IsAlignedInEveryLine) {
  std::ostringstream out;
  printCatalogueTable(out, operations_);
  const auto lines = linesOf(out);
  const auto presentation = lines[0].find("Presentation");
  for (const auto& line : lines) {
    EXPECT_EQ(line[presentation - 1], ' ') << line;
    EXPECT_NE(line[presentation], ' ') << line;
    EXPECT_NE(line.back(), ' ') << line;
  }
}

TEST_F(CatalogueTable, IsOneJsonObjectALineOnRequest) {
  std::ostringstream out;
  printCatalogueJson(out, operations_);
  const auto lines = linesOf(out);
  ASSERT_EQ(lines.size(), operations_.opIdentifiersByCode().size());
  EXPECT_EQ(lines[3],
            R"({"code":3,"identifier":"delete-fileobjects","rule":"default","feedback":"progress","arguments":null,)"
            R"("presentation":"delete file system objects independent of their permission settings"})");
  const auto last = Json::parse(lines.back());
  EXPECT_EQ(last["identifier"], "nop");
  EXPECT_EQ(last["rule"], "allow");
  EXPECT_TRUE(last["feedback"].is_null());
  EXPECT_EQ(last["arguments"], "");
}

TEST(RuleName, IsTheTextOrTheNamedRule) {
  const auto named = [](Value rule) {
    return ruleName(
        *QELPrivilegedOperation::initWithIdentifier("x", std::move(rule), false, false, 0, std::nullopt, "x"));
  };
  EXPECT_EQ(named("authenticate-admin"), "authenticate-admin");
  EXPECT_EQ(named(Dictionary{{"rule", "default"}}), "default");
  EXPECT_EQ(named(Dictionary{{"class", "user"}}), "");
}

}  // namespace
}  // namespace vantrell
