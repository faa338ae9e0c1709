// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/MachOReport.h"
#include "tests/macho/ReaderTest.h"

namespace vantrell::tests {

using macho::Width;

class MachOReport : public ReaderTest {};

TEST_F(MachOReport, ListsAllOfAThinFile) {
  const Data file = MachOBuilder()
                        .segment("__PAGEZERO", {})
                        .segment("__TEXT", {{"__TEXT", "__text", "abc", 0x80000400, {}, {}}})
                        .signature("blob")
                        .build();
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_EQ(machOReport(*reader),
            "part 0: CPU type 16777223-3, offset 0, size 279, alignment 0\n"
            "  header (64 bit): executable, 3 load commands of 240 bytes, flags: no undefined references, for dynamic "
            "linker, two-level namespace\n"
            "  segment (64 bit): '__PAGEZERO'\n"
            "  [VM: 4294971392 size: 8192 offset: 768 size: 1024 maximum protection: 7 initial protection: 5 sections: "
            "0 flags: no relocation]\n"
            "  segment (64 bit): '__TEXT'\n"
            "  [VM: 4294971392 size: 8192 offset: 768 size: 1024 maximum protection: 7 initial protection: 5 sections: "
            "1 flags: no relocation]\n"
            "  section (64 bit) '__TEXT,__text': address: 4294971392 size: 3 offset: 272 alignment: 4 relocation "
            "offset: 17 number of relocation entries: 18 flags: type: regular, pure instructions, some instructions\n"
            "  descriptor: a9993e364706816aba3e25717850c26c9cd0d89d\n"
            "signature 0: 4 bytes\n");
}

TEST_F(MachOReport, ListsEveryPartOfAFatFile) {
  const Data first = MachOBuilder().segment("__TEXT", {}).build();
  const Data second = MachOBuilder(Width::Bits32, Endian::Big).cpu(18, 0).segment("__TEXT", {}).build();
  const auto reader = read(fatFile({{.bytes = first}, {second, 18, 0, {}}}));
  ASSERT_TRUE(reader);
  const std::string report = machOReport(*reader);
  EXPECT_THAT(report, testing::HasSubstr("part 0: CPU type 16777223-3, offset 48, size 104, alignment 4\n"));
  EXPECT_THAT(report, testing::HasSubstr("part 1: CPU type 18-0, offset 160, size 84, alignment 4\n"));
  EXPECT_THAT(report, testing::HasSubstr("  header (32 bit, opposite byte order): executable, 1 load commands"));
  EXPECT_THAT(report, testing::Not(testing::HasSubstr("signature")));
}

TEST_F(MachOReport, LetsNoNameFromTheFileActOnTheTerminal) {
  const auto reader = read(MachOBuilder()
                               .segment("a\nb\x1B[2J", {{"\xC2\x9B"
                                                         "31m",
                                                         "x\n  descriptor:",
                                                         "",
                                                         0,
                                                         {},
                                                         {}},
                                                        {"\x7F\r", "é", "", 0, {}, {}}})
                               .build());
  ASSERT_TRUE(reader);
  const std::string report = machOReport(*reader);
  EXPECT_THAT(report, testing::HasSubstr("  segment (64 bit): 'a\\x0ab\\x1b[2J'\n  [VM: "));
  EXPECT_THAT(report, testing::HasSubstr("  section (64 bit) '\\x9b31m,x\\x0a  descriptor:': address"));
  EXPECT_THAT(report, testing::HasSubstr("'\\x7f\\x0d,é'"));
  for (const char byte : report) EXPECT_TRUE(byte == '\n' || static_cast<unsigned char>(byte) >= 0x20);
}

}  // namespace vantrell::tests
