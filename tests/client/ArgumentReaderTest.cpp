// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/ArgumentReader.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

class ArgumentReader : public testing::Test {
 protected:
  std::expected<Array, std::string> read(std::optional<std::string> types, const Words& words) {
    const auto count = types ? types->size() : kVariableArgumentCount;
    const auto operation =
        QELPrivilegedOperation::initWithIdentifier("test-operation", "allow", false, false, count, types, "test");
    return readArguments(*operation, words, fileSystem_);
  }
  std::string complaint(std::optional<std::string> types, const Words& words) {
    const auto result = read(std::move(types), words);
    return result ? "none" : result.error();
  }

  host::LinuxFileSystem fileSystem_;
};

TEST_F(ArgumentReader, TakesTextAsItStands) {
  EXPECT_EQ(read("SSSS", {"", " a b ", "0x1F", "@file"}), (Array{"", " a b ", "0x1F", "@file"}));
}

TEST_F(ArgumentReader, TakesAnyNumberOfWordsForAVariableCount) {
  EXPECT_EQ(read(std::nullopt, {}), Array());
  EXPECT_EQ(read(std::nullopt, {"1", "-x", "hex:00"}), (Array{"1", "-x", "hex:00"}));
}

TEST_F(ArgumentReader, RefusesTextThatIsNotUtf8) {
  EXPECT_THAT(complaint("S", {"\xFF"}), HasSubstr("UTF-8"));
  EXPECT_THAT(complaint(std::nullopt, {"ok", "\xC3"}), HasSubstr("argument 2"));
}

TEST_F(ArgumentReader, SaysHowManyArgumentsThereShouldBe) {
  EXPECT_EQ(complaint("SN", {"a"}), "test-operation takes 2 arguments, not 1");
  EXPECT_EQ(complaint("S", {"a", "b"}), "test-operation takes 1 argument, not 2");
  EXPECT_EQ(complaint("", {"a"}), "test-operation takes 0 arguments, not 1");
}

TEST_F(ArgumentReader, NamesTheArgumentThatIsWrong) {
  EXPECT_EQ(complaint("SN", {"a", "b"}), "argument 2 of test-operation: \"b\" is not a number");
}

TEST_F(ArgumentReader, ReadsHexadecimalData) {
  EXPECT_EQ(read("DD", {"hex:", "hex:00fFA0"}), (Array{Data(), Data{0x00, 0xFF, 0xA0}}));
  EXPECT_THAT(complaint("D", {"hex:0"}), HasSubstr("odd"));
  EXPECT_THAT(complaint("D", {"hex:0g"}), HasSubstr("\"0g\""));
  EXPECT_THAT(complaint("D", {"hex:-1"}), HasSubstr("\"-1\""));
  EXPECT_THAT(complaint("D", {"0011"}), HasSubstr("@FILE"));
}

TEST_F(ArgumentReader, ReadsDataFromAFile) {
  const tests::TemporaryFolder folder;
  const std::string content("a\0b\n", 4);
  EXPECT_EQ(read("D", {"@" + folder.makeFile("data", content)}), (Array{Data(content.begin(), content.end())}));
  EXPECT_EQ(read("D", {"@" + folder.makeFile("empty", "")}), Array{Data()});
}

TEST_F(ArgumentReader, SaysWhyAFileCantBeRead) {
  const tests::TemporaryFolder folder;
  EXPECT_THAT(complaint("D", {"@" + folder.path("missing")}), HasSubstr("No such file or directory"));
  EXPECT_THAT(complaint("D", {"@" + folder.path()}), HasSubstr("can't be read"));
  EXPECT_THAT(complaint("D", {"@"}), HasSubstr("can't be read"));
  const auto large = folder.makeFile("large");
  std::filesystem::resize_file(large, kLongestDataArgument + 1);
  EXPECT_THAT(complaint("D", {"@" + large}), HasSubstr("File too large"));
}

struct NumberRow {
  const char* word;
  std::optional<Number> number;
  Number::Kind kind = Number::Kind::Signed;
};

class NumberWord : public testing::TestWithParam<NumberRow> {};

TEST_P(NumberWord, IsReadWhole) {
  const auto& row = GetParam();
  const auto number = numberFromWord(row.word);
  EXPECT_EQ(number, row.number);
  if (number && row.number) {
    EXPECT_EQ(number->kind(), row.kind);
  }
}

using Kind = Number::Kind;
INSTANTIATE_TEST_SUITE_P(
    Rows, NumberWord,
    testing::Values(NumberRow{"0", 0}, NumberRow{"007", 7}, NumberRow{"-12", -12},
                    NumberRow{"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
                    NumberRow{"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
                    NumberRow{"9223372036854775808", std::uint64_t{1} << 63, Kind::Unsigned},
                    NumberRow{"18446744073709551615", ~std::uint64_t{0}, Kind::Unsigned},
                    NumberRow{"18446744073709551616", std::nullopt}, NumberRow{"-9223372036854775809", std::nullopt},
                    NumberRow{"0x1F", 0x1FU, Kind::Unsigned}, NumberRow{"0Xff", 0xFFU, Kind::Unsigned},
                    NumberRow{"0x", std::nullopt}, NumberRow{"0x-1", std::nullopt}, NumberRow{"-0x1", std::nullopt},
                    NumberRow{"0x10000000000000000", std::nullopt}, NumberRow{"1.5", 1.5, Kind::Real},
                    NumberRow{"-.25", -0.25, Kind::Real}, NumberRow{"2.", 2.0, Kind::Real},
                    NumberRow{"1.5e3", 1500.0, Kind::Real}, NumberRow{"1.0e999", std::nullopt},
                    NumberRow{".", std::nullopt}, NumberRow{"1e3", std::nullopt}, NumberRow{"nan", std::nullopt},
                    NumberRow{"", std::nullopt}, NumberRow{"+1", std::nullopt}, NumberRow{" 1", std::nullopt},
                    NumberRow{"1 ", std::nullopt}, NumberRow{"1.5x", std::nullopt}, NumberRow{"true", std::nullopt}));

}  // namespace
}  // namespace vantrell
