// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gmock/gmock.h>

#include "host/linux/HandshakeServer.h"
#include "tests/host/FeedbackWireFixture.h"

// What a client makes of the bytes that come to its feedback endpoint, whoever sends them.

namespace vantrell::tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FeedbackReceiverTest : public testing::Test {
 protected:
  void SetUp() override {
    feed(receiver_, kHandshake);
    EXPECT_FALSE(receiver_.next());
    EXPECT_EQ(receiver_.takeAnswers(), "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
  }
  // True where the connection breaks at these bytes.
  static bool breaks(std::string_view bytes) {
    host::FeedbackReceiver receiver(kIdentifier);
    feed(receiver, kHandshake);
    feed(receiver, bytes);
    EXPECT_FALSE(receiver.next());
    return receiver.isBroken();
  }
  // True where a message with that body is passed over, with a D-Bus error for who wants it, and the next is read.
  static bool isPassedOver(std::string_view body) {
    host::FeedbackReceiver receiver(kIdentifier);
    feed(receiver, kHandshake);
    feed(receiver, handMadeMessage({.flags = 0}, body));
    feed(receiver, bytesOfCall({{"next", 1}}));
    const auto messages = allMessages(receiver);
    return messages.size() == 1 && messages[0].contains("next") &&
           receiver.takeAnswers().contains("org.freedesktop.DBus.Error.InvalidArgs");
  }

  host::FeedbackReceiver receiver_{kIdentifier};
};

TEST_F(FeedbackReceiverTest, ReadsEveryKindOfValueThatIsWritten) {
  feed(receiver_, bytesOfCall(everyKind()));
  EXPECT_THAT(allMessages(receiver_), ElementsAre(everyKind()));
  EXPECT_EQ(receiver_.takeAnswers(), "");
}

TEST_F(FeedbackReceiverTest, ReadsMessagesInWhateverPiecesTheyArrive) {
  const std::string bytes = bytesOfCall({{"first", 1}}) + bytesOfCall({{"second", Data(9)}}) + bytesOfCall({});
  std::vector<Dictionary> messages;
  for (const char byte : bytes) {
    feed(receiver_, {&byte, 1});
    for (Dictionary& message : allMessages(receiver_)) messages.push_back(std::move(message));
  }
  EXPECT_THAT(messages, ElementsAre(Dictionary{{"first", 1}}, Dictionary{{"second", Data(9)}}, Dictionary{}));
}

TEST_F(FeedbackReceiverTest, ReadsMessagesLargerThanItsUsualSpaceAndManyBehindThem) {
  const Dictionary large{{"OutputData", Data(3'000'000, 7)}};
  std::string bytes = bytesOfCall(large);
  for (int i = 0; i < 5000; ++i) bytes += bytesOfCall({{"SequenceNumber", i}});
  std::size_t count = 0;
  for (std::size_t at = 0; at < bytes.size(); at += 10007) {
    feed(receiver_, std::string_view(bytes).substr(at, 10007));
    for (const Dictionary& message : allMessages(receiver_)) {
      if (count == 0) {
        EXPECT_EQ(message, large);
      } else {
        EXPECT_EQ(message, (Dictionary{{"SequenceNumber", static_cast<int>(count - 1)}}));
      }
      ++count;
    }
  }
  EXPECT_EQ(count, 5001U);
}

TEST_F(FeedbackReceiverTest, ReadsNumbersOfEveryWidthInBothByteOrders) {
  for (const bool isBigEndian : {false, true}) {
    const auto bytes = [&](auto value) { return HandMade(isBigEndian).number(value).bytes(); };
    const auto read = [&](std::string_view signature, const std::string& value) {
      feed(receiver_,
           handMadeMessage({.isBigEndian = isBigEndian}, bodyHolding(signature, value.size(), value, isBigEndian)));
      const auto messages = allMessages(receiver_);
      return messages.size() == 1 ? *messages[0].find("n") : Value();
    };
    EXPECT_EQ(read("y", bytes(std::uint8_t{255})), Value(255));
    EXPECT_EQ(read("n", bytes(std::int16_t{-2})), Value(-2));
    EXPECT_EQ(read("q", bytes(std::uint16_t{65535})), Value(65535));
    EXPECT_EQ(read("i", bytes(std::int32_t{-4})), Value(-4));
    EXPECT_EQ(read("u", bytes(4000000000U)), Value(4000000000U));
    EXPECT_EQ(read("x", bytes(std::int64_t{-6})), Value(-6));
    EXPECT_EQ(read("t", bytes(std::uint64_t{7})), Value(7));
    EXPECT_EQ(read("d", bytes(-0.25)), Value(-0.25));
    EXPECT_EQ(read("b", bytes(std::uint32_t{1})), Value(true));
  }
}

TEST_F(FeedbackReceiverTest, TakesACallWithoutInterfaceAndUnknownFieldsAndOtherMessages) {
  const std::string body = bodyHolding("y", 1, "\7");
  feed(receiver_, handMadeMessage({.interface = ""}, body));
  feed(receiver_, handMadeMessage({.furtherFields = HandMade().field(77, "s", "new").bytes()}, body));
  feed(receiver_, handMadeMessage({.type = 4}, body));  // a signal
  feed(receiver_, handMadeMessage({.type = 9}, body));  // of a type to come
  EXPECT_THAT(allMessages(receiver_), ElementsAre(Dictionary{{"n", 7}}, Dictionary{{"n", 7}}));
  EXPECT_FALSE(receiver_.isBroken());
}

TEST_F(FeedbackReceiverTest, AnswersWhatIsNoFeedbackOnlyWhereAnAnswerIsAskedFor) {
  const auto answerTo = [&](HandMadeHeader header) {
    header.flags = 0;
    feed(receiver_, handMadeMessage(header, bodyHolding("y", 1, "\7")));
    EXPECT_THAT(allMessages(receiver_), IsEmpty());
    return receiver_.takeAnswers();
  };
  EXPECT_THAT(answerTo({.path = "/elsewhere"}), HasSubstr("org.freedesktop.DBus.Error.UnknownObject"));
  EXPECT_THAT(answerTo({.interface = "com.vantrell.Other"}), HasSubstr("org.freedesktop.DBus.Error.UnknownInterface"));
  EXPECT_THAT(answerTo({.member = "other"}), HasSubstr("org.freedesktop.DBus.Error.UnknownMethod"));
  EXPECT_THAT(answerTo({.signature = "a{ss}"}), HasSubstr("org.freedesktop.DBus.Error.InvalidArgs"));
  EXPECT_THAT(answerTo({.signature = ""}), HasSubstr("org.freedesktop.DBus.Error.InvalidArgs"));
  feed(receiver_, handMadeMessage({.member = "other"}, ""));
  EXPECT_THAT(allMessages(receiver_), IsEmpty());
  EXPECT_EQ(receiver_.takeAnswers(), "");
}

TEST_F(FeedbackReceiverTest, BreaksAtBytesThatAreNoMessage) {
  const std::string body = bodyHolding("y", 1, "\7");
  EXPECT_FALSE(breaks(""));
  EXPECT_TRUE(breaks(std::string(64, '\xA5')));
  EXPECT_TRUE(breaks("m" + handMadeMessage({}, body).substr(1)));
  EXPECT_TRUE(breaks(handMadeMessage({.type = 0}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.version = 2}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.serial = 0}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.bodyBytes = 128U << 20}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.bodyBytes = 0xFFFFFFFFU}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.fieldBytes = (64U << 20) + 1}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.fieldBytes = 0xFFFFFFFFU}, body)));
  EXPECT_TRUE(breaks(handMadeMessage({.fieldBytes = 3}, body)));
}

TEST_F(FeedbackReceiverTest, BreaksAtMalformedFields) {
  const auto withField = [](const std::string& field) { return handMadeMessage({.furtherFields = field}, ""); };
  EXPECT_TRUE(breaks(handMadeMessage({.path = ""}, "")));
  EXPECT_TRUE(breaks(handMadeMessage({.member = ""}, "")));
  EXPECT_TRUE(breaks(withField(HandMade().field(1, "o", "/twice").bytes())));
  EXPECT_TRUE(breaks(withField(HandMade().field(6, "o", "/not/text").bytes())));
  EXPECT_TRUE(breaks(withField(HandMade().field(0, "s", "none").bytes())));
  EXPECT_TRUE(breaks(withField(HandMade().field(7, "s", "\xFF").bytes())));
  EXPECT_TRUE(breaks(withField(HandMade().field(77, "as", "").bytes())));
  EXPECT_TRUE(
      breaks(withField(HandMade().number(std::uint8_t{6}).signature("s").align(4).raw("\xFF\xFF\xFF\x7F").bytes())));
  EXPECT_TRUE(breaks(handMadeMessage({.type = 3}, "")));  // an error without a name
  std::string padded = handMadeMessage({}, "");
  ASSERT_EQ(padded[padded.size() - 1], '\0');
  padded[padded.size() - 1] = '\1';
  EXPECT_TRUE(breaks(padded));
}

TEST_F(FeedbackReceiverTest, PassesOverMessagesWithMalformedBodies) {
  const auto text = [](std::string_view value) { return HandMade().text(value).bytes(); };
  EXPECT_FALSE(isPassedOver(bodyHolding("s", 4, text("sound"))));
  EXPECT_TRUE(isPassedOver(""));
  EXPECT_TRUE(isPassedOver(std::string("\0\0\0\0", 4)));               // no padding to the first element
  EXPECT_TRUE(isPassedOver(std::string("\0\0\0\0\0\0\0\0more", 12)));  // behind the end
  EXPECT_TRUE(isPassedOver(std::string("\0\0\0\0\0\0\0\1", 8)));       // padding that is none
  EXPECT_TRUE(isPassedOver(std::string("\4\0\0\0\0\0\0\0", 8)));       // longer than what there is
  EXPECT_TRUE(isPassedOver(std::string("\xFF\xFF\xFF\xFF\0\0\0\0", 8)));
  EXPECT_TRUE(isPassedOver(bodyHolding("s", 4, text("a\0b"s))));
  EXPECT_TRUE(isPassedOver(bodyHolding("s", 4, text("\xC0\x80"))));
  EXPECT_TRUE(isPassedOver(bodyHolding("s", 4, text("\xED\xA0\x80"))));
  EXPECT_TRUE(isPassedOver(bodyHolding("s", 4, HandMade().number(3U).raw("abcd").bytes())));  // no zero byte
  EXPECT_TRUE(isPassedOver(bodyHolding("s", 4, HandMade().number(0xFFFFFFFFU).raw("abc").bytes())));
  EXPECT_TRUE(isPassedOver(bodyHolding("b", 4, HandMade().number(2U).bytes())));
  EXPECT_TRUE(isPassedOver(bodyHolding("x", 8, "1234")));
  EXPECT_TRUE(isPassedOver(bodyHolding("ay", 4, HandMade().number(100U).raw("abc").bytes())));
  EXPECT_TRUE(isPassedOver(bodyHolding("(xu)", 8, HandMade().number(std::int64_t{1}).number(1000000000U).bytes())));
  EXPECT_FALSE(isPassedOver(bodyHolding("(xu)", 8, HandMade().number(std::int64_t{1}).number(999999999U).bytes())));
  EXPECT_TRUE(isPassedOver(bodyHolding("aa{sv}", 4, HandMade().number(1U).raw("\0").bytes())));
  EXPECT_TRUE(isPassedOver(bodyHolding("av", 4, HandMade().number(1U).raw("\1").bytes())));
}

TEST_F(FeedbackReceiverTest, PassesOverMessagesWithValuesOfOtherTypes) {
  for (const char* signature :
       {"", "o", "g", "h", "v", "as", "(s)", "a{ss}", "a(sxa{sv})", "sv", "a", "(", "(xu", "z"}) {
    EXPECT_TRUE(isPassedOver(bodyHolding(signature, 8, std::string(64, '\0')))) << signature;
  }
}

TEST_F(FeedbackReceiverTest, PassesOverMessagesThatAreNestedTooDeeplyOrHoldTooMuch) {
  const auto arrays = [](int levels) {
    std::string value = HandMade().number(0U).bytes();
    // From the innermost outward; each begins at a multiple of 4, since what stands before it takes 4 bytes.
    for (int i = 1; i < levels; ++i) {
      const auto size = static_cast<std::uint32_t>(value.size() + 4);
      value = HandMade().number(size).signature("av").bytes() + value;
    }
    return value;
  };
  EXPECT_FALSE(isPassedOver(bodyHolding("av", 4, arrays(host::kMaximumValueDepth))));
  EXPECT_TRUE(isPassedOver(bodyHolding("av", 4, arrays(host::kMaximumValueDepth + 1))));
  EXPECT_TRUE(isPassedOver(bodyHolding("av", 4, arrays(1000))));
  std::string many;
  for (std::size_t i = 0; i <= host::kMaximumValueCount; ++i) many += std::string_view("\1y\0\7", 4);
  const auto size = static_cast<std::uint32_t>(many.size());
  EXPECT_TRUE(isPassedOver(bodyHolding("av", 4, HandMade().number(size).raw(many).bytes())));
}

TEST_F(FeedbackReceiverTest, AMessageThatIsOnlyAnnouncedTakesNoSpace) {
  feed(receiver_, handMadeMessage({.bodyBytes = 100U << 20}, "part"));
  EXPECT_FALSE(receiver_.next());
  EXPECT_FALSE(receiver_.isBroken());
  EXPECT_LE(receiver_.room().size(), 1U << 20);
}

struct Handshake {
  const char* name;
  std::string asked;
  std::string answered;
  host::HandshakeServer::Outcome outcome;
  std::string left = {};
};

using Outcome = host::HandshakeServer::Outcome;

const Handshake kHandshakes[] = {
    {"EmptyIdentityLater", "\0AUTH EXTERNAL\r\nDATA\r\nBEGIN\r\n"s, "DATA\r\nOK id\r\n", Outcome::Done},
    {"IdentityAtOnce", "\0AUTH EXTERNAL 31303030\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\nl\1"s, "OK id\r\nAGREE_UNIX_FD\r\n",
     Outcome::Done, "l\1"},
    {"IdentityLater", "\0AUTH EXTERNAL\r\nDATA 30\r\nBEGIN\r\n"s, "DATA\r\nOK id\r\n", Outcome::Done},
    {"AsksForMechanisms", "\0AUTH\r\nAUTH ANONYMOUS\r\nAUTH EXTERNAL 30\r\nBEGIN\r\n"s,
     "REJECTED EXTERNAL\r\nREJECTED EXTERNAL\r\nOK id\r\n", Outcome::Done},
    {"Cancels", "\0AUTH EXTERNAL\r\nCANCEL\r\nAUTH EXTERNAL 30\r\nBEGIN\r\n"s, "DATA\r\nREJECTED EXTERNAL\r\nOK id\r\n",
     Outcome::Done},
    {"UnknownCommand", "\0HELO\r\nAUTH EXTERNAL 30\r\nBEGIN\r\n"s, "ERROR\r\nOK id\r\n", Outcome::Done},
    {"BadIdentity", "\0AUTH EXTERNAL 3\r\nAUTH EXTERNAL xy\r\n"s, "REJECTED EXTERNAL\r\nREJECTED EXTERNAL\r\n",
     Outcome::GoesOn},
    {"DataUnasked", "\0DATA\r\n"s, "ERROR\r\n", Outcome::GoesOn},
    {"DescriptorsTooEarly", "\0NEGOTIATE_UNIX_FD\r\n"s, "ERROR\r\n", Outcome::GoesOn},
    {"HalfALine", "\0AUTH EXT"s, "", Outcome::GoesOn, "AUTH EXT"},
    {"NoZeroByte", "AUTH EXTERNAL\r\n", "", Outcome::Broken},
    {"BeginsTooEarly", "\0AUTH EXTERNAL\r\nBEGIN\r\n"s, "DATA\r\n", Outcome::Broken},
    {"LongLine", "\0"s + std::string(20000, 'A'), "", Outcome::Broken},
};

class HandshakeServerTest : public testing::TestWithParam<Handshake> {};

INSTANTIATE_TEST_SUITE_P(All, HandshakeServerTest, testing::ValuesIn(kHandshakes),
                         [](const auto& handshake) { return handshake.param.name; });

TEST_P(HandshakeServerTest, AnswersAsTheProtocolWants) {
  host::HandshakeServer server("id");
  std::string_view bytes = GetParam().asked;
  std::string answers;
  EXPECT_EQ(server.take(bytes, answers), GetParam().outcome);
  EXPECT_EQ(answers, GetParam().answered);
  if (GetParam().outcome != Outcome::Broken) {
    EXPECT_EQ(bytes, GetParam().left);
  }
}

TEST(HandshakeServer, EndsWithWhoeverNeverComesToAnEnd) {
  host::HandshakeServer server("id");
  std::string answers;
  std::string_view first("\0", 1);
  ASSERT_EQ(server.take(first, answers), Outcome::GoesOn);
  Outcome outcome = Outcome::GoesOn;
  for (int i = 0; i < 10000 && outcome == Outcome::GoesOn; ++i) {
    std::string_view line = "AUTH\r\n";
    outcome = server.take(line, answers);
  }
  EXPECT_EQ(outcome, Outcome::Broken);
}

}  // namespace
}  // namespace vantrell::tests
