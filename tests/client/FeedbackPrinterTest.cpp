// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <sstream>

#include <gtest/gtest.h>

#include "client/FeedbackPrinter.h"
#include "tests/client/FakeTerminal.h"

namespace vantrell {
namespace {

Dictionary hit(std::string path, const char* type = "NSFileTypeRegular", std::uint32_t mode = 0644) {
  return {{"Path", std::move(path)},
          {"Type", type},
          {"Size", std::uint64_t{1234}},
          {"ModificationDate", Date{1'772'366'400, 250'000'000}},
          {"Mode", mode}};
}

Dictionary chunk(const char* key, std::string_view text, std::uint64_t number) {
  const auto bytes = bytesOf(text);
  return {{key, Data(bytes.begin(), bytes.end())}, {"SequenceNumber", number}};
}

class FeedbackPrinterTest : public testing::Test {
 protected:
  FeedbackPrinter& printer(FeedbackPrinter::Options options = {}) {
    return printer_.emplace(out_, err_, terminal_, options);
  }

  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  std::ostringstream err_;
  std::optional<FeedbackPrinter> printer_;
};

TEST_F(FeedbackPrinterTest, PrintsALineForEachHit) {
  printer().print(
      {{"ProgressFraction", 0.0}, {"FileObjectInfo", Array{hit("/a b"), hit("/d", "NSFileTypeDirectory", 0755)}}});
  EXPECT_EQ(out_.str(),
            "-rw-r--r--         1234  2026-03-01T12:00:00Z  /a b\n"
            "drwxr-xr-x         1234  2026-03-01T12:00:00Z  /d\n");
  EXPECT_EQ(err_.str(), "");
}

TEST_F(FeedbackPrinterTest, ShowsTypesAndSpecialBitsLikeAListing) {
  printer().print({{"FileObjectInfo",
                    Array{hit("1", "NSFileTypeSymbolicLink", 0777), hit("2", "NSFileTypeSocket", 0),
                          hit("3", "NSFileTypeCharacterSpecial", 04711), hit("4", "NSFileTypeBlockSpecial", 02640),
                          hit("5", "NSFileTypeUnknown", 01777), hit("6", "?", 07000)}}});
  std::istringstream lines(out_.str());
  std::string modes;
  for (std::string line; std::getline(lines, line);) modes += line.substr(0, 11);
  EXPECT_EQ(modes, "lrwxrwxrwx s--------- crws--x--x brw-r-S--- ?rwxrwxrwt ?--S--S--T ");
}

TEST_F(FeedbackPrinterTest, PrintsWhatThereIsOfAnIncompleteHit) {
  printer().print({{"FileObjectInfo", Array{Dictionary{{"Path", "/x"}, {"Size", "large"}}, "no record"}}});
  EXPECT_EQ(out_.str(), "?---------            ?  ????????????????????  /x\n");
}

TEST_F(FeedbackPrinterTest, EscapesPathsOnATerminalOnly) {
  printer().print({{"FileObjectInfo", Array{hit("/a\x1b[2J\nb")}}});
  EXPECT_TRUE(out_.str().ends_with("  /a\x1b[2J\nb\n"));
  terminal_.output = true;
  printer().print({{"FileObjectInfo", Array{hit("/a\x1b[2J\nb")}}});
  EXPECT_TRUE(out_.str().ends_with("  /a\\x1b[2J\\nb\n"));
}

TEST_F(FeedbackPrinterTest, PutsChildOutputOnItsStreamsInSequence) {
  auto& feedback = printer();
  feedback.print({{"OutputData", Data()}, {"ErrorData", Data()}});
  feedback.print(chunk("OutputData", "one ", 0));
  feedback.print(chunk("OutputData", "three", 2));
  EXPECT_EQ(out_.str(), "one ");
  feedback.print(chunk("ErrorData", "two", 1));
  EXPECT_EQ(out_.str(), "one three");
  EXPECT_EQ(err_.str(), "two");
}

TEST_F(FeedbackPrinterTest, PrintsAtTheEndWhatStillWaitsForItsTurn) {
  auto& feedback = printer();
  feedback.print(chunk("OutputData", "late", 7));
  EXPECT_EQ(out_.str(), "");
  feedback.finish();
  EXPECT_EQ(out_.str(), "late");
}

TEST_F(FeedbackPrinterTest, PassesBytesThroughUnchanged) {
  const std::string bytes("\xFF\0\x1b\n", 4);
  printer().print(chunk("OutputData", bytes, 0));
  EXPECT_EQ(out_.str(), bytes);
}

TEST_F(FeedbackPrinterTest, DrawsNoBarUnlessStandardErrorIsATerminal) {
  printer().print({{"ProgressFraction", 0.5}});
  EXPECT_EQ(err_.str(), "");
  terminal_.error = true;
  printer({.progress = false}).print({{"ProgressFraction", 0.5}});
  EXPECT_EQ(err_.str(), "");
  printer({.json = true}).print({{"ProgressFraction", 0.5}});
  EXPECT_EQ(err_.str(), "");
}

TEST_F(FeedbackPrinterTest, KeepsTheBarBelowTheHits) {
  terminal_.error = true;
  terminal_.width = 19;
  auto& feedback = printer();
  feedback.print({{"ProgressFraction", 0.0}});
  feedback.print({{"ProgressFraction", 0.0}, {"FileObjectInfo", Array{hit("/x")}}});
  feedback.print({{"ProgressFraction", 1.0}, {"FileObjectInfo", Array{}}});
  feedback.print({{"FinalFeedbackMessage", true}});
  feedback.finish();
  const std::string clear = "\r\x1b[K";
  const std::string empty = clear + "[----------]   0 %";
  EXPECT_EQ(err_.str(), empty + clear + empty + clear + "[##########] 100 %" + clear);
}

TEST_F(FeedbackPrinterTest, PrintsEachMessageAsItIsWithJson) {
  auto& feedback = printer({.json = true});
  feedback.print({{"ProgressFraction", 0.0}});
  feedback.print(chunk("ErrorData", "a", 1));
  feedback.print({{"FileObjectInfo", Array{hit("/a\nb")}}});
  feedback.print({{"FinalFeedbackMessage", true}});
  EXPECT_EQ(out_.str(),
            "{\"ProgressFraction\":0.0}\n"
            "{\"ErrorData\":\"YQ==\",\"SequenceNumber\":1}\n"
            "{\"FileObjectInfo\":[{\"Mode\":420,\"ModificationDate\":\"2026-03-01T12:00:00.25Z\",\"Path\":\"/a\\nb\","
            "\"Size\":1234,\"Type\":\"NSFileTypeRegular\"}]}\n"
            "{\"FinalFeedbackMessage\":true}\n");
  EXPECT_EQ(err_.str(), "");
}

TEST_F(FeedbackPrinterTest, IgnoresMessagesOfOtherForms) {
  auto& feedback = printer();
  feedback.print({});
  feedback.print({{"FileObjectInfo", "text"}, {"OutputData", 5}, {"ProgressFraction", "half"}});
  EXPECT_EQ(out_.str() + err_.str(), "");
}

TEST_F(FeedbackPrinterTest, NoticesThatNobodyReadsAnyLonger) {
  auto& feedback = printer();
  feedback.print({{"FileObjectInfo", Array{hit("/x")}}});
  EXPECT_FALSE(feedback.hasFailed());
  out_.setstate(std::ios::badbit);
  feedback.print({{"FileObjectInfo", Array{hit("/x")}}});
  EXPECT_TRUE(feedback.hasFailed());
}

}  // namespace
}  // namespace vantrell
