// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/QELMachOProcessor.h"
#include "tests/macho/ReaderTest.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

using macho::Width;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

SectionToBuild section(std::string segment, std::string name, std::string content) {
  return {std::move(segment), std::move(name), std::move(content), 0, {}, {}};
}

Data textPart(std::string_view code, Width width = Width::Bits64, Endian endian = Endian::Little) {
  return MachOBuilder(width, endian).segment("__TEXT", {section("__TEXT", "__text", std::string(code))}).build();
}

std::vector<std::string> keysOf(const macho::SectionsByName& sections) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : sections) keys.push_back(key);
  return keys;
}

}  // namespace

class MachOFormats : public ReaderTest {};

TEST_F(MachOFormats, AFatFileHasTheMagicAndRoomForItsRecords) {
  const Data file = ByteWriter(Endian::Big).word(0xCAFEBABE).word(2).bytes(Data(40)).data();
  EXPECT_TRUE(QELMachOProcessor::isFatBinary(file));
  EXPECT_FALSE(QELMachOProcessor::isFatBinary(DataView(file).first(47)));
  EXPECT_FALSE(QELMachOProcessor::isFatBinary(DataView(file).first(7)));
  EXPECT_FALSE(QELMachOProcessor::isFatBinary({}));
}

TEST_F(MachOFormats, AFatFileWithoutPartsIsFat) {
  EXPECT_TRUE(QELMachOProcessor::isFatBinary(ByteWriter(Endian::Big).word(0xCAFEBABE).word(0).data()));
}

TEST_F(MachOFormats, TheSizeOfTheFatRecordsDoesNotWrap) {
  // 8 + 20 * 0x33333333 is 4 more than 2^32.
  EXPECT_FALSE(QELMachOProcessor::isFatBinary(ByteWriter(Endian::Big).word(0xCAFEBABE).word(0x33333333).data()));
  EXPECT_FALSE(QELMachOProcessor::isFatBinary(ByteWriter(Endian::Big).word(0xCAFEBABE).word(0xFFFFFFFF).data()));
}

TEST_F(MachOFormats, AFatMagicInTheOtherByteOrderIsNone) {
  EXPECT_FALSE(QELMachOProcessor::isFatBinary(ByteWriter(Endian::Little).word(0xCAFEBABE).word(0).data()));
}

TEST_F(MachOFormats, AMachOFileHasOneOfFourMagicsAndRoomForAHeader) {
  for (const std::uint32_t magic : {0xFEEDFACEU, 0xFEEDFACFU, 0xCEFAEDFEU, 0xCFFAEDFEU}) {
    const Data file = ByteWriter(Endian::Little).word(magic).bytes(Data(24)).data();
    EXPECT_TRUE(QELMachOProcessor::isMachOFile(file));
    EXPECT_FALSE(QELMachOProcessor::isMachOFile(DataView(file).first(27)));
  }
  EXPECT_FALSE(QELMachOProcessor::isMachOFile(ByteWriter(Endian::Little).word(0xFEEDFACD).bytes(Data(24)).data()));
  EXPECT_FALSE(QELMachOProcessor::isMachOFile({}));
}

TEST_F(MachOFormats, FilesOfOtherFormatsYieldNothingSilently) {
  EXPECT_EQ(read({}), nullptr);
  EXPECT_EQ(read(dataOf("#!/bin/sh\nexit 0\n# a script that is longer than a header\n")), nullptr);
  EXPECT_EQ(read(dataOf("\x7F"
                        "ELF and more than twenty-eight bytes")),
            nullptr);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(MachOFormats, AFatFileThatAnnouncesMoreRecordsThanItHoldsYieldsNothingSilently) {
  Data file = fatFile({{.bytes = textPart("code")}});
  putWord(file, 4, 1000, Endian::Big);
  EXPECT_EQ(read(file), nullptr);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(MachOFormats, AFileThatCannotBeLoadedYieldsNothingSilently) {
  const TemporaryFolder folder;
  EXPECT_EQ(readFile(folder.path("missing")), nullptr);
  EXPECT_EQ(readFile(folder.path()), nullptr);
  EXPECT_EQ(readFile(""), nullptr);
  EXPECT_EQ(readFile(folder.makeFile("empty", "")), nullptr);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

class MachORecordsOfParts : public ReaderTest {};

TEST_F(MachORecordsOfParts, AThinFileHasOneMadeUpPart) {
  const Data file = textPart("code");
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->countOfFatFileParts(), 1U);
  const auto* part = reader->fatFileHeaderAtIndex(0);
  ASSERT_TRUE(part);
  EXPECT_EQ(part->bytes().size(), 20U);
  EXPECT_EQ(part->cputype(), MachOBuilder::kCpuType);
  EXPECT_EQ(part->cpusubtype(), MachOBuilder::kCpuSubtype);
  EXPECT_EQ(part->offset(), 0U);
  EXPECT_EQ(part->partSize(), file.size());
  EXPECT_EQ(part->align(), 0U);
}

TEST_F(MachORecordsOfParts, AFileIsReadFromItsPathAndMayGoAfterwards) {
  std::unique_ptr<QELMachOProcessor> reader;
  {
    const TemporaryFolder folder;
    reader = readFile(folder.makeFile("program", textOf(textPart("code"))));
  }
  ASSERT_TRUE(reader);
  EXPECT_THAT(reader->descriptorsForRelevantSectionsPerFilePart(), ElementsAre(sha1("code")));
  EXPECT_THAT(keysOf(*reader->sectionsByNameForPartAtIndex(0)), ElementsAre("__TEXT,__text"));
}

TEST_F(MachORecordsOfParts, HeadersAreKeptInHostOrderInBothForms) {
  for (const Endian endian : {Endian::Little, Endian::Big}) {
    for (const Width width : {Width::Bits32, Width::Bits64}) {
      const bool wide = width == Width::Bits64;
      const auto reader = read(textPart("code", width, endian));
      ASSERT_TRUE(reader);
      EXPECT_THAT(reader->byteOrderFlags(), ElementsAre(endian == Endian::Big));
      EXPECT_EQ(reader->sizeOfMachHeaderForPartAtIndex(0), wide ? 32U : 28U);
      const auto* header = reader->machHeaderForPartAtIndex(0);
      ASSERT_TRUE(header);
      EXPECT_EQ(header->bytes().size(), wide ? 32U : 28U);
      EXPECT_EQ(header->magic(), wide ? 0xFEEDFACF : 0xFEEDFACE);
      EXPECT_EQ(header->cputype(), MachOBuilder::kCpuType);
      EXPECT_EQ(header->cpusubtype(), MachOBuilder::kCpuSubtype);
      EXPECT_EQ(header->filetype(), MachOBuilder::kExecutable);
      EXPECT_EQ(header->ncmds(), 1U);
      EXPECT_EQ(header->sizeofcmds(), wide ? 152U : 124U);
      EXPECT_EQ(header->flags(), MachOBuilder::kHeaderFlags);
      EXPECT_EQ(header->reserved(), wide ? MachOBuilder::kReserved : 0);
      EXPECT_EQ(reader->fatFileHeaderAtIndex(0)->cputype(), MachOBuilder::kCpuType);
    }
  }
}

TEST_F(MachORecordsOfParts, SegmentsAreKeptInHostOrderInBothForms) {
  for (const Endian endian : {Endian::Little, Endian::Big}) {
    for (const Width width : {Width::Bits32, Width::Bits64}) {
      const bool wide = width == Width::Bits64;
      const auto reader = read(textPart("code", width, endian));
      ASSERT_TRUE(reader);
      ASSERT_EQ(reader->segmentsForPartAtIndex(0)->size(), 1U);
      const auto& segment = reader->segmentsForPartAtIndex(0)->front();
      EXPECT_EQ(segment.bytes().size(), wide ? 72U : 56U);
      EXPECT_EQ(segment.width(), width);
      EXPECT_EQ(segment.cmd(), wide ? 0x19U : 0x1U);
      EXPECT_EQ(segment.cmdsize(), wide ? 152U : 124U);
      EXPECT_EQ(segment.segname(), "__TEXT");
      EXPECT_EQ(segment.vmaddr(), wide ? MachOBuilder::kHighAddress : MachOBuilder::kAddress);
      EXPECT_EQ(segment.vmsize(), 0x2000U);
      EXPECT_EQ(segment.fileoff(), 0x300U);
      EXPECT_EQ(segment.filesize(), 0x400U);
      EXPECT_EQ(segment.maxprot(), 7U);
      EXPECT_EQ(segment.initprot(), 5U);
      EXPECT_EQ(segment.nsects(), 1U);
      EXPECT_EQ(segment.flags(), 4U);
    }
  }
}

TEST_F(MachORecordsOfParts, SectionsAreKeptInHostOrderInBothForms) {
  for (const Endian endian : {Endian::Little, Endian::Big}) {
    for (const Width width : {Width::Bits32, Width::Bits64}) {
      const bool wide = width == Width::Bits64;
      const auto reader = read(
          MachOBuilder(width, endian).segment("__TEXT", {{"__TEXT", "__text", "code", 0x80000400, {}, {}}}).build());
      ASSERT_TRUE(reader);
      ASSERT_EQ(keysOf(*reader->sectionsByNameForPartAtIndex(0)), std::vector<std::string>{"__TEXT,__text"});
      const auto& section = reader->sectionsByNameForPartAtIndex(0)->begin()->second;
      EXPECT_EQ(section.bytes().size(), wide ? 80U : 68U);
      EXPECT_EQ(section.width(), width);
      EXPECT_EQ(section.sectname(), "__text");
      EXPECT_EQ(section.segname(), "__TEXT");
      EXPECT_EQ(section.addr(), wide ? MachOBuilder::kHighAddress : MachOBuilder::kAddress);
      EXPECT_EQ(section.contentSize(), 4U);
      EXPECT_EQ(section.offset(), wide ? 184U : 152U);
      EXPECT_EQ(section.align(), 4U);
      EXPECT_EQ(section.reloff(), 0x11U);
      EXPECT_EQ(section.nreloc(), 0x12U);
      EXPECT_EQ(section.flags(), 0x80000400U);
      EXPECT_EQ(section.reserved1(), 0x21U);
      EXPECT_EQ(section.reserved2(), 0x22U);
    }
  }
}

TEST_F(MachORecordsOfParts, TheLastWordOfAWideSectionStaysAsItIsStored) {
  const auto lastWord = [this](Endian endian) {
    const auto reader = read(textPart("code", Width::Bits64, endian));
    return macho::readWord(reader->sectionsByName().at(0).begin()->second.bytes(), 76);
  };
  EXPECT_EQ(lastWord(Endian::Little), 0x23U);
  EXPECT_EQ(lastWord(Endian::Big), 0x23000000U);
}

TEST_F(MachORecordsOfParts, NamesAreCopiedAsTheyStandInASwappedPart) {
  const auto little = read(textPart("code", Width::Bits64, Endian::Little));
  const auto big = read(textPart("code", Width::Bits64, Endian::Big));
  ASSERT_TRUE(little && big);
  EXPECT_EQ(little->segmentsPerPart()[0][0], big->segmentsPerPart()[0][0]);
}

TEST_F(MachORecordsOfParts, SegmentsAndSectionsOfBothFormsMayStandInOnePart) {
  const auto reader = read(MachOBuilder(Width::Bits64)
                               .segment("__A", {section("__A", "__wide", "1")})
                               .segment("__B", {section("__B", "__narrow", "2")}, Width::Bits32)
                               .build());
  ASSERT_TRUE(reader);
  const auto& sections = reader->sectionsByName().at(0);
  EXPECT_EQ(sections.at("__A,__wide").size(), 80U);
  EXPECT_EQ(sections.at("__B,__narrow").size(), 68U);
  EXPECT_THAT(reader->partDescriptors(), ElementsAre(sha1("12")));
}

TEST_F(MachORecordsOfParts, KeysAreMadeFromTheSectionsOwnFields) {
  const auto reader = read(MachOBuilder()
                               .segment("", {section("__TEXT", "__text", ""), section("", "", ""),
                                             section("sixteen_letters_", "__exactly_sixtee", ""),
                                             section("\xFF\xFE", "ok", ""), section("ok", "\x80", "")})
                               .build());
  ASSERT_TRUE(reader);
  EXPECT_THAT(keysOf(reader->sectionsByName().at(0)),
              ElementsAre("(null),ok", ",", "__TEXT,__text", "ok,(null)", "sixteen_letters_,__exactly_sixtee"));
}

TEST_F(MachORecordsOfParts, SegmentsStandInTheOrderOfTheLoadCommands) {
  const auto reader = read(MachOBuilder()
                               .segment("__PAGEZERO", {})
                               .segment("__TEXT", {})
                               .command(0x1B, Data(16))
                               .segment("__DATA", {})
                               .segment("__DATA", {})
                               .build());
  ASSERT_TRUE(reader);
  std::vector<std::string> names;
  for (const auto& segment : *reader->segmentsForPartAtIndex(0)) names.push_back(segment.segname().value());
  EXPECT_THAT(names, ElementsAre("__PAGEZERO", "__TEXT", "__DATA", "__DATA"));
}

TEST_F(MachORecordsOfParts, IndexesOutOfRangeGiveNothing) {
  const auto reader = read(textPart("code"));
  ASSERT_TRUE(reader);
  for (const std::size_t index : {std::size_t{1}, SIZE_MAX}) {
    EXPECT_EQ(reader->fatFileHeaderAtIndex(index), nullptr);
    EXPECT_EQ(reader->machHeaderForPartAtIndex(index), nullptr);
    EXPECT_EQ(reader->sizeOfMachHeaderForPartAtIndex(index), 0U);
    EXPECT_EQ(reader->segmentsForPartAtIndex(index), nullptr);
    EXPECT_EQ(reader->sectionsByNameForPartAtIndex(index), nullptr);
    EXPECT_EQ(reader->signatureForPartAtIndex(index), nullptr);
  }
  EXPECT_EQ(reader->signatureForPartAtIndex(0), nullptr);
}

class MachOFatFiles : public ReaderTest {};

TEST_F(MachOFatFiles, EachPartHasItsOwnLists) {
  const std::int32_t kArm64 = 0x0100000C;
  const std::int32_t kPowerPC = 18;
  const Data arm = MachOBuilder().cpu(kArm64, 0).segment("__TEXT", {section("__TEXT", "__text", "arm")}).build();
  const Data ppc = MachOBuilder(Width::Bits32, Endian::Big)
                       .cpu(kPowerPC, 0)
                       .segment("__DATA", {section("__DATA", "__data", "ppc")})
                       .build();
  const Data file = fatFile({{.bytes = textPart("intel")}, {arm, kArm64, 0, {}}, {ppc, kPowerPC, 0, {}}});
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->countOfFatFileParts(), 3U);
  EXPECT_THAT(reader->byteOrderFlags(), ElementsAre(false, false, true));
  EXPECT_THAT(reader->partDescriptors(), ElementsAre(sha1("intel"), sha1("arm"), sha1("ppc")));
  EXPECT_EQ(reader->fatFileHeaderAtIndex(1)->cputype(), kArm64);
  EXPECT_EQ(reader->fatFileHeaderAtIndex(1)->partSize(), arm.size());
  EXPECT_EQ(reader->fatFileHeaderAtIndex(1)->align(), 4U);
  EXPECT_EQ(reader->fatFileHeaderAtIndex(2)->cputype(), kPowerPC);
  EXPECT_EQ(reader->sizeOfMachHeaderForPartAtIndex(1), 32U);
  EXPECT_EQ(reader->sizeOfMachHeaderForPartAtIndex(2), 28U);
  EXPECT_THAT(keysOf(*reader->sectionsByNameForPartAtIndex(2)), ElementsAre("__DATA,__data"));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(MachOFatFiles, APartAtTheVeryEndMayHoldOnlyItsMagicBeforeItFails) {
  Data file = fatFile({{.bytes = textPart("code")}});
  file = file + ByteWriter(Endian::Little).word(0xFEEDFACF).data();
  putWord(file, 8 + 8, static_cast<std::uint32_t>(file.size() - 4), Endian::Big);
  expectFailure(file, "QELMachOProcessor: mach file structure (64) inconsistent in part 0.");
}

TEST_F(MachOFatFiles, WithoutPartsAFileYieldsNothing) {
  EXPECT_EQ(read(ByteWriter(Endian::Big).word(0xCAFEBABE).word(0).data()), nullptr);
}

TEST_F(MachOFatFiles, PartsMayBeginInTheSecondHalfOfFourGigabytes) {
  Data file = fatFile({{.bytes = textPart("code")}});
  putWord(file, 8 + 8, 0xFFFFFFFF, Endian::Big);
  expectFailure(file, "QELMachOProcessor: fat file header 0 has inconsistent offset 4294967295.");
}

class MachOSignatures : public ReaderTest {};

TEST_F(MachOSignatures, AreCopied) {
  for (const Endian endian : {Endian::Little, Endian::Big}) {
    const auto reader =
        read(MachOBuilder(Width::Bits64, endian).segment("__TEXT", {}).signature("the signature").build());
    ASSERT_TRUE(reader);
    ASSERT_TRUE(reader->signatureForPartAtIndex(0));
    EXPECT_EQ(textOf(*reader->signatureForPartAtIndex(0)), "the signature");
  }
}

TEST_F(MachOSignatures, OfLaterPartsMoveUpPastAPartWithoutOne) {
  const auto signedPart = [](std::string blob) {
    return PartToBuild{.bytes = MachOBuilder().segment("__TEXT", {}).signature(std::move(blob)).build()};
  };
  const auto reader =
      read(fatFile({signedPart("first"), {.bytes = textPart("unsigned")}, signedPart("third"), signedPart("")}));
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->signaturesPerPart().size(), 3U);
  EXPECT_EQ(textOf(*reader->signatureForPartAtIndex(0)), "first");
  EXPECT_EQ(textOf(*reader->signatureForPartAtIndex(1)), "third");
  EXPECT_EQ(textOf(*reader->signatureForPartAtIndex(2)), "");
  EXPECT_EQ(reader->signatureForPartAtIndex(3), nullptr);
}

TEST_F(MachOSignatures, MayBeSeveralInOnePart) {
  const auto reader = read(MachOBuilder().signature("one").signature("two").build());
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->signaturesPerPart(), (std::vector<Data>{dataOf("one"), dataOf("two")}));
}

TEST_F(MachOSignatures, AreFoundRelativeToTheirPart) {
  const Data part = MachOBuilder().segment("__TEXT", {}).signature("mine").build();
  const auto reader = read(fatFile({{.bytes = textPart("other")}, {.bytes = part}}));
  ASSERT_TRUE(reader);
  EXPECT_EQ(textOf(*reader->signatureForPartAtIndex(0)), "mine");
}

}  // namespace vantrell::tests
