// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/Base64.h"

namespace vantrell {
namespace {

Data bytes(std::string_view text) {
  return {text.begin(), text.end()};
}

// The vectors of RFC 4648, section 10.
TEST(Base64, AgreesWithTheStandardsVectors) {
  const std::pair<std::string_view, std::string_view> vectors[] = {{"", ""},
                                                                   {"f", "Zg=="},
                                                                   {"fo", "Zm8="},
                                                                   {"foo", "Zm9v"},
                                                                   {"foob", "Zm9vYg=="},
                                                                   {"fooba", "Zm9vYmE="},
                                                                   {"foobar", "Zm9vYmFy"}};
  for (const auto& [plain, encoded] : vectors) {
    EXPECT_EQ(base64FromData(bytesOf(plain)), encoded);
    EXPECT_EQ(dataFromBase64(encoded), bytes(plain));
  }
}

TEST(Base64, EveryByteSurvives) {
  Data all;
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(dataFromBase64(base64FromData(all)), all);
    all.push_back(static_cast<std::uint8_t>(byte));
  }
}

TEST(Base64, WhiteSpaceCountsForNothing) {
  EXPECT_EQ(dataFromBase64("\n\tZm9v\r\n\tYg = =\n"), bytes("foob"));
}

TEST(Base64, RefusesWhatIsMalformed) {
  for (const std::string_view text :
       {"Z", "Zg", "Zg=", "Zm9", "Zg===", "=", "====", "Zg==Zg==", "Zm9v=", "Z===", "Zm9v!", "Zm-v"}) {
    EXPECT_EQ(dataFromBase64(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace vantrell
