// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What can be said of the helper for macOS without running it: its file is read here as its clients and the system
// there read it. scripts/build-macos makes it; without an SDK it is linked with the frameworks' part left open, which
// changes nothing of what is looked at here.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "host/linux/NettleCryptography.h"
#include "macho/QELMachOProcessor.h"
#include "tests/codesign/ExecutableResigning.h"
#include "tests/codesign/SignatureFixture.h"
#include "tests/support/RecordingLog.h"

namespace vantrell::tests {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kArm64 = 0x0100000C;   // CPU_TYPE_ARM64
constexpr std::int32_t kX86_64 = 0x01000007;  // CPU_TYPE_X86_64

fs::path buildFolder() {
  return fs::path(VANTRELL_SOURCE_DIR) / "build";
}

Data contentsOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Data(std::istreambuf_iterator<char>(file), {});
}

std::uint32_t wordAt(DataView bytes, std::size_t offset) {
  return macho::readWord(bytes, offset);
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace_if(
      name.begin(), name.end(), [](char character) { return character == '-' || character == '.'; }, '_');
  return name;
}

/// For each folder below build/ that may hold a helper for macOS.
class MacHelperFile : public SignatureFixture, public testing::WithParamInterface<std::string> {
 protected:
  void SetUp() override {
    const fs::path path = buildFolder() / GetParam() / "Vantrell-PrivilegedTool";
    if (!fs::exists(path)) GTEST_SKIP() << "scripts/build-macos has not built build/" << GetParam();
    path_ = path.string();
    file_ = contentsOf(path);
    reader_ = QELMachOProcessor::initForContents(file_, cryptography_, log_);
    ASSERT_NE(reader_, nullptr);
    ASSERT_GT(reader_->countOfFatFileParts(), 0u);
  }

  DataView part(std::size_t index) const {
    const QELMachOProcessor::FatArch& header = *reader_->fatFileHeaderAtIndex(index);
    return DataView(file_).subspan(header.offset(), header.partSize());
  }

  Data sectionOf(std::size_t index, const std::string& key) const {
    const auto& sections = *reader_->sectionsByNameForPartAtIndex(index);
    const auto found = sections.find(key);
    if (found == sections.end()) return {};
    const DataView content = part(index).subspan(found->second.offset(), found->second.contentSize());
    return Data(content.begin(), content.end());
  }

  /// Calls `visit` with each load command of a part.
  template <class Visit>
  void forEachCommand(std::size_t index, Visit visit) const {
    const DataView bytes = part(index);
    std::size_t place = macho::kHeaderSize64;
    for (std::uint32_t command = 0; command < wordAt(bytes, 16); ++command) {
      visit(wordAt(bytes, place), bytes.subspan(place, wordAt(bytes, place + 4)));
      place += wordAt(bytes, place + 4);
    }
  }

  std::string descriptorOf(DataView file) {
    const auto reader = QELMachOProcessor::initForContents(file, cryptography_, log_);
    return reader ? reader->descriptorsForRelevantSectionsPerFilePart().at(0) : "";
  }

  std::string path_;
  Data file_;
  host::NettleCryptography cryptography_;
  RecordingLog log_;
  std::unique_ptr<QELMachOProcessor> reader_;
};

TEST_P(MacHelperFile, IsAnExecutableForTheArchitecturesItIsBuiltFor) {
  std::vector<std::int32_t> architectures;
  for (const QELMachOProcessor::MachHeader& header : reader_->machHeaders()) {
    EXPECT_EQ(header.filetype(), MachOBuilder::kExecutable);
    architectures.push_back(header.cputype());
  }
  const std::map<std::string, std::vector<std::int32_t>> expected = {
      {"macos", {kX86_64, kArm64}}, {"macos-arm64", {kArm64}}, {"macos-x86_64", {kX86_64}}};
  EXPECT_THAT(architectures, testing::UnorderedElementsAreArray(expected.at(GetParam())));
}

TEST_P(MacHelperFile, HoldsBothPropertyListsByteForByte) {
  for (std::size_t index = 0; index < reader_->countOfFatFileParts(); ++index) {
    const bool isArm = reader_->machHeaderForPartAtIndex(index)->cputype() == kArm64;
    const fs::path lists = buildFolder() / (isArm ? "macos-arm64" : "macos-x86_64") / "resources";
    const Data information = contentsOf(lists / "Info.plist");
    ASSERT_FALSE(information.empty());
    EXPECT_EQ(sectionOf(index, "__TEXT,__info_plist"), information);
    EXPECT_EQ(sectionOf(index, "__TEXT,__launchd_plist"), contentsOf(lists / "launchd.plist"));
  }
}

TEST_P(MacHelperFile, RunsOnTheOldestSystemThatItsArchitectureAllows) {
  constexpr std::uint32_t kVersionMinimum = 0x24;  // LC_VERSION_MIN_MACOSX
  constexpr std::uint32_t kBuildVersion = 0x32;    // LC_BUILD_VERSION
  for (std::size_t index = 0; index < reader_->countOfFatFileParts(); ++index) {
    const bool isArm = reader_->machHeaderForPartAtIndex(index)->cputype() == kArm64;
    std::vector<std::uint32_t> versions;
    forEachCommand(index, [&versions](std::uint32_t command, DataView bytes) {
      if (command == kVersionMinimum) versions.push_back(wordAt(bytes, 8));
      if (command == kBuildVersion) versions.push_back(wordAt(bytes, 12));
    });
    EXPECT_THAT(versions, testing::ElementsAre(isArm ? 11u << 16 : 10u << 16 | 13u << 8));
  }
}

TEST_P(MacHelperFile, LinksNothingButTheSystem) {
  constexpr std::uint32_t kLoadLibrary = 0xC;  // LC_LOAD_DYLIB
  for (std::size_t index = 0; index < reader_->countOfFatFileParts(); ++index) {
    std::vector<std::string> libraries;
    forEachCommand(index, [&libraries](std::uint32_t command, DataView bytes) {
      if (command == kLoadLibrary) libraries.emplace_back(textOf(bytes.subspan(wordAt(bytes, 8))).data());
    });
    EXPECT_FALSE(libraries.empty());
    EXPECT_THAT(libraries, testing::Each(testing::AnyOf(testing::StartsWith("/usr/lib/"),
                                                        testing::StartsWith("/System/Library/Frameworks/"))));
  }
}

// Such a section is part of the descriptor as though it had contents at its offset, which may be 0: the header then is
// what is digested, and signing changes the count of its commands.
TEST_P(MacHelperFile, HasNoThreadLocalZeroesThatReachTheHeadersCounts) {
  constexpr std::size_t kFirstCount = 16;  // of the load commands
  for (const QELMachOProcessor::SectionsByName& sections : reader_->sectionsByName()) {
    for (const auto& [key, section] : sections) {
      if (section.type() != macho::kSectionTypeThreadLocalZeroFill) continue;
      EXPECT_TRUE(section.offset() >= macho::kHeaderSize64 || section.offset() + section.contentSize() <= kFirstCount)
          << key << " covers " << section.contentSize() << " bytes from " << section.offset();
    }
  }
}

TEST_P(MacHelperFile, HasTheDescriptorOfItsFirstPartWhoeverSignedIt) {
  const std::string descriptor = reader_->descriptorsForRelevantSectionsPerFilePart().at(0);
  EXPECT_THAT(descriptor, testing::MatchesRegex("[0-9a-f]{40}"));
  const Data first(part(0).begin(), part(0).end());
  EXPECT_EQ(descriptorOf(first), descriptor);

  const Data adHoc = ExecutableResigning(first).signedWith(SigningOptions::adHoc());
  const Data bySomebody = ExecutableResigning(adHoc).signedWith(bySigner());
  EXPECT_NE(adHoc, first);
  EXPECT_NE(bySomebody, adHoc);
  EXPECT_EQ(descriptorOf(adHoc), descriptor);
  EXPECT_EQ(descriptorOf(bySomebody), descriptor);
  // These are signatures indeed.
  EXPECT_EQ(codeOfCheck(place(adHoc, "ad-hoc"), ""), 0);
  EXPECT_EQ(codeOfFile(bySomebody), 0);
  EXPECT_EQ(codeOfFile(adHoc), code_signing_error::kRequirementFailed);
}

TEST_P(MacHelperFile, HasAnotherDescriptorWithAnyByteOfItsListsChanged) {
  Data first(part(0).begin(), part(0).end());
  const macho::Section& list = reader_->sectionsByNameForPartAtIndex(0)->at("__TEXT,__launchd_plist");
  first[list.offset() + list.contentSize() / 2] ^= 1u;
  EXPECT_NE(descriptorOf(first), reader_->descriptorsForRelevantSectionsPerFilePart().at(0));
}

INSTANTIATE_TEST_SUITE_P(Built, MacHelperFile, testing::Values("macos", "macos-arm64", "macos-x86_64"), nameOf);

}  // namespace
}  // namespace vantrell::tests
