// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "foundation/Value.h"

namespace vantrell {
namespace {

using Set = QELPrivilegedToolOperationSet;

Error localized(const Error& error, const StringTable& table = {}) {
  return Set::localizedErrorForPrivilegedOperationError(error, table).value();
}

TEST(Localization, ParametersReplaceTheirPlaceholders) {
  EXPECT_EQ(Set::localizedStringForTemplate("$1$ of $2$", {"a", "b"}), "a of b");
}

TEST(Localization, PlaceholdersWithoutAParameterStay) {
  EXPECT_EQ(Set::localizedStringForTemplate("$1$ of $2$", {"a"}), "a of $2$");
}

TEST(Localization, EveryOccurrenceIsReplaced) {
  EXPECT_EQ(Set::localizedStringForTemplate("$1$ and $1$", {"x"}), "x and x");
}

TEST(Localization, AParameterThatIsALaterPlaceholderIsReplacedToo) {
  EXPECT_EQ(Set::localizedStringForTemplate("$1$ of $2$", {"$2$", "b"}), "b of b");
}

TEST(Localization, AParameterThatIsItsOwnPlaceholderEnds) {
  EXPECT_EQ(Set::localizedStringForTemplate("$1$", {"<$1$>"}), "<$1$>");
}

TEST(Localization, AnEarlierPlaceholderInALaterParameterStays) {
  EXPECT_EQ(Set::localizedStringForTemplate("$1$ of $2$", {"a", "$1$"}), "a of $1$");
}

TEST(Localization, TenParametersAreToldApart) {
  EXPECT_EQ(Set::localizedStringForTemplate("$10$ $1$", {"a", "", "", "", "", "", "", "", "", "j"}), "j a");
}

TEST(Localization, TheTemplateIsLookedUpBeforeItIsFilledIn) {
  const StringTable german = [](const std::string& english) {
    return english == "$1$ of $2$" ? "$1$ von $2$" : english;
  };
  EXPECT_EQ(Set::localizedStringForTemplate("$1$ of $2$", {"a", "b"}, german), "a von b");
}

TEST(Localization, NoErrorStaysNoError) {
  EXPECT_EQ(Set::localizedErrorForPrivilegedOperationError(std::nullopt), std::nullopt);
}

TEST(Localization, AnErrorWithoutUserInfoIsUnchanged) {
  EXPECT_EQ(localized(Error::posix(22)), Error::posix(22));
  EXPECT_FALSE(localized(Error::posix(22)).hasUserInfo());
}

TEST(Localization, PlainTextsAreTranslated) {
  const StringTable table = [](const std::string& english) { return "<" + english + ">"; };
  const auto error =
      localized(Error("d", 1, {{"NSLocalizedDescription", "plain"}, {"NSLocalizedRecoverySuggestion", "do"}}), table);
  EXPECT_EQ(error.domain(), "d");
  EXPECT_EQ(error.code(), 1);
  EXPECT_EQ(*error.userInfo().find("NSLocalizedDescription"), Value("<plain>"));
  EXPECT_EQ(*error.userInfo().find("NSLocalizedRecoverySuggestion"), Value("<do>"));
}

TEST(Localization, TemplatesBecomePlainTextsAndStay) {
  const Dictionary userInfo{{"QELLocalizedDescriptionTemplate", "no $1$"},
                            {"QELLocalizedDescriptionParameters", Array{"file"}},
                            {"QELLocalizedRecoverySuggestionTemplate", "see $1$"},
                            {"QELLocalizedRecoverySuggestionParameters", Array{"disk"}}};
  Dictionary expected = userInfo;
  expected.set("NSLocalizedDescription", "no file");
  expected.set("NSLocalizedRecoverySuggestion", "see disk");
  EXPECT_EQ(localized(Error("d", 1, userInfo)).userInfo(), expected);
}

TEST(Localization, APlainDescriptionWinsOverATemplate) {
  const auto error = localized(Error("d", 1,
                                     {{"NSLocalizedDescription", "plain"},
                                      {"QELLocalizedDescriptionTemplate", "no $1$"},
                                      {"QELLocalizedDescriptionParameters", Array{"file"}}}));
  EXPECT_EQ(*error.userInfo().find("NSLocalizedDescription"), Value("plain"));
}

TEST(Localization, AnEmptyPlainDescriptionGivesWayToTheTemplate) {
  const auto error = localized(Error("d", 1,
                                     {{"NSLocalizedDescription", ""},
                                      {"QELLocalizedDescriptionTemplate", "no $1$"},
                                      {"QELLocalizedDescriptionParameters", Array{"file"}}}));
  EXPECT_EQ(*error.userInfo().find("NSLocalizedDescription"), Value("no file"));
}

TEST(Localization, ATemplateWithAnEmptyParameterArrayGivesNoDescription) {
  const auto error = localized(
      Error("d", 1, {{"QELLocalizedDescriptionTemplate", "text"}, {"QELLocalizedDescriptionParameters", Array{}}}));
  EXPECT_EQ(error.userInfo().find("NSLocalizedDescription"), nullptr);
}

TEST(Localization, UnderlyingErrorsAreLocalizedAtEveryDepth) {
  const auto templated = [](Dictionary more) {
    more.set("QELLocalizedDescriptionTemplate", "no $1$");
    more.set("QELLocalizedDescriptionParameters", Array{"file"});
    return Error("d", 1, more);
  };
  const auto error = localized(templated({{"NSUnderlyingError", templated({{"NSUnderlyingError", templated({})}})}}));
  const auto* middle = error.userInfo().find("NSUnderlyingError")->asError();
  ASSERT_TRUE(middle);
  const auto* deepest = middle->userInfo().find("NSUnderlyingError")->asError();
  ASSERT_TRUE(deepest);
  for (const auto* each : {&error, middle, deepest}) {
    EXPECT_EQ(*each->userInfo().find("NSLocalizedDescription"), Value("no file"));
  }
}

TEST(Localization, TablesHaveTheirNames) {
  EXPECT_EQ(Set::nameOfAuthorizationRightLocalizationTable(), "PrivilegedOperations");
  EXPECT_EQ(Set::nameOfErrorMessageLocalizationTable(), "PrivilegedOperationErrors");
  EXPECT_EQ(Set::errorDomain(), VANTRELL_VENDOR_DOMAIN_PREFIX ".error.privileged-operation");
}

}  // namespace
}  // namespace vantrell
