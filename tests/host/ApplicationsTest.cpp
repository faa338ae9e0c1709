// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/ApplicationsContract.h"
#include "tests/support/FakeApplications.h"

namespace vantrell::tests {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

constexpr char kIdentifier[] = "org.example.Editor";

class FakeCandidate final : public ApplicationsCandidate {
 public:
  host::Applications& applications() override { return applications_; }
  std::string addApplication(const std::string& name, const std::string& identifier) override {
    applications_.addApplication("/" + name, identifier);
    return "/" + name;
  }
  void setLastUsedDate(const std::string& path, const Date& date) override {
    applications_.setLastUsedDate(path, date);
  }

 private:
  FakeApplications applications_;
};

INSTANTIATE_TEST_SUITE_P(Fake, ApplicationsContract,
                         testing::Values(ApplicationsImplementation{"Fake",
                                                                    [] { return std::make_unique<FakeCandidate>(); }}),
                         ApplicationsContract::nameOf);

}  // namespace

TEST_P(ApplicationsContract, FindsEveryApplicationWithTheIdentifier) {
  const auto one = candidate->addApplication("One.app", kIdentifier);
  const auto two = candidate->addApplication("Two.app", kIdentifier);
  candidate->addApplication("Three.app", "org.example.Editor2");
  EXPECT_THAT(find(kIdentifier), UnorderedElementsAre(one, two));
}

TEST_P(ApplicationsContract, TakesUpperAndLowerCaseForTheSame) {
  const auto path = candidate->addApplication("One.app", "ORG.example.editor");
  EXPECT_THAT(find(kIdentifier), ElementsAre(path));
}

TEST_P(ApplicationsContract, FindsNothingForAnUnknownOrEmptyIdentifier) {
  candidate->addApplication("One.app", "");
  EXPECT_THAT(find(kIdentifier), IsEmpty());
  EXPECT_THAT(find(""), IsEmpty());
}

TEST_P(ApplicationsContract, KnowsWhenAnItemWasLastUsed) {
  const auto path = candidate->addApplication("One.app", kIdentifier);
  EXPECT_EQ(lastUsed(path), std::nullopt);
  for (const Date& date : {Date{1'619'404'192, 219'219'475}, Date{-1, 999'999'999}, Date{0, 0}}) {
    candidate->setLastUsedDate(path, date);
    EXPECT_EQ(lastUsed(path), date);
  }
  EXPECT_EQ(lastUsed(path + "/missing"), std::nullopt);
}

}  // namespace vantrell::tests
