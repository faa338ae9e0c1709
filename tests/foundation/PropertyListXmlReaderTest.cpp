// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using tests::corruption;
using tests::read;

std::string plist(std::string_view contents) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + std::string(contents) + "</plist>\n";
}

std::optional<Value> valueOf(std::string_view contents) {
  auto list = read(plist(contents));
  if (!list) return std::nullopt;
  return list->root;
}

std::string problemOf(std::string_view contents) {
  return corruption(read(plist(contents)));
}

TEST(PropertyListXmlReader, ReadsEveryElement) {
  const auto list = read(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
  <!-- a comment -->
  <key>text</key><string>a &lt;b&gt; &amp; &#x43;<![CDATA[ <d>]]></string>
  <key>integer</key><integer>-42</integer>
  <key>real</key><real>2.5</real>
  <key>true</key><true/>
  <key>false</key><false></false>
  <key>date</key><date>2024-02-29T12:34:56Z</date>
  <key>data</key><data>
    AAEC
    /f7/
  </data>
  <key>array</key><array><string/><array/><dict/></array>
</dict>
</plist>)");
  ASSERT_TRUE(list) << corruption(list);
  EXPECT_EQ(list->format, PropertyListFormat::Xml);
  EXPECT_EQ(list->root, Value(Dictionary{{"text", "a <b> & C <d>"},
                                         {"integer", -42},
                                         {"real", 2.5},
                                         {"true", true},
                                         {"false", false},
                                         {"date", Date{1709210096, 0}},
                                         {"data", Data{0, 1, 2, 0xFD, 0xFE, 0xFF}},
                                         {"array", Array{"", Array{}, Dictionary{}}}}));
}

TEST(PropertyListXmlReader, WhiteSpaceOfTextsIsKept) {
  EXPECT_EQ(valueOf("<string> a\n\tb </string>"), Value(" a\n\tb "));
  EXPECT_EQ(valueOf("<dict><key> k </key><true/></dict>"), Value(Dictionary{{" k ", true}}));
}

TEST(PropertyListXmlReader, IntegersAreDecimalOrHexadecimal) {
  EXPECT_EQ(valueOf("<integer> +7\n</integer>"), Value(7));
  EXPECT_EQ(valueOf("<integer>0x1F</integer>"), Value(31));
  EXPECT_EQ(valueOf("<integer>-0Xff</integer>"), Value(-255));
  EXPECT_EQ(valueOf("<integer>-9223372036854775808</integer>"), Value(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(valueOf("<integer>18446744073709551615</integer>"), Value(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(valueOf("<integer>9223372036854775807</integer>")->asNumber()->kind(), Number::Kind::Signed);
  EXPECT_EQ(valueOf("<integer>9223372036854775808</integer>")->asNumber()->kind(), Number::Kind::Unsigned);
}

TEST(PropertyListXmlReader, MalformedAndTooLargeIntegersAreRefused) {
  for (const std::string text :
       {"", " ", "-", "+", "0x", "1.0", "1 2", "--1", "+-1", "one", "0b1", "1e3", "18446744073709551616",
        "-9223372036854775809", "0x10000000000000000", "99999999999999999999999999"}) {
    EXPECT_THAT(problemOf("<integer>" + text + "</integer>"),
                HasSubstr("a malformed integer or one of more than 64 bits"))
        << text;
  }
}

TEST(PropertyListXmlReader, RealsComeInAllTheirForms) {
  const auto real = [](const std::string& text) {
    const auto value = valueOf("<real>" + text + "</real>");
    return value && value->asNumber() ? value->asNumber()->doubleValue() : -777.0;
  };
  EXPECT_EQ(real("0.1"), 0.1);
  EXPECT_EQ(real(" -5 "), -5.0);
  EXPECT_EQ(real("+.5"), 0.5);
  EXPECT_EQ(real("5."), 5.0);
  EXPECT_EQ(real("1e3"), 1000.0);
  EXPECT_EQ(real("-1.5E-3"), -0.0015);
  EXPECT_EQ(real("1.7976931348623157e+308"), std::numeric_limits<double>::max());
  EXPECT_EQ(real("5e-324"), std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(real("1e-400"), 0.0);
  EXPECT_TRUE(std::signbit(real("-0")));
  for (const char* text : {"inf", "+inf", "infinity", "+infinity", "Infinity", "1e400"}) {
    EXPECT_EQ(real(text), std::numeric_limits<double>::infinity()) << text;
  }
  for (const char* text : {"-inf", "-infinity", "-INF", "-1e400"}) {
    EXPECT_EQ(real(text), -std::numeric_limits<double>::infinity()) << text;
  }
  for (const char* text : {"nan", "NaN", "NAN"}) EXPECT_TRUE(std::isnan(real(text))) << text;
  EXPECT_EQ(valueOf("<real>5</real>")->asNumber()->kind(), Number::Kind::Real);
}

TEST(PropertyListXmlReader, MalformedRealsAreRefused) {
  for (const std::string text :
       {"", ".", "-", "1,5", "1e", "1e+", "e5", "0x1p3", "1.2.3", "1 2", "infinit", "nanny", "--1", "1f"}) {
    EXPECT_THAT(problemOf("<real>" + text + "</real>"), HasSubstr("a malformed real")) << text;
  }
}

TEST(PropertyListXmlReader, MalformedDatesAreRefused) {
  for (const std::string text : {"", "now", "2024-02-30T00:00:00Z", "2024-01-01", "2024-01-01T00:00:00"}) {
    EXPECT_THAT(problemOf("<date>" + text + "</date>"), HasSubstr("a malformed date")) << text;
  }
}

TEST(PropertyListXmlReader, MalformedDataIsRefused) {
  for (const std::string text : {"A", "AA", "AAA", "AAA*", "AA==AA"}) {
    EXPECT_THAT(problemOf("<data>" + text + "</data>"), HasSubstr("malformed data")) << text;
  }
  EXPECT_EQ(valueOf("<data/>"), Value(Data{}));
}

TEST(PropertyListXmlReader, TheLastOfEqualKeysCounts) {
  EXPECT_EQ(valueOf("<dict><key>a</key><true/><key>b</key><false/><key>a</key><string>last</string></dict>"),
            Value(Dictionary{{"a", "last"}, {"b", false}}));
}

TEST(PropertyListXmlReader, AUidStaysADictionary) {
  EXPECT_EQ(valueOf("<dict><key>CF$UID</key><integer>3</integer></dict>"), Value(Dictionary{{"CF$UID", 3}}));
}

TEST(PropertyListXmlReader, RefusesStructureThatIsNone) {
  EXPECT_THAT(problemOf("<dict><true/></dict>"), HasSubstr("a value without a key"));
  EXPECT_THAT(problemOf("<dict><array/></dict>"), HasSubstr("a value without a key"));
  EXPECT_THAT(problemOf("<dict><key>a</key></dict>"), HasSubstr("a key without a value"));
  EXPECT_THAT(problemOf("<dict><key>a</key><key>b</key><true/></dict>"), HasSubstr("a key where none can stand"));
  EXPECT_THAT(problemOf("<array><key>a</key></array>"), HasSubstr("a key where none can stand"));
  EXPECT_THAT(problemOf("<key>a</key>"), HasSubstr("a key where none can stand"));
  EXPECT_THAT(problemOf("<string>a<string>b</string></string>"), HasSubstr("an element where only text can stand"));
  EXPECT_THAT(problemOf("<true/><true/>"), HasSubstr("more than one root"));
  EXPECT_THAT(problemOf("<array/><array/>"), HasSubstr("more than one root"));
  EXPECT_THAT(problemOf("<plist><true/></plist>"), HasSubstr("an element out of place"));
  EXPECT_THAT(problemOf("<array><plist/></array>"), HasSubstr("an element out of place"));
  EXPECT_THAT(problemOf("<true>no</true>"), HasSubstr("text within a boolean"));
}

TEST(PropertyListXmlReader, RefusesAMissingRoot) {
  EXPECT_THAT(problemOf(""), HasSubstr("no root"));
  EXPECT_THAT(problemOf("  <!-- nothing -->  "), HasSubstr("no root"));
  EXPECT_THAT(corruption(read("<plist/>")), HasSubstr("no root"));
  EXPECT_NE(corruption(read("<?xml version=\"1.0\"?>")), "no error");
  EXPECT_THAT(corruption(read("<?xml version=\"1.0\"?><dict/>")), HasSubstr("an element out of place"));
}

TEST(PropertyListXmlReader, RefusesUnknownElements) {
  for (const std::string name : {"set", "Dict", "uid", "x:dict", "integer2", "plis"}) {
    EXPECT_THAT(problemOf("<array><" + name + "/></array>"), HasSubstr("an unknown element")) << name;
  }
}

TEST(PropertyListXmlReader, RefusesTextOutsideOfElements) {
  EXPECT_THAT(problemOf("text<true/>"), HasSubstr("text where only elements can stand"));
  EXPECT_THAT(problemOf("<true/>text"), HasSubstr("text where only elements can stand"));
  EXPECT_THAT(problemOf("<array>,</array>"), HasSubstr("text where only elements can stand"));
  EXPECT_NE(corruption(read(plist("<true/>") + "behind")), "no error");
}

TEST(PropertyListXmlReader, RefusesEntityDefinitions) {
  std::string bomb = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">";
  for (char name = 'b'; name < 'l'; ++name) {
    bomb += std::string("<!ENTITY ") + name + " \"";
    for (int i = 0; i < 10; ++i) bomb += std::string("&") + static_cast<char>(name - 1) + ";";
    bomb += "\">";
  }
  EXPECT_THAT(corruption(read(bomb + "]><plist><string>&k;</string></plist>")), HasSubstr("it defines an entity"));
  EXPECT_THAT(corruption(read(
                  "<!DOCTYPE plist [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><plist><string>&f;</string></plist>")),
              HasSubstr("it defines an entity"));
  EXPECT_THAT(
      corruption(read("<!DOCTYPE plist [<!ENTITY % p SYSTEM \"http://localhost/\"> %p;]><plist><true/></plist>")),
      HasSubstr("it defines an entity"));
}

TEST(PropertyListXmlReader, RefusesUnknownEntitiesRatherThanLoseThem) {
  EXPECT_NE(problemOf("<string>a&nbsp;b</string>"), "no error");
  EXPECT_THAT(
      corruption(read("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist><string>a&nbsp;b</string></plist>")),
      HasSubstr("an unknown entity"));
}

TEST(PropertyListXmlReader, RefusesAttributeDefinitions) {
  EXPECT_THAT(corruption(read("<!DOCTYPE plist [<!ATTLIST true a CDATA 'x'>]><plist><true/></plist>")),
              HasSubstr("it defines attributes"));
}

TEST(PropertyListXmlReader, ADocumentTypeWithoutDefinitionsIsAccepted) {
  EXPECT_TRUE(
      read("<!DOCTYPE plist SYSTEM \"file://localhost/System/Library/DTDs/PropertyList.dtd\"><plist><true/></plist>"));
  EXPECT_TRUE(read("<!DOCTYPE plist [<!ELEMENT plist ANY>]><plist version=\"7\" other=\"x\"><true/></plist>"));
}

TEST(PropertyListXmlReader, ADepthBombIsRefused) {
  std::string bomb = "<plist>";
  for (int i = 0; i < 200'000; ++i) bomb += "<array>";
  EXPECT_THAT(corruption(read(bomb)), HasSubstr("nested too deeply"));
  std::string dictionaries = "<plist>";
  for (int i = 0; i < 200'000; ++i) dictionaries += "<dict><key>k</key>";
  EXPECT_THAT(corruption(read(dictionaries)), HasSubstr("nested too deeply"));
}

TEST(PropertyListXmlReader, NestingIsReadUpToTheLimit) {
  const auto nested = [](int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<array>";
    for (int i = 0; i < depth; ++i) text += "</array>";
    return plist(text);
  };
  EXPECT_TRUE(read(nested(512)));
  EXPECT_FALSE(read(nested(513)));
  EXPECT_TRUE(propertyListFromData(bytesOf(nested(3)), {.maximumDepth = 3}));
  EXPECT_FALSE(propertyListFromData(bytesOf(nested(4)), {.maximumDepth = 3}));
}

TEST(PropertyListXmlReader, TheCountOfValuesIsLimited) {
  const auto text = plist("<array><true/><true/></array>");
  EXPECT_TRUE(propertyListFromData(bytesOf(text), {.maximumObjects = 3}));
  EXPECT_THAT(corruption(propertyListFromData(bytesOf(text), {.maximumObjects = 2})), HasSubstr("too many values"));
}

TEST(PropertyListXmlReader, TruncatedAnywhereItIsRefused) {
  const auto whole = *xmlPropertyListFromValue(tests::sampleValue());
  const auto text = textOf(whole).substr(0, textOf(whole).rfind("</plist>") + 8);
  ASSERT_TRUE(read(text));
  for (std::size_t size = 0; size < text.size(); ++size) EXPECT_FALSE(read(text.substr(0, size))) << size;
}

TEST(PropertyListXmlReader, EveryChangedByteGivesAnErrorOrAListThatCanBeWrittenAgain) {
  const auto sample =
      *xmlPropertyListFromValue(Dictionary{{"a", Array{1, 2.5, "text"}}, {"b", Date{1, 0}}, {"c", Data{1, 2}}});
  for (std::size_t at = 0; at < sample.size(); ++at) {
    for (const int change : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
      Data changed = sample;
      changed[at] = static_cast<std::uint8_t>(changed[at] ^ change);
      const auto list = propertyListFromData(changed);
      if (!list) {
        EXPECT_NE(corruption(list), "another error");
        continue;
      }
      ASSERT_TRUE(binaryPropertyListFromValue(list->root)) << at << " " << change;
    }
  }
}

TEST(PropertyListXmlReader, IllFormedUtf8IsRefused) {
  EXPECT_NE(problemOf("<string>a\xFFz</string>"), "no error");
  EXPECT_NE(problemOf("<string>\xED\xA0\x80</string>"), "no error");
}

std::string utf16(std::string_view ascii, bool bigEndian, bool mark) {
  std::string text;
  if (mark) text = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char character : ascii) {
    if (bigEndian) text.push_back('\0');
    text.push_back(character);
    if (!bigEndian) text.push_back('\0');
  }
  return text;
}

TEST(PropertyListXmlReader, ReadsTheEncodingsOfXml) {
  const std::string utf16Text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>hello</string></plist>";
  for (const bool bigEndian : {false, true}) {
    for (const bool mark : {false, true}) {
      for (const std::string_view space : {"", " \n"}) {
        const auto list = read(utf16(std::string(space) + utf16Text, bigEndian, mark));
        ASSERT_TRUE(list) << bigEndian << mark << corruption(list);
        EXPECT_EQ(list->root, Value("hello"));
      }
    }
  }
  EXPECT_EQ(read("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>gr\xFC\xDF</string></plist>")->root,
            Value("gr\u00fc\u00df"));
  EXPECT_EQ(read("<?xml version=\"1.0\" encoding=\"US-ASCII\"?><plist><string>plain</string></plist>")->root,
            Value("plain"));
  EXPECT_FALSE(read("<?xml version=\"1.0\" encoding=\"US-ASCII\"?><plist><string>\xFC</string></plist>"));
  EXPECT_FALSE(read("<?xml version=\"1.0\" encoding=\"EBCDIC\"?><plist><string>a</string></plist>"));
}

TEST(PropertyListXmlReader, TheProblemsLineIsNamed) {
  EXPECT_EQ(corruption(read("<plist>\n<array>\n<set/>\n</array>\n</plist>")), "line 3: an unknown element");
}

}  // namespace
}  // namespace vantrell
