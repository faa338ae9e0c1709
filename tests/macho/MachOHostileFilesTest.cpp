// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>

#include "macho/MachOReadingBudget.h"
#include "tests/macho/ReaderTest.h"

namespace vantrell::tests {

using macho::kHeaderSize64;
using macho::kSegmentSize64;
using macho::MachOReadingBudget;

namespace {

constexpr std::size_t kFirstCommand = kHeaderSize64;
constexpr std::size_t kNcmds = 16;  // within a header

std::vector<SectionToBuild> sections(std::size_t count, std::uint32_t offset, std::uint64_t size) {
  std::vector<SectionToBuild> result;
  for (std::size_t index = 0; index < count; ++index) {
    result.push_back({"__TEXT", fmt::format("s{:06}", index), "", 0, offset, size});
  }
  return result;
}

/// A fat file whose records all stand for the one part `part`.
Data manyTimes(std::size_t count, const Data& part) {
  ByteWriter header(Endian::Big);
  header.word(0xCAFEBABE).word(static_cast<std::uint32_t>(count));
  for (std::size_t index = 0; index < count; ++index) {
    header.word(MachOBuilder::kCpuType).word(MachOBuilder::kCpuSubtype);
    header.word(static_cast<std::uint32_t>(macho::kFatHeaderSize + count * macho::kFatArchSize));
    header.word(static_cast<std::uint32_t>(part.size())).word(0);
  }
  return header.bytes(part).data();
}

}  // namespace

/// Files that are small but ask for endless work. Each must be answered within a moment.
class HostileMachOFiles : public ReaderTest {
 protected:
  void SetUp() override { begin_ = std::chrono::steady_clock::now(); }
  // Generous: sanitizers and a busy machine are slow; without bounds these take hours.
  void TearDown() override { EXPECT_LT(std::chrono::steady_clock::now() - begin_, std::chrono::seconds(60)); }

 private:
  std::chrono::steady_clock::time_point begin_;
};

TEST_F(HostileMachOFiles, ACommandOfSizeZeroIsReadAgainForEachRemainingCount) {
  Data file = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "code", 0, {}, {}}}).commandCount(1000).build();
  putWord(file, kFirstCommand + 4, 0);
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->segmentsForPartAtIndex(0)->size(), 1000U);
  EXPECT_EQ(reader->sectionsByNameForPartAtIndex(0)->size(), 1U);
  EXPECT_EQ(reader->partDescriptors().at(0), sha1("code"));
}

TEST_F(HostileMachOFiles, ASegmentIsNotReadFourBillionTimes) {
  Data file = MachOBuilder().segment("__TEXT", {}).commandCount(0xFFFFFFFF).build();
  putWord(file, kFirstCommand + 4, 0);
  expectFailure(file, "QELMachOProcessor: invalid load commands in file part 0!");
}

TEST_F(HostileMachOFiles, ASegmentWithManySectionsIsNotReadFourBillionTimes) {
  Data file = MachOBuilder().segment("__TEXT", sections(10'000, 0, 0)).commandCount(0xFFFFFFFF).build();
  putWord(file, kFirstCommand + 4, 0);
  expectFailure(file, "QELMachOProcessor: invalid load commands in file part 0!");
}

TEST_F(HostileMachOFiles, ACommandOfAnotherKindIsNotReadFourBillionTimes) {
  Data file = MachOBuilder().segment("__TEXT", {}).command(0x1B, Data(16)).commandCount(0xFFFFFFFF).build();
  putWord(file, kFirstCommand + kSegmentSize64 + 4, 0);
  expectFailure(file, "QELMachOProcessor: invalid load commands in file part 0!");
}

TEST_F(HostileMachOFiles, ASignatureIsNotCopiedFourBillionTimes) {
  constexpr std::string_view kMessage =
      "QELMachOProcessor: error in codesign linkedit command: could not access code signature!";
  Data file = MachOBuilder().signature(std::string(1 << 20, 's')).commandCount(0xFFFFFFFF).build();
  putWord(file, kFirstCommand + 4, 0);
  expectFailure(file, kMessage);
  Data empty = MachOBuilder().signature("").commandCount(0xFFFFFFFF).build();
  putWord(empty, kFirstCommand + 4, 0);
  expectFailure(empty, kMessage);
  // Within the limit each reading adds its copy.
  putWord(file, kNcmds, 5);
  const auto reader = read(file);
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->signaturesPerPart().size(), 5U);
}

TEST_F(HostileMachOFiles, CommandsAreCountedAcrossParts) {
  Data part = MachOBuilder().segment("__TEXT", {}).command(0x1B, Data(16)).commandCount(3000).build();
  putWord(part, kFirstCommand + kSegmentSize64 + 4, 0);
  EXPECT_TRUE(read(manyTimes(100, part)));
  expectFailure(manyTimes(400, part), "QELMachOProcessor: invalid load commands in file part 349!");
}

TEST_F(HostileMachOFiles, MorePartsThanTheKernelReadsAreRefused) {
  const Data part = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "code", 0, {}, {}}}).build();
  const auto reader = read(manyTimes(MachOReadingBudget::kMaximumParts, part));
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->countOfFatFileParts(), MachOReadingBudget::kMaximumParts);
  EXPECT_EQ(reader->partDescriptors().back(), sha1("code"));
  expectFailure(manyTimes(MachOReadingBudget::kMaximumParts + 1, part),
                "QELMachOProcessor: fat file structure invalid!");
}

TEST_F(HostileMachOFiles, SectionsThatAllCoverTheWholeFileAreNotAllHashed) {
  const Data file = MachOBuilder().padding(4 << 20).segment("__TEXT", sections(20'000, 0, 4 << 20)).build();
  expectException(file);
}

TEST_F(HostileMachOFiles, SomeSectionsMayOverlap) {
  const Data file = MachOBuilder().padding(1 << 20).segment("__TEXT", sections(8, 0, 1 << 20)).build();
  std::string contents;
  for (int count = 0; count < 8; ++count) contents += textOf(DataView(file).first(1 << 20));
  EXPECT_EQ(descriptorOf(file), sha1(contents));
}

TEST_F(HostileMachOFiles, PartsThatShareTheirContentsAreNotHashedWithoutEnd) {
  const Data part = MachOBuilder().padding(8 << 20).segment("__TEXT", sections(1, 0, 8 << 20)).build();
  expectException(manyTimes(MachOReadingBudget::kMaximumParts, part));
}

TEST_F(HostileMachOFiles, AWellFormedFileUsesUpNoBudget) {
  // As many sections as a part's symbol table can number, in as many parts as the kernel reads, none overlapping.
  const Data part = MachOBuilder().padding(256).segment("__TEXT", sections(255, 0, 1)).build();
  EXPECT_TRUE(read(manyTimes(MachOReadingBudget::kMaximumParts, part)));
}

}  // namespace vantrell::tests
