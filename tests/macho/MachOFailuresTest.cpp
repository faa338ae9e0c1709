// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/macho/ReaderTest.h"

namespace vantrell::tests {

using macho::kHeaderSize32;
using macho::kHeaderSize64;
using macho::kSegmentSize64;
using macho::Width;

namespace {

constexpr std::size_t kFirstCommand = kHeaderSize64;  // in thin 64-bit files
constexpr std::size_t kSegmentSectionCount = 64;      // within segment_command_64
constexpr std::uint32_t kUuidCommand = 0x1B;

Data thinFile() {
  return MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "code", 0, {}, {}}}).build();
}

Data twoParts() {
  return fatFile({{.bytes = thinFile()}, {.bytes = thinFile()}});
}

/// Where the record of part `index` has its field number `field`.
std::size_t fatField(std::size_t index, std::size_t field) {
  return macho::kFatHeaderSize + index * macho::kFatArchSize + 4 * field;
}

std::uint32_t offsetOfSecondPart(const Data& file) {
  return macho::readWord(file, fatField(1, 2), macho::Swapped::Yes);
}

}  // namespace

class MachOFailures : public ReaderTest {};

TEST_F(MachOFailures, APartBeyondTheFile) {
  Data file = twoParts();
  const auto size = static_cast<std::uint32_t>(file.size());
  for (const std::uint32_t offset : {size - 3, size, size + 1, 0xFFFFFFFFU}) {
    putWord(file, fatField(1, 2), offset, Endian::Big);
    expectFailure(file, fmt::format("QELMachOProcessor: fat file header 1 has inconsistent offset {}.", offset));
  }
}

TEST_F(MachOFailures, ACutHeader) {
  const Data narrow = MachOBuilder(Width::Bits32).segment("__TEXT", {}).build();
  const Data header(narrow.begin(), narrow.begin() + kHeaderSize32 - 1);
  expectFailure(fatFile({{.bytes = header}}), "QELMachOProcessor: mach file structure (32) inconsistent in part 0.");
  const Data wide = thinFile();
  for (const std::size_t size : {kHeaderSize32, kHeaderSize64 - 1}) {
    expectFailure(DataView(wide).first(size), "QELMachOProcessor: mach file structure (64) inconsistent in part 0.");
  }
}

TEST_F(MachOFailures, ACutHeaderInTheOtherByteOrder) {
  const Data narrow = MachOBuilder(Width::Bits32, Endian::Big).segment("__TEXT", {}).build();
  const Data header(narrow.begin(), narrow.begin() + kHeaderSize32 - 1);
  expectFailure(fatFile({{.bytes = header}}), "QELMachOProcessor: mach file structure (32) inconsistent in part 0.");
  const Data wide = MachOBuilder(Width::Bits64, Endian::Big).segment("__TEXT", {}).build();
  expectFailure(DataView(wide).first(kHeaderSize64 - 1),
                "QELMachOProcessor: mach file structure (64) inconsistent in part 0.");
}

TEST_F(MachOFailures, ABadMagicInAPart) {
  Data file = twoParts();
  putWord(file, offsetOfSecondPart(file), 0x0BADCAFE);
  expectFailure(file, "QELMachOProcessor: bad magic number (badcafe) of mach header in part 1.");
}

TEST_F(MachOFailures, AFatFileWithinAFatFile) {
  Data file = twoParts();
  putWord(file, offsetOfSecondPart(file), 0xCAFEBABE, Endian::Big);
  expectFailure(file, "QELMachOProcessor: bad magic number (bebafeca) of mach header in part 1.");
}

TEST_F(MachOFailures, ARecordThatDeclaresAnotherType) {
  Data file = twoParts();
  putWord(file, fatField(1, 0), 0xFFFFFFFE, Endian::Big);
  expectFailure(file,
                "QELMachOProcessor: fat file part 1 declares CPU type (-2-3) for mach-o component with type "
                "(16777223-3).");
}

TEST_F(MachOFailures, ARecordWithoutTheCapabilityBitsOfTheHeader) {
  const Data part = MachOBuilder().cpu(MachOBuilder::kCpuType, static_cast<std::int32_t>(0x80000003)).build();
  expectFailure(fatFile({{.bytes = part}}),
                "QELMachOProcessor: fat file part 0 declares CPU type (16777223-3) for mach-o component with type "
                "(16777223--2147483645).");
}

TEST_F(MachOFailures, HeadersAreCheckedInAllPartsBeforeAnyCommands) {
  Data file = twoParts();
  putWord(file, offsetOfSecondPart(file), 0);
  putWord(file, macho::readWord(file, fatField(0, 2), macho::Swapped::Yes) + 20, 0xFFFFFFFF);  // sizeofcmds of part 0
  expectFailure(file, "QELMachOProcessor: bad magic number (0) of mach header in part 1.");
}

TEST_F(MachOFailures, LoadCommandsBeyondTheFile) {
  Data file = thinFile();
  const auto room = static_cast<std::uint32_t>(file.size() - kHeaderSize64);
  putWord(file, 20, room);
  EXPECT_TRUE(read(file));
  for (const std::uint32_t size : {room + 1, 0xFFFFFFFFU}) {
    putWord(file, 20, size);
    expectFailure(file, "QELMachOProcessor: invalid load commands in file part 0!");
  }
}

TEST_F(MachOFailures, LoadCommandsBeyondTheFileInALaterPart) {
  Data file = twoParts();
  putWord(file, offsetOfSecondPart(file) + 20, 0x10000);
  expectFailure(file, "QELMachOProcessor: invalid load commands in file part 1!");
}

TEST_F(MachOFailures, ALoadCommandBeyondTheFile) {
  Data file = MachOBuilder().segment("__TEXT", {}).command(kUuidCommand, Data(16)).build();
  const std::size_t second = kFirstCommand + kSegmentSize64;
  const auto room = static_cast<std::uint32_t>(file.size() - second);
  putWord(file, second + 4, room);
  EXPECT_TRUE(read(file));
  putWord(file, second + 4, room + 1);
  expectFailure(file, "QELMachOProcessor: invalid size (25) of load command 1 in file part 0!");
  putWord(file, second + 4, 0xFFFFFFFF);
  expectFailure(file, "QELMachOProcessor: invalid size (4294967295) of load command 1 in file part 0!");
}

TEST_F(MachOFailures, MoreLoadCommandsThanTheFileHolds) {
  expectFailure(MachOBuilder().segment("__TEXT", {}).commandCount(2).build(),
                "QELMachOProcessor: invalid load commands in file part 0!");
}

TEST_F(MachOFailures, AFirstLoadCommandOfAnotherKindFailsSilently) {
  EXPECT_EQ(read(MachOBuilder().command(kUuidCommand, Data(16)).segment("__TEXT", {}).build()), nullptr);
  EXPECT_TRUE(read(MachOBuilder().segment("__TEXT", {}).command(kUuidCommand, Data(16)).build()));
  EXPECT_TRUE(read(MachOBuilder().signature("blob").command(kUuidCommand, Data(16)).build()));
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(MachOFailures, ALaterPartMayBeginWithAnyLoadCommand) {
  const Data second = MachOBuilder().command(kUuidCommand, Data(16)).segment("__TEXT", {}).build();
  EXPECT_TRUE(read(fatFile({{.bytes = thinFile()}, {.bytes = second}})));
  EXPECT_EQ(read(fatFile({{.bytes = second}, {.bytes = thinFile()}})), nullptr);
}

TEST_F(MachOFailures, NoLoadCommandsAtAllFailSilently) {
  const Data bare = MachOBuilder().build();
  EXPECT_EQ(read(bare), nullptr);
  EXPECT_EQ(read(fatFile({{.bytes = bare}, {.bytes = bare}})), nullptr);
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(MachOFailures, APartWithoutLoadCommandsPassesBesideOneWithThem) {
  const Data bare = MachOBuilder().build();
  for (const auto& file :
       {fatFile({{.bytes = bare}, {.bytes = thinFile()}}), fatFile({{.bytes = thinFile()}, {.bytes = bare}})}) {
    const auto reader = read(file);
    ASSERT_TRUE(reader);
    EXPECT_THAT(reader->partDescriptors(), testing::UnorderedElementsAre(sha1(""), sha1("code")));
  }
}

TEST_F(MachOFailures, MoreSectionsThanTheFileHolds) {
  Data wide = MachOBuilder().segment("__TEXT", {}).build();
  for (const std::uint32_t count : {1U, 0xFFFFFFFFU}) {
    putWord(wide, kFirstCommand + kSegmentSectionCount, count);
    expectFailure(wide, fmt::format("QELMachOProcessor: error in 64-bit segment command: could not find expected {} "
                                    "sections!",
                                    count));
  }
  Data narrow = MachOBuilder(Width::Bits32, Endian::Big).segment("__TEXT", {}).build();
  putWord(narrow, kHeaderSize32 + 48, 7, Endian::Big);
  expectFailure(narrow, "QELMachOProcessor: error in 32-bit segment command: could not find expected 7 sections!");
}

TEST_F(MachOFailures, ACutSegmentCommand) {
  // The command says 8 bytes, which the file holds; the segment's own fields lie beyond its end.
  const Data file = MachOBuilder().command(macho::kSegment64Command).build();
  expectFailure(file, "QELMachOProcessor: error in 64-bit segment command: could not find expected 0 sections!");
}

TEST_F(MachOFailures, ASignatureBeyondTheFile) {
  constexpr std::string_view kMessage =
      "QELMachOProcessor: error in codesign linkedit command: could not access code signature!";
  Data file = MachOBuilder().signature("blob").build();
  putWord(file, kFirstCommand + 12, 5);
  expectFailure(file, kMessage);
  putWord(file, kFirstCommand + 12, 0xFFFFFFFF);
  expectFailure(file, kMessage);
  putWord(file, kFirstCommand + 12, 0);
  putWord(file, kFirstCommand + 8, static_cast<std::uint32_t>(file.size()));
  EXPECT_TRUE(read(file));
  putWord(file, kFirstCommand + 8, static_cast<std::uint32_t>(file.size() + 1));
  expectFailure(file, kMessage);
  putWord(file, kFirstCommand + 8, 0xFFFFFFFF);
  putWord(file, kFirstCommand + 12, 0xFFFFFFFF);
  expectFailure(file, kMessage);
}

TEST_F(MachOFailures, ACutSignatureCommand) {
  expectFailure(MachOBuilder().command(macho::kCodeSignatureCommand).build(),
                "QELMachOProcessor: error in codesign linkedit command: could not access code signature!");
}

TEST_F(MachOFailures, ASectionBeyondTheFileEndsTheReadingByAnException) {
  const auto withSection = [](std::uint32_t flags, std::uint32_t offset, std::uint64_t size) {
    return MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "", flags, offset, size}}).build();
  };
  const auto end = static_cast<std::uint32_t>(withSection(0, 0, 0).size());
  EXPECT_EQ(descriptorOf(withSection(0, end - 1, 1)).size(), 40U);
  EXPECT_EQ(descriptorOf(withSection(0, end, 0)), sha1(""));
  expectException(withSection(0, end - 1, 2));
  expectException(withSection(0, end, 1));
  expectException(withSection(0, end + 1, 0));
  expectException(withSection(0, 0xFFFFFFFF, 1));
  // The end would wrap around to a place within the file.
  expectException(withSection(0, 200, 0xFFFFFFFFFFFFFFFF));
  expectException(withSection(0x12, end + 1, 8));
}

TEST_F(MachOFailures, AnExceptionInALaterPartEndsTheReading) {
  const Data bad = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "", 0, 0x10000, 1}}).build();
  expectException(fatFile({{.bytes = thinFile()}, {.bytes = bad}}));
}

TEST_F(MachOFailures, EveryCutOfAFileIsRefusedOrRead) {
  const Data file = fatFile({{.bytes = thinFile()},
                             {.bytes = MachOBuilder(Width::Bits32, Endian::Big)
                                           .segment("__TEXT", {{"__TEXT", "__text", "code", 0, {}, {}}})
                                           .signature("blob")
                                           .build()}});
  ASSERT_TRUE(read(file));
  for (std::size_t size = 0; size < file.size(); ++size) {
    const Data cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));  // a copy: its end is guarded
    try {
      EXPECT_EQ(read(cut), nullptr) << size;
    } catch (const Exception&) {
    }
  }
}

}  // namespace vantrell::tests
