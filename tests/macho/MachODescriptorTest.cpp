// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/macho/ReaderTest.h"

namespace vantrell::tests {

using macho::Width;
using testing::ElementsAre;

class MachODescriptor : public ReaderTest {};

TEST_F(MachODescriptor, IsTheSha1OfTheContentsInLowerCaseDigits) {
  const Data file = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "abc", 0, {}, {}}}).build();
  EXPECT_EQ(descriptorOf(file), "a9993e364706816aba3e25717850c26c9cd0d89d");  // FIPS 180's own example
}

TEST_F(MachODescriptor, OfNoSectionsIsTheDigestOfNothing) {
  EXPECT_EQ(descriptorOf(MachOBuilder().segment("__TEXT", {}).build()), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST_F(MachODescriptor, CoversSectionsInTheLiteralOrderOfTheirKeys) {
  const Data file = MachOBuilder()
                        .segment("__TEXT", {{"__TEXT", "__text", "5", 0, {}, {}},
                                            {"__TEXT", "__const", "4", 0, {}, {}},
                                            {"__DATA", "__data", "2", 0, {}, {}}})
                        .segment("__DATA", {{"__DATA", "__bss_copy", "1", 0, {}, {}},
                                            {"__DATA_CONST", "__got", "3", 0, {}, {}},
                                            {"a", "b", "7", 0, {}, {}},
                                            {"Z", "z", "0", 0, {}, {}},
                                            {"_a", "", "6", 0, {}, {}}})
                        .build();
  // "," (0x2C) comes before "_" (0x5F), upper case before "_", "_" before lower case.
  EXPECT_EQ(descriptorOf(file), sha1("01234567"));
}

TEST_F(MachODescriptor, OrdersNamesByUtf16CodeUnits) {
  const Data file =
      MachOBuilder()
          .segment("", {{"\xEE\x80\x80", "", "second", 0, {}, {}}, {"\xF0\x9F\x98\x80", "", "first", 0, {}, {}}})
          .build();
  EXPECT_EQ(descriptorOf(file), sha1("firstsecond"));
}

TEST_F(MachODescriptor, CountsTheLastOfTwoSectionsWithOneNameOnce) {
  const Data file = MachOBuilder()
                        .segment("__TEXT", {{"__TEXT", "__text", "first", 0, {}, {}}})
                        .segment("__TEXT", {{"__TEXT", "__text", "last", 0, {}, {}}})
                        .build();
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_THAT(reader->partDescriptors(), ElementsAre(sha1("last")));
  EXPECT_EQ(reader->sectionsByName()[0].size(), 1U);
  EXPECT_EQ(reader->segmentsPerPart()[0].size(), 2U);
}

TEST_F(MachODescriptor, CountsAReplacedSectionEvenWhenItsSuccessorIsZeroFill) {
  const Data file = MachOBuilder()
                        .segment("__DATA", {{"__DATA", "__d", "hidden", 0, {}, {}}, {"__DATA", "__d", "", 1, 0, 99}})
                        .build();
  EXPECT_EQ(descriptorOf(file), sha1(""));
}

TEST_F(MachODescriptor, SkipsZeroFillSectionsWhereverTheyPoint) {
  for (const std::uint32_t type : {1U, 12U}) {
    const Data file = MachOBuilder()
                          .segment("__DATA", {{"__DATA", "__bss", "", type | 0x80000000, 0x7FFFFFFF, 1ULL << 40},
                                              {"__DATA", "__data", "data", 0, {}, {}}})
                          .build();
    EXPECT_EQ(descriptorOf(file), sha1("data")) << type;
  }
}

TEST_F(MachODescriptor, HashesThreadLocalZeroFillSectionsAsTheyStand) {
  const Data file =
      MachOBuilder().segment("__DATA", {{"__DATA", "__thread_bss", "", 0x12, 0, std::uint64_t{16}}}).build();
  EXPECT_EQ(descriptorOf(file), sha1(textOf(DataView(file).first(16))));
}

TEST_F(MachODescriptor, HashesEveryOtherTypeOfSection) {
  for (std::uint32_t type = 0; type < 256; ++type) {
    if (type == 1 || type == 12) continue;
    const Data file = MachOBuilder().segment("S", {{"S", "s", "content", type, {}, {}}}).build();
    EXPECT_EQ(descriptorOf(file), sha1("content")) << type;
  }
}

TEST_F(MachODescriptor, IsTheSameInBothByteOrdersAndForms) {
  const auto build = [](Width width, Endian endian) {
    return MachOBuilder(width, endian)
        .segment("__TEXT", {{"__TEXT", "__text", "some code", 0, {}, {}}, {"__TEXT", "__bss", "", 1, 0, 4096}})
        .signature("signed")
        .build();
  };
  for (const Width width : {Width::Bits32, Width::Bits64}) {
    for (const Endian endian : {Endian::Little, Endian::Big}) {
      EXPECT_EQ(descriptorOf(build(width, endian)), sha1("some code"));
    }
  }
}

TEST_F(MachODescriptor, StaysWhenTheFileIsSignedAgain) {
  const auto build = [](std::string signature, std::size_t padding) {
    return MachOBuilder()
        .padding(padding)
        .segment("__TEXT", {{"__TEXT", "__text", "code", 0, {}, {}}})
        .segment("__LINKEDIT", {})
        .signature(std::move(signature))
        .build();
  };
  const std::string descriptor = descriptorOf(build("first signature", 0));
  EXPECT_EQ(descriptor, sha1("code"));
  EXPECT_EQ(descriptorOf(build("another, longer signature", 0)), descriptor);
  EXPECT_EQ(descriptorOf(build("another, longer signature", 4096)), descriptor);
  Data resized = build("first signature", 0);
  putWord(resized, macho::kHeaderSize64 + macho::kSegmentSize64 + macho::kSectionSize64 + 48, 0x9999);  // filesize
  EXPECT_EQ(descriptorOf(resized), descriptor);
}

TEST_F(MachODescriptor, ChangesWithEveryByteOfTheContents) {
  Data file = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "some code", 0, {}, {}}}).build();
  const std::string descriptor = descriptorOf(file);
  for (std::size_t index = file.size() - 9; index < file.size(); ++index) {
    file[index] ^= 1;
    EXPECT_NE(descriptorOf(file), descriptor) << index;
    file[index] ^= 1;
  }
  EXPECT_EQ(descriptorOf(file), descriptor);
}

TEST_F(MachODescriptor, ReadsContentsRelativeToThePart) {
  const auto part = [](std::string code) {
    return PartToBuild{
        .bytes = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", std::move(code), 0, {}, {}}}).build()};
  };
  const auto reader = read(fatFile({part("one"), part("two")}));
  ASSERT_TRUE(reader);
  EXPECT_THAT(reader->descriptorsForRelevantSectionsPerFilePart(), ElementsAre(sha1("one"), sha1("two")));
}

TEST_F(MachODescriptor, MayReadContentsBeyondItsPartButNotBeyondTheFile) {
  const Data first = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "", 0, 0, std::uint64_t{300}}}).build();
  ASSERT_LT(first.size(), 300U);
  const Data file = fatFile({{.bytes = first}, {.bytes = MachOBuilder().padding(200).segment("", {}).build()}});
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->partDescriptors()[0],
            sha1(textOf(DataView(file).subspan(reader->fatFileHeaderAtIndex(0)->offset(), 300))));
}

/// Cryptography that makes no digests.
class NoDigests final : public host::Cryptography {
 public:
  Result<std::unique_ptr<host::Sha1Context>> makeSha1() override { return posixFailure(5); }
  Result<host::Sha1Digest> sha1(DataView) override { return posixFailure(5); }
  ErrorOrNil rc4(DataView, DataView, std::span<std::uint8_t>) override { return Error::posix(5); }
  ErrorOrNil randomBytes(std::span<std::uint8_t>) override { return Error::posix(5); }
};

TEST_F(MachODescriptor, ThatCannotBeComputedEndsTheReadingByAnException) {
  NoDigests cryptography;
  const Data file = MachOBuilder().segment("__TEXT", {}).build();
  EXPECT_THROW(QELMachOProcessor::initForContents(file, cryptography, log_), Exception);
}

}  // namespace vantrell::tests
