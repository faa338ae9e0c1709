// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>

#include <elf.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "host/linux/ElfExecutableDescriptor.h"
#include "host/linux/ElfFile.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/NettleCryptography.h"
#include "tests/macho/MachOBuilder.h"
#include "tests/macho/ToolRunner.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

constexpr char kSource[] = R"(
static int zeroes[5000];
const char text[] = "a text that can be found";
int answer = 42;
int main(void) { return zeroes[answer] + text[3]; }
)";

Data contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Data(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

class ElfDescriptor : public testing::Test {
 protected:
  Result<std::vector<std::string>> read(const std::string& path) { return reader_.descriptorsForFileAtPath(path); }
  Result<std::vector<std::string>> read(const Data& bytes) { return read(folder_.makeFile("changed", textOf(bytes))); }

  std::string descriptorOf(const std::string& path) {
    const auto descriptors = read(path);
    EXPECT_TRUE(descriptors) << path;
    return descriptors ? descriptors->at(0) : "";
  }
  std::string descriptorOf(const Data& bytes) { return descriptorOf(folder_.makeFile("changed", textOf(bytes))); }

  void expectRefused(const Data& bytes) {
    const auto descriptors = read(bytes);
    ASSERT_FALSE(descriptors);
    EXPECT_TRUE(descriptors.error().isPosix(posix::kBadMessage)) << descriptors.error().code();
  }

  std::string build(const std::string& name, const std::string& source = kSource,
                    const std::vector<std::string>& options = {}) {
    const std::string output = folder_.path(name);
    std::vector<std::string> arguments = {"-O1", "-g", folder_.makeFile(name + ".c", source), "-o", output};
    arguments.insert(arguments.end(), options.begin(), options.end());
    runTool("cc", arguments);
    return output;
  }

  std::string sha1(std::string_view text) {
    return fmt::format("{:02x}", fmt::join(cryptography_.sha1(bytesOf(text)).value(), ""));
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  host::NettleCryptography cryptography_;
  host::ElfExecutableDescriptor reader_{fileSystem_, cryptography_};
};

TEST_F(ElfDescriptor, IsOneOfFortyLowerCaseDigits) {
  EXPECT_THAT(read("/proc/self/exe").value(), ElementsAre(MatchesRegex("[0-9a-f]{40}")));
}

TEST_F(ElfDescriptor, IsTheDigestOfTheAllocatedSectionsAsAnotherReaderListsThem) {
  VANTRELL_NEEDS_TOOL("cc");
  VANTRELL_NEEDS_TOOL("readelf");
  const std::string path = build("program");
  const Data file = contentsOf(path);
  // "  [ 1] .interp PROGBITS 0000000000000318 000318 00001c 00 A 0 0 1": address, offset, size, entry size, flags.
  std::istringstream lines(runTool("readelf", {"--section-headers", "--wide", path}));
  std::map<std::string, std::string> contents;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t bracket = line.find("] .");
    if (bracket == std::string::npos) continue;
    std::istringstream fields(line.substr(bracket + 2));
    std::string name, type, address, flags;
    std::size_t offset = 0, size = 0, entrySize = 0;
    fields >> name >> type >> address >> std::hex >> offset >> size >> entrySize >> flags;
    if (flags.find('A') == std::string::npos || type == "NOBITS") continue;
    contents[name] = textOf(DataView(file).subspan(offset, size));
  }
  ASSERT_TRUE(contents.contains(".text") && contents.contains(".data") && !contents.contains(".bss"));
  std::string all;
  for (const auto& [name, bytes] : contents) all += bytes;
  EXPECT_EQ(descriptorOf(path), sha1(all));
}

TEST_F(ElfDescriptor, StaysWhenTheProgramIsStripped) {
  VANTRELL_NEEDS_TOOL("cc");
  VANTRELL_NEEDS_TOOL("strip");
  const std::string path = build("program");
  const std::string stripped = folder_.path("stripped");
  runTool("strip", {"-o", stripped, path});
  EXPECT_LT(contentsOf(stripped).size(), contentsOf(path).size());
  EXPECT_EQ(descriptorOf(stripped), descriptorOf(path));
}

TEST_F(ElfDescriptor, StaysWhenWhatIsNotAllocatedChanges) {
  VANTRELL_NEEDS_TOOL("cc");
  Data file = contentsOf(build("program"));
  const std::string descriptor = descriptorOf(file);
  const auto comment = host::ElfFile::fromBytes(file).value().contentsOf(".comment");
  ASSERT_TRUE(comment && !comment->empty());
  file[static_cast<std::size_t>(comment->data() - file.data())] ^= 1;
  EXPECT_EQ(descriptorOf(file), descriptor);
}

TEST_F(ElfDescriptor, ChangesWithAByteOfCodeOrData) {
  VANTRELL_NEEDS_TOOL("cc");
  Data file = contentsOf(build("program"));
  const std::string descriptor = descriptorOf(file);
  for (const char* name : {".text", ".rodata", ".data", ".interp", ".dynamic"}) {
    const auto section = host::ElfFile::fromBytes(file).value().contentsOf(name);
    ASSERT_TRUE(section && !section->empty()) << name;
    for (const std::size_t index : {std::size_t{0}, section->size() - 1}) {
      const std::size_t place = static_cast<std::size_t>(section->data() - file.data()) + index;
      file[place] ^= 1;
      EXPECT_NE(descriptorOf(file), descriptor) << name;
      file[place] ^= 1;
    }
  }
  EXPECT_EQ(descriptorOf(file), descriptor);
}

TEST_F(ElfDescriptor, CountsTheLastOfTwoSectionsWithOneName) {
  VANTRELL_NEEDS_TOOL("cc");
  // Two sections of one name, kept apart by their groups in an unlinked file.
  const std::string source = R"(
    asm(".pushsection .twin,\"aG\",%progbits,first,comdat\n .ascii \"one\"\n .popsection\n"
        ".pushsection .twin,\"aG\",%progbits,second,comdat\n .ascii \"second\"\n .popsection\n");
  )";
  const std::string path = build("twins.o", source, {"-c", "-g0"});
  Data file = contentsOf(path);
  const auto elf = host::ElfFile::fromBytes(file).value();
  std::vector<std::string> twins;
  std::map<std::string, std::string> expected;
  for (const host::ElfSection& section : elf.sections()) {
    if (section.name == ".twin") twins.emplace_back(textOf(section.contents));
    if (section.isAllocated && section.occupiesFileSpace) {
      expected[std::string(section.name)] = textOf(section.contents);
    }
  }
  ASSERT_THAT(twins, ElementsAre("one", "second"));
  EXPECT_EQ(expected.at(".twin"), "second");
  std::string all;
  for (const auto& [name, bytes] : expected) all += bytes;
  const std::string descriptor = descriptorOf(file);
  EXPECT_EQ(descriptor, sha1(all));

  const auto place = [&](std::string_view text) {
    return static_cast<std::size_t>(std::ranges::search(file, bytesOf(text)).begin() - file.begin());
  };
  file[place("one")] ^= 1;
  EXPECT_EQ(descriptorOf(file), descriptor);
  file[place("second")] ^= 1;
  EXPECT_NE(descriptorOf(file), descriptor);
}

TEST_F(ElfDescriptor, ReadsTheOtherClass) {
  VANTRELL_NEEDS_TOOL("clang-19");
  const std::string path = folder_.path("narrow.o");
  runTool("clang-19", {"-target", "i386-linux-gnu", "-c",
                       folder_.makeFile("narrow.c", "const char text[] = \"contents\";"), "-o", path});
  EXPECT_EQ(contentsOf(path).at(EI_CLASS), ELFCLASS32);
  EXPECT_EQ(descriptorOf(path), sha1(std::string_view("contents", 9)));
}

TEST_F(ElfDescriptor, ReadsTheOtherByteOrder) {
  VANTRELL_NEEDS_TOOL("clang-19");
  const std::string path = folder_.path("big.o");
  runTool("clang-19", {"-target", "powerpc64-linux-gnu", "-c", "-fno-asynchronous-unwind-tables",
                       folder_.makeFile("big.c", "const char text[] = \"contents\";"), "-o", path});
  EXPECT_EQ(contentsOf(path).at(EI_DATA), ELFDATA2MSB);
  EXPECT_EQ(descriptorOf(path), sha1(std::string_view("contents", 9)));
}

TEST_F(ElfDescriptor, RefusesEveryCutOfAProgram) {
  VANTRELL_NEEDS_TOOL("cc");
  const Data file = contentsOf(build("program"));
  const auto refuse = [&](std::size_t size) {
    const auto descriptors =
        host::ElfFile::fromBytes(Data(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)));
    ASSERT_FALSE(descriptors) << size;
    EXPECT_TRUE(descriptors.error().isPosix(size < SELFMAG ? posix::kWrongFormat : posix::kBadMessage)) << size;
  };
  for (std::size_t size = 0; size < 200; ++size) refuse(size);
  for (std::size_t size = 200; size < file.size(); size += 101) refuse(size);
  refuse(file.size() - 1);  // the section headers end the file
  expectRefused(Data(file.begin(), file.end() - 1));
}

TEST_F(ElfDescriptor, RefusesCorruptHeaders) {
  VANTRELL_NEEDS_TOOL("cc");
  const Data file = contentsOf(build("program"));
  const auto withBytes = [&](std::size_t offset, std::initializer_list<std::uint8_t> bytes) {
    Data changed = file;
    std::ranges::copy(bytes, changed.begin() + static_cast<std::ptrdiff_t>(offset));
    return changed;
  };
  expectRefused(withBytes(EI_CLASS, {3}));
  expectRefused(withBytes(EI_DATA, {0}));
  expectRefused(withBytes(EI_VERSION, {9}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shoff), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shoff), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shentsize), {1, 0}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shentsize), {0, 0}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shnum), {0, 0}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shnum), {0xFF, 0xFF}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shstrndx), {0xFE, 0xFE}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shstrndx), {0xFF, 0xFF}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shstrndx), {0, 0}));
  expectRefused(withBytes(offsetof(Elf64_Ehdr, e_shstrndx), {1, 0}));
}

TEST_F(ElfDescriptor, RefusesSectionsThatPointBeyondTheFile) {
  VANTRELL_NEEDS_TOOL("cc");
  const Data file = contentsOf(build("program"));
  Elf64_Ehdr header;
  std::memcpy(&header, file.data(), sizeof header);
  const auto withSection = [&](auto change) {
    Data changed = file;
    Elf64_Shdr section;
    std::uint8_t* place = changed.data() + header.e_shoff + sizeof section;  // section 1
    std::memcpy(&section, place, sizeof section);
    change(section);
    std::memcpy(place, &section, sizeof section);
    return changed;
  };
  expectRefused(withSection([](Elf64_Shdr& section) { section.sh_offset = UINT64_MAX; }));
  expectRefused(withSection([](Elf64_Shdr& section) { section.sh_size = UINT64_MAX; }));
  expectRefused(withSection([](Elf64_Shdr& section) { section.sh_size = 0 - section.sh_offset; }));
  expectRefused(withSection([&](Elf64_Shdr& section) { section.sh_size = file.size() - section.sh_offset + 1; }));
  expectRefused(withSection([](Elf64_Shdr& section) { section.sh_name = UINT32_MAX; }));
  EXPECT_TRUE(read(withSection([&](Elf64_Shdr& section) {
    section.sh_offset = file.size();
    section.sh_size = 0;
  })));
  EXPECT_TRUE(read(withSection([](Elf64_Shdr& section) {
    section.sh_type = SHT_NOBITS;
    section.sh_offset = section.sh_size = UINT64_MAX;
  })));
}

TEST_F(ElfDescriptor, RefusesContentsThatAreTogetherLongerThanTheFile) {
  VANTRELL_NEEDS_TOOL("cc");
  Data file = contentsOf(build("program"));
  Elf64_Ehdr header;
  std::memcpy(&header, file.data(), sizeof header);
  for (std::size_t index = 1; index < header.e_shnum; ++index) {
    if (index == header.e_shstrndx) continue;
    Elf64_Shdr section;
    std::uint8_t* place = file.data() + header.e_shoff + index * sizeof section;
    std::memcpy(&section, place, sizeof section);
    section.sh_offset = 0;
    section.sh_size = file.size();
    std::memcpy(place, &section, sizeof section);
  }
  EXPECT_TRUE(host::ElfFile::fromBytes(file));
  expectRefused(file);
}

TEST_F(ElfDescriptor, RefusesAProgramWithoutSections) {
  VANTRELL_NEEDS_TOOL("cc");
  Data file = contentsOf(build("program"));
  std::fill_n(file.begin() + offsetof(Elf64_Ehdr, e_shoff), 8, std::uint8_t{0});
  std::fill_n(file.begin() + offsetof(Elf64_Ehdr, e_shnum), 4, std::uint8_t{0});
  expectRefused(file);
}

TEST_F(ElfDescriptor, SurvivesEveryChangedByteOfTheHeaders) {
  VANTRELL_NEEDS_TOOL("cc");
  const Data file = contentsOf(build("small.o", "int answer = 42;", {"-c", "-g0"}));
  for (std::size_t index = 0; index < file.size(); ++index) {
    for (const std::uint8_t value : {std::uint8_t{0}, std::uint8_t{0x7F}, std::uint8_t{0xFF}}) {
      Data changed = file;
      changed[index] = value;
      const auto elf = host::ElfFile::fromBytes(changed);
      if (!elf) continue;
      for (const host::ElfSection& section : elf->sections()) {
        if (section.contents.empty()) continue;
        EXPECT_GE(section.contents.data(), changed.data());
        EXPECT_LE(section.contents.data() + section.contents.size(), changed.data() + changed.size());
      }
    }
  }
}

TEST_F(ElfDescriptor, ReportsWhatTheLoadingOfTheFileReports) {
  EXPECT_TRUE(read(folder_.path("missing")).error().isPosix(posix::kNoEntry));
  EXPECT_TRUE(read(folder_.path()).error().isPosix(posix::kInvalidArgument));
  EXPECT_TRUE(read("").error().isPosix());
}

/// What every implementation of the role must do, on every host.
class ExecutableDescriptorContract : public testing::Test {
 protected:
  void expectNotThisFormat(const Data& bytes) {
    const auto descriptors = reader_->descriptorsForFileAtPath(folder_.makeFile("file", textOf(bytes)));
    ASSERT_FALSE(descriptors);
    EXPECT_TRUE(descriptors.error().isPosix(posix::kWrongFormat)) << descriptors.error().code();
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  host::NettleCryptography cryptography_;
  std::unique_ptr<host::ExecutableDescriptor> reader_ =
      std::make_unique<host::ElfExecutableDescriptor>(fileSystem_, cryptography_);
};

TEST_F(ExecutableDescriptorContract, AMachOFileIsNeverTheHostsOwnFormat) {
  const Data thin = MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", "code", 0, {}, {}}}).build();
  expectNotThisFormat(thin);
  expectNotThisFormat(fatFile({{.bytes = thin}}));
}

TEST_F(ExecutableDescriptorContract, AFileOfNoExecutableFormatIsNotTheHostsOwn) {
  expectNotThisFormat({});
  expectNotThisFormat(dataOf("#!/bin/sh\nexit 0\n"));
  expectNotThisFormat(
      dataOf("\x7F"
             "EL"));
}

}  // namespace vantrell::tests
