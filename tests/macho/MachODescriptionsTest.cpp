// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <map>

#include <gmock/gmock.h>

#include "macho/MachODescriptions.h"
#include "tests/macho/ReaderTest.h"

namespace vantrell::tests {

using macho::Width;

TEST(MachODescriptions, NameFileTypes) {
  const std::map<std::uint32_t, std::string> texts = {
      {0, "unknown file type"},
      {1, "intermediate object file"},
      {2, "executable"},
      {3, "unknown file type"},
      {4, "core dump"},
      {5, "firmware executable"},
      {6, "dynamic shared library"},
      {7, "dynamic linker shared library"},
      {8, "loadable bundle (plug-in)"},
      {9, "unknown file type"},
      {10, "symbol table"},
      {11, "unknown file type"},
      {0xFFFFFFFF, "unknown file type"},
  };
  for (const auto& [type, text] : texts) {
    EXPECT_EQ(QELMachOProcessor::descriptionForMachOFileType(type), text) << type;
  }
}

TEST(MachODescriptions, NameEachHeaderFlag) {
  const std::map<std::uint32_t, std::string> texts = {
      {0, "<none>"},
      {0x1, "no undefined references"},
      {0x2, "incremental link output"},
      {0x4, "for dynamic linker"},
      {0x8, "bind at load"},
      {0x10, "prebound"},
      {0x20, "split segments"},
      {0x40, "<none>"},
      {0x80, "two-level namespace"},
      {0x100, "force flat namespace"},
      {0x200, "no multiple definitions"},
      {0x400, "no fix prebinding"},
      {0x800, "prebindable"},
      {0x1000, "all modules bound"},
      {0x2000, "subsections via symbols"},
      {0x4000, "canonicalized"},
      {0x8000, "<none>"},
      {0x200000, "<none>"},
  };
  for (const auto& [flag, text] : texts) EXPECT_EQ(QELMachOProcessor::descriptionForMachOFlags(flag), text) << flag;
}

TEST(MachODescriptions, ListHeaderFlagsInTheirOwnOrder) {
  EXPECT_EQ(QELMachOProcessor::descriptionForMachOFlags(0xFFFFFFFF),
            "no undefined references, incremental link output, for dynamic linker, two-level namespace, bind at load, "
            "prebound, prebindable, no fix prebinding, all modules bound, canonicalized, split segments, force flat "
            "namespace, subsections via symbols, no multiple definitions");
}

TEST(MachODescriptions, NameSegmentFlags) {
  EXPECT_EQ(QELMachOProcessor::descriptionForSegmentFlags(0), "<none>");
  EXPECT_EQ(QELMachOProcessor::descriptionForSegmentFlags(1), "high virtual memory");
  EXPECT_EQ(QELMachOProcessor::descriptionForSegmentFlags(2), "<none>");
  EXPECT_EQ(QELMachOProcessor::descriptionForSegmentFlags(4), "no relocation");
  EXPECT_EQ(QELMachOProcessor::descriptionForSegmentFlags(0xFF), "high virtual memory, no relocation");
}

TEST(MachODescriptions, NameSectionTypes) {
  const std::vector<std::string> names = {
      "regular",
      "zero-fill on demand",
      "C string literals",
      "4-byte literals",
      "8-byte literals",
      "literal pointers",
      "non-lazy symbol pointers",
      "lazy symbol pointers",
      "symbol stubs",
      "module initialization function pointers",
      "module termination function pointers",
      "coalesced",
      "zero-fill on demand > 4 GB",
      "unknown",
  };
  for (std::uint32_t type = 0; type < names.size(); ++type) {
    EXPECT_EQ(QELMachOProcessor::descriptionForSectionFlags(type), "type: " + names[type]);
  }
  EXPECT_EQ(QELMachOProcessor::descriptionForSectionFlags(0xFF), "type: unknown");
}

TEST(MachODescriptions, NameEachSectionAttribute) {
  const std::map<std::uint32_t, std::string> texts = {
      {0x80000000, "type: regular, pure instructions"},
      {0x40000000, "type: regular, not for table of contents"},
      {0x20000000, "type: regular, static symbols can be stripped"},
      {0x10000000, "type: regular, must not be dead-stripped"},
      {0x08000000, "type: regular, must not be dead-stripped if live code"},
      {0x04000000, "type: regular"},
      {0x400, "type: regular, some instructions"},
      {0x200, "type: regular, external relocations"},
      {0x100, "type: regular, local relocations"},
  };
  for (const auto& [flags, text] : texts) EXPECT_EQ(QELMachOProcessor::descriptionForSectionFlags(flags), text);
}

TEST(MachODescriptions, ListSectionAttributesInTheirOwnOrder) {
  EXPECT_EQ(QELMachOProcessor::descriptionForSectionFlags(0xFFFFFF08),
            "type: symbol stubs, pure instructions, some instructions, not for table of contents, external "
            "relocations, local relocations, static symbols can be stripped, must not be dead-stripped, must not be "
            "dead-stripped if live code");
}

class RecordDescriptions : public ReaderTest {};

TEST_F(RecordDescriptions, DescribeSegmentsOfBothForms) {
  const auto wide = read(MachOBuilder().segment("__TEXT", {}).build());
  ASSERT_TRUE(wide);
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment(wide->segmentsForPartAtIndex(0)->at(0).bytes()),
            "segment (64 bit): '__TEXT'\n[VM: 4294971392 size: 8192 offset: 768 size: 1024 maximum protection: 7 "
            "initial protection: 5 sections: 0 flags: no relocation]\n");
  const auto narrow = read(MachOBuilder(Width::Bits32).segment("__DATA", {}).build());
  ASSERT_TRUE(narrow);
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment(narrow->segmentsForPartAtIndex(0)->at(0).bytes()),
            "segment (32 bit): '__DATA'\n[VM: 4096 size: 8192 offset: 768 size: 1024 maximum protection: 7 "
            "initial protection: 5 sections: 0 flags: no relocation]\n");
}

TEST_F(RecordDescriptions, DescribeSectionsOfBothForms) {
  const auto describe = [this](Width width) {
    const auto reader =
        read(MachOBuilder(width).segment("__TEXT", {{"__TEXT", "__text", "code", 0x80000400, {}, {}}}).build());
    return QELMachOProcessor::descriptionForSection(reader->sectionsByName().at(0).begin()->second.bytes());
  };
  EXPECT_EQ(describe(Width::Bits64),
            "section (64 bit) '__TEXT,__text': address: 4294971392 size: 4 offset: 184 alignment: 4 relocation offset: "
            "17 number of relocation entries: 18 flags: type: regular, pure instructions, some instructions");
  EXPECT_EQ(describe(Width::Bits32),
            "section (32 bit) '__TEXT,__text': address: 4096 size: 4 offset: 152 alignment: 4 relocation offset: 17 "
            "number of relocation entries: 18 flags: type: regular, pure instructions, some instructions");
}

TEST_F(RecordDescriptions, PrintNullForANameThatIsNotUtf8) {
  const auto reader = read(MachOBuilder().segment("\xFF", {{"\xFE", "\xFD", "", 0, {}, {}}}).build());
  ASSERT_TRUE(reader);
  EXPECT_THAT(QELMachOProcessor::descriptionForSegment(reader->segmentsForPartAtIndex(0)->at(0).bytes()),
              testing::StartsWith("segment (64 bit): '(null)'\n[VM: "));
  EXPECT_THAT(QELMachOProcessor::descriptionForSection(reader->sectionsByName().at(0).begin()->second.bytes()),
              testing::StartsWith("section (64 bit) '(null),(null)': "));
}

TEST(MachODescriptions, CallAnEmptyRecordNil) {
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment({}), "<nil>");
  EXPECT_EQ(QELMachOProcessor::descriptionForSection({}), "<nil>");
}

TEST(MachODescriptions, TellOtherLoadCommandsFromSegments) {
  const Data uuid = ByteWriter(Endian::Little).word(0x1B).word(24).bytes(Data(16)).data();
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment(uuid), "non-segment load command (type 1b, size 24)");
  const Data required = ByteWriter(Endian::Little).word(0x80000028).word(0xFFFFFFFF).data();
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment(required),
            "non-segment load command (type 80000028, size 4294967295)");
}

TEST(MachODescriptions, TellSectionsByTheirLength) {
  EXPECT_EQ(QELMachOProcessor::descriptionForSection(Data(72)), "non-section data of size 72\n");
  EXPECT_EQ(QELMachOProcessor::descriptionForSection(Data(1)), "non-section data of size 1\n");
}

TEST(MachODescriptions, TakeMissingFieldsOfAShortRecordAsZero) {
  const Data cut = ByteWriter(Endian::Little).word(0x19).word(72).data();
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment(cut),
            "segment (64 bit): ''\n[VM: 0 size: 0 offset: 0 size: 0 maximum protection: 0 initial protection: 0 "
            "sections: 0 flags: <none>]\n");
  EXPECT_EQ(QELMachOProcessor::descriptionForSegment(Data(1)), "non-segment load command (type 0, size 0)");
}

}  // namespace vantrell::tests
