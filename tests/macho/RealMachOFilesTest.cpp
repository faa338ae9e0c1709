// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/macho/ReaderTest.h"
#include "tests/macho/ToolRunner.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

namespace {

constexpr char kCompiler[] = "clang-19";
constexpr char kLinker[] = "ld64.lld-19";
constexpr char kJoiner[] = "llvm-lipo-19";
constexpr char kStripper[] = "llvm-strip-19";
constexpr char kReader[] = "llvm-readobj-19";

constexpr char kSource[] = R"(
static int counter = 7;
int zeroes[1000];
const char text[] = "hello, world";
__attribute__((section("__DATA,__custom"))) int custom = 99;
int helper(int x) { return x + counter + zeroes[x] + custom + ANSWER; }
int main(void) { return helper((int)sizeof text) + text[3]; }
)";

// A thread-local variable without a value makes a section of type 0x12.
constexpr char kThreadLocalSource[] = R"(
_Thread_local int unset[40];
_Thread_local int set = 4;
int main(void) { return unset[3] + set; }
)";

Data contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Data(std::istreambuf_iterator<char>(file), {});
}

/// One section as another reader of the format prints it.
struct ListedSection {
  std::uint64_t size = 0;
  std::uint64_t offset = 0;
  std::uint64_t type = 0;
};

std::uint64_t numberIn(std::string_view text) {
  const bool isHex = text.starts_with("0x");
  if (isHex) text.remove_prefix(2);
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, isHex ? 16 : 10);
  return value;
}

/// Lines such as "Name: __text (5F 5F …)", "Size: 0x7B", "Offset: 1296", "Type: Regular (0x0)", in this order.
std::map<std::string, ListedSection> sectionsListedFor(const std::string& path) {
  std::map<std::string, ListedSection> sections;
  std::istringstream lines(runTool(kReader, {"--sections", path}));
  std::string name;
  std::string key;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t colon = line.find(": ");
    if (colon == std::string::npos) continue;
    const std::string field = line.substr(line.find_first_not_of(' '), colon - line.find_first_not_of(' '));
    const std::string value = line.substr(colon + 2);
    if (field == "Name") name = value.substr(0, value.find(' '));
    if (field == "Segment") key = value.substr(0, value.find(' ')) + "," + name;
    if (field == "Size") sections[key].size = numberIn(value);
    if (field == "Offset") sections[key].offset = numberIn(value);
    if (field == "Type") sections[key].type = numberIn(std::string_view(value).substr(value.find("0x")));
  }
  return sections;
}

}  // namespace

class RealMachOFiles : public ReaderTest {
 protected:
  /// An unlinked file for `target`.
  std::string compile(const std::string& target, const char* source, const std::string& name = "object",
                      const std::string& answer = "42") {
    const std::string object = folder_.path(name + "-" + target + ".o");
    runTool(kCompiler, {"-target", target, "-O1", "-DANSWER=" + answer, "-c", folder_.makeFile(name + ".c", source),
                        "-o", object});
    return object;
  }

  std::string link(const std::string& arch, const std::string& object, const std::string& name,
                   const std::vector<std::string>& options = {"-e", "_main"}) {
    const std::string output = folder_.path(name);
    std::vector<std::string> arguments = {"-arch", arch,   "-platform_version", "macos",          "11.0", "11.0",
                                          "-o",    output, "-undefined",        "dynamic_lookup", object};
    arguments.insert(arguments.end(), options.begin(), options.end());
    runTool(kLinker, arguments);
    return output;
  }

  std::string program(const std::string& arch, const std::string& name = "program", const std::string& answer = "42") {
    return link(arch, compile(arch + "-apple-macos11", kSource, name, answer), name + "-" + arch);
  }

  std::string onlyDescriptorOf(const std::string& path) {
    const auto reader = readFile(path);
    return reader && reader->countOfFatFileParts() == 1 ? reader->partDescriptors()[0] : "";
  }

  /// Compares the reader's sections with those that another reader lists, and the descriptor with the digest of the
  /// contents that the list points to.
  void expectAgreement(const std::string& path) {
    const auto reader = readFile(path);
    ASSERT_TRUE(reader) << path;
    const auto listed = sectionsListedFor(path);
    ASSERT_FALSE(listed.empty()) << path;
    const auto& sections = *reader->sectionsByNameForPartAtIndex(0);
    EXPECT_EQ(sections.size(), listed.size());
    const Data file = contentsOf(path);
    std::string contents;
    for (const auto& [key, expected] : listed) {  // names are ASCII here: any order by code will do
      ASSERT_TRUE(sections.contains(key)) << key;
      EXPECT_EQ(sections.at(key).contentSize(), expected.size) << key;
      EXPECT_EQ(sections.at(key).offset(), expected.offset) << key;
      EXPECT_EQ(sections.at(key).type(), expected.type) << key;
      if (expected.type != 1) contents += textOf(DataView(file).subspan(expected.offset, expected.size));
    }
    EXPECT_EQ(reader->partDescriptors().at(0), sha1(contents)) << path;
    EXPECT_TRUE(log_.entries().empty());
  }

  TemporaryFolder folder_;
};

TEST_F(RealMachOFiles, ObjectFilesReadAsAnotherReaderListsThem) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kReader);
  for (const std::string target : {"x86_64-apple-macos11", "arm64-apple-macos11", "i386-apple-macos10.13",
                                   "armv7-apple-ios9", "arm64_32-apple-watchos7"}) {
    expectAgreement(compile(target, kSource));
  }
}

TEST_F(RealMachOFiles, ProgramsReadAsAnotherReaderListsThem) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  VANTRELL_NEEDS_TOOL(kReader);
  for (const std::string arch : {"x86_64", "arm64"}) {
    const std::string path = program(arch);
    expectAgreement(path);
    const auto reader = readFile(path);
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->machHeaderForPartAtIndex(0)->filetype(), 2U);
    EXPECT_EQ(reader->segmentsForPartAtIndex(0)->front().segname(), "__PAGEZERO");
    EXPECT_EQ(reader->segmentsForPartAtIndex(0)->back().segname(), "__LINKEDIT");
    EXPECT_TRUE(reader->sectionsByName()[0].contains("__TEXT,__text"));
    EXPECT_TRUE(reader->sectionsByName()[0].contains("__DATA,__custom"));
  }
}

TEST_F(RealMachOFiles, ThreadLocalZeroFillSectionsAreHashedWhereTheyPoint) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  VANTRELL_NEEDS_TOOL(kReader);
  const std::string path = link("arm64", compile("arm64-apple-macos11", kThreadLocalSource), "threads");
  ASSERT_EQ(sectionsListedFor(path)["__DATA,__thread_bss"].type, macho::kSectionTypeThreadLocalZeroFill);
  expectAgreement(path);
}

TEST_F(RealMachOFiles, LibrariesReadAsAnotherReaderListsThem) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  VANTRELL_NEEDS_TOOL(kReader);
  const std::string path = link("arm64", compile("arm64-apple-macos11", kSource), "library.dylib", {"-dylib"});
  expectAgreement(path);
  EXPECT_EQ(readFile(path)->machHeaderForPartAtIndex(0)->filetype(), 6U);
}

TEST_F(RealMachOFiles, AFatFileHasTheDescriptorsOfItsThinParts) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  VANTRELL_NEEDS_TOOL(kJoiner);
  const std::string intel = program("x86_64");
  const std::string arm = program("arm64");
  const std::string joined = folder_.path("fat");
  runTool(kJoiner, {"-create", intel, arm, "-output", joined});
  const auto reader = readFile(joined);
  ASSERT_TRUE(reader);
  EXPECT_THAT(reader->partDescriptors(), testing::ElementsAre(onlyDescriptorOf(intel), onlyDescriptorOf(arm)));
  EXPECT_EQ(reader->fatFileHeaderAtIndex(1)->partSize(), contentsOf(arm).size());
}

TEST_F(RealMachOFiles, SignaturesOfAnotherLengthLeaveTheDescriptor) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  // The linker's own signature holds the file's name.
  const std::string object = compile("arm64-apple-macos11", kSource);
  const auto first = readFile(link("arm64", object, "first", {"-e", "_main", "-adhoc_codesign"}));
  const auto second =
      readFile(link("arm64", object, "second-with-a-much-longer-name", {"-e", "_main", "-adhoc_codesign"}));
  const auto bare = readFile(link("arm64", object, "bare", {"-e", "_main", "-no_adhoc_codesign"}));
  ASSERT_TRUE(first && second && bare);
  ASSERT_EQ(first->signaturesPerPart().size(), 1U);
  ASSERT_EQ(second->signaturesPerPart().size(), 1U);
  EXPECT_TRUE(bare->signaturesPerPart().empty());
  EXPECT_NE(first->signaturesPerPart(), second->signaturesPerPart());
  EXPECT_EQ(first->partDescriptors(), second->partDescriptors());
}

TEST_F(RealMachOFiles, ANewSignatureInPlaceLeavesTheDescriptor) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  const std::string path =
      link("arm64", compile("arm64-apple-macos11", kSource), "signed", {"-e", "_main", "-adhoc_codesign"});
  const auto before = readFile(path);
  ASSERT_TRUE(before);
  const Data& signature = before->signaturesPerPart().at(0);
  Data file = contentsOf(path);
  ASSERT_GT(signature.size(), 100U);
  std::fill(file.end() - 100, file.end(), std::uint8_t{0xAB});  // the signature ends the file
  const auto after = read(file);
  ASSERT_TRUE(after);
  EXPECT_NE(after->signaturesPerPart(), before->signaturesPerPart());
  EXPECT_EQ(after->partDescriptors(), before->partDescriptors());
}

TEST_F(RealMachOFiles, StrippingLeavesTheDescriptor) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  VANTRELL_NEEDS_TOOL(kStripper);
  const std::string path = program("x86_64");
  const std::string stripped = folder_.path("stripped");
  runTool(kStripper, {"-x", "-o", stripped, path});
  EXPECT_NE(contentsOf(stripped), contentsOf(path));
  EXPECT_EQ(onlyDescriptorOf(stripped), onlyDescriptorOf(path));
}

TEST_F(RealMachOFiles, AnotherConstantInTheCodeChangesTheDescriptor) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  const std::string first = onlyDescriptorOf(program("x86_64", "first", "42"));
  const std::string again = onlyDescriptorOf(program("x86_64", "again", "42"));
  const std::string other = onlyDescriptorOf(program("x86_64", "other", "43"));
  EXPECT_EQ(first.size(), 40U);
  EXPECT_EQ(first, again);
  EXPECT_NE(first, other);
}

TEST_F(RealMachOFiles, EveryCutOfAProgramIsRefusedOrRead) {
  VANTRELL_NEEDS_TOOL(kCompiler);
  VANTRELL_NEEDS_TOOL(kLinker);
  const Data file = contentsOf(program("arm64"));
  for (std::size_t size = 0; size < file.size(); size += size < 4096 ? 1 : 509) {
    const Data cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
    try {
      read(cut);
    } catch (const Exception& exception) {
      EXPECT_EQ(exception.name(), NSInvalidArgumentException);
    }
  }
  for (std::size_t index = 0; index < 1500; ++index) {  // header and load commands
    Data changed = file;
    changed[index] = static_cast<std::uint8_t>(~changed[index]);
    try {
      read(changed);
    } catch (const Exception& exception) {
      EXPECT_EQ(exception.name(), NSInvalidArgumentException);
    }
  }
}

}  // namespace vantrell::tests
