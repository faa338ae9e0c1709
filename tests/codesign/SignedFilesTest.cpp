// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <sys/stat.h>

#include "tests/codesign/SignatureFixture.h"

namespace vantrell::tests {

using testing::ElementsAre;

using SignedFiles = SignatureFixture;

constexpr std::int64_t kTenYears = 10LL * 365 * 24 * 3600;

TEST_F(SignedFiles, AWholeFileIsValid) {
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), bySigner())), 0) << testing::PrintToString(findings_);
}

TEST_F(SignedFiles, TellsWhoSigned) {
  const auto information = codeAt(place(signedFile(sampleProgram(), bySigner())))->signingInformation();
  ASSERT_TRUE(information);
  EXPECT_EQ(information->identifier, "com.example.program");
  EXPECT_EQ(information->teamIdentifier, "TEAM123456");
  EXPECT_THAT(information->authorities, ElementsAre("Test Signer", "Test Intermediate", "Test Root"));
  EXPECT_FALSE(information->isAdHoc);
}

TEST_F(SignedFiles, EveryKnownVersionHashAndPageSizeIsTaken) {
  for (const std::uint32_t version : {0x20001U, 0x20100U, 0x20200U, 0x20300U, 0x20400U, 0x20500U, 0x20600U}) {
    auto options = bySigner();
    options.version = version;
    EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), 0) << version;
  }
  for (const HashType type : {HashType::Sha1, HashType::Sha256, HashType::Sha256Truncated, HashType::Sha384}) {
    auto options = bySigner();
    options.hashTypes = {type};
    EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), 0) << int(type);
  }
  for (const int exponent : {0, 12, 14, 16}) {
    auto options = bySigner();
    options.pageExponent = static_cast<std::uint8_t>(exponent);
    EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), 0) << exponent;
  }
}

TEST_F(SignedFiles, NewerVersionsScatterListsAndUnknownSlotsAreRefused) {
  auto options = bySigner();
  options.version = 0x20700;
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kUnsupported);
  options = bySigner();
  options.scatter = 48;
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kUnsupported);
  options = bySigner();
  options.afterMessage = [](auto& parts) { parts.emplace_back(0x2345, signing::blob(0xfade7171, {})); };
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kUnsupported);
}

TEST_F(SignedFiles, LargeFilesAreCheckedToTheLastPage) {
  const Data file = signedFile(sampleProgram(3 << 20), bySigner());
  EXPECT_EQ(codeOfFile(file), 0);
  for (const std::size_t place : {std::size_t{1} << 20, std::size_t{2} << 20, signatureStart(file) - 1}) {
    Data changed = file;
    changed[place] ^= 1;
    EXPECT_EQ(codeOfFile(changed), code_signing_error::kSignatureFailed) << place;
  }
}

TEST_F(SignedFiles, AChangedByteIsNoticedWhereverItIs) {
  const Data file = signedFile(sampleProgram(5000), bySigner());
  const std::size_t signature = signatureStart(file);
  const auto code = codeAt(place(file));
  ASSERT_EQ(code->checkValidity(kCheckEverything, host::kAnchorAppleGeneric), std::nullopt);
  std::vector<std::size_t> unnoticed;
  for (std::size_t index = 0; index < file.size(); index += index < signature ? 29 : 3) {
    Data changed = file;
    changed[index] ^= 0xFF;
    place(changed);
    if (!code->checkValidity(kCheckEverything, host::kAnchorAppleGeneric)) unnoticed.push_back(index);
  }
  const auto parts = host::codesign::SuperBlob::parse(DataView(file).subspan(signature)).value();
  const auto message = static_cast<std::size_t>(parts.find(0x10000)->bytes.data() - file.data());
  // At the message's beginning are a version number and the digests that it announces, and the signer's part begins
  // with a version number (an integer of one byte, before a sequence): these bear on nothing.
  const auto isVersion = [&](std::size_t index) {
    return file[index - 2] == 0x02 && file[index - 1] == 0x01 && file[index] == 0x01 && file[index + 1] == 0x30;
  };
  for (const std::size_t index : unnoticed) {
    EXPECT_GT(index, message);
    EXPECT_TRUE(index < message + 64 || isVersion(index)) << index;
  }
}

TEST_F(SignedFiles, EveryCutIsRefused) {
  const Data file = signedFile(sampleProgram(5000), bySigner());
  for (std::size_t size = 0; size < file.size(); size += 37) {
    EXPECT_NE(codeOfFile(DataView(file).first(size)), 0) << size;
  }
  EXPECT_NE(codeOfFile(DataView(file).first(file.size() - 1)), 0);
}

TEST_F(SignedFiles, WhatFollowsTheSignatureIsRefused) {
  Data file = signedFile(sampleProgram(), bySigner());
  file.push_back(0);
  EXPECT_EQ(codeOfFile(file), code_signing_error::kBadObject);
  file = signedFile(sampleProgram(), bySigner());
  file.back() = 1;  // in the room that the signature doesn't use
  EXPECT_EQ(codeOfFile(file), code_signing_error::kBadObject);
}

TEST_F(SignedFiles, UnsignedFilesAreToldFromOthers) {
  EXPECT_EQ(codeOfFile(sampleProgram().build()), code_signing_error::kUnsigned);
  const auto information = codeAt(folder_.path("program"))->signingInformation();
  ASSERT_FALSE(information);
  EXPECT_EQ(information.error().code(), code_signing_error::kUnsigned);
  EXPECT_EQ(codeOfFile(bytesOf("#!/bin/sh\n")), code_signing_error::kBadObject);
  EXPECT_EQ(codeOfFile({}), code_signing_error::kBadObject);
  EXPECT_EQ(codeOfCheck(folder_.path("missing")), 1);
}

TEST_F(SignedFiles, AdHocSignaturesAreWholeButVouchedForByNobody) {
  const std::string path = place(signedFile(sampleProgram(), SigningOptions::adHoc()));
  EXPECT_EQ(codeOfCheck(path), code_signing_error::kRequirementFailed);
  EXPECT_EQ(codeOfCheck(path, ""), 0);
  EXPECT_TRUE(codeAt(path)->signingInformation()->isAdHoc);
  EXPECT_TRUE(codeAt(path)->signingInformation()->authorities.empty());
  Data changed = fileContent(path);
  changed[2000] ^= 1;
  EXPECT_EQ(codeOfCheck(place(changed), ""), code_signing_error::kSignatureFailed);
}

TEST_F(SignedFiles, ASignatureWhoseMessageWasTakenOutIsNoAdHocOne) {
  auto options = bySigner();
  options.afterMessage = [](auto& parts) { parts.back().second = signing::blob(0xfade0b01, {}); };
  EXPECT_EQ(codeOfCheck(place(signedFile(sampleProgram(), options)), ""), code_signing_error::kSignatureFailed);
  options.afterMessage = [](auto& parts) { parts.pop_back(); };
  EXPECT_EQ(codeOfCheck(place(signedFile(sampleProgram(), options)), ""), code_signing_error::kSignatureFailed);
}

TEST_F(SignedFiles, AMessageOverAnotherDirectoryIsRefused) {
  Data other;
  auto options = bySigner();
  options.identifier = "com.example.harmless";
  options.afterMessage = [&other](auto& parts) { other = parts.back().second; };
  signedFile(sampleProgram(), options);
  options = bySigner();
  options.afterMessage = [&other](auto& parts) { parts.back().second = other; };
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kSignatureFailed);
}

TEST_F(SignedFiles, AlternateDirectoriesAreCheckedAsWell) {
  auto options = bySigner();
  options.hashTypes = {HashType::Sha1, HashType::Sha256};
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), 0) << testing::PrintToString(findings_);
  options.hashTypes = {HashType::Sha1, HashType::Sha256Truncated, HashType::Sha384};
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), 0) << testing::PrintToString(findings_);

  options.hashTypes = {HashType::Sha1, HashType::Sha256};
  options.listDirectories = false;
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kSignatureFailed);
  options.listDirectories = true;
  options.beforeMessage = [](auto& parts) { parts.back().second.back() ^= 1; };  // a hash of the second directory
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kSignatureFailed);
  options.beforeMessage = [](auto& parts) { parts.pop_back(); };
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kSignatureFailed);
}

TEST_F(SignedFiles, OneDirectoryNeedsNoList) {
  auto options = bySigner();
  options.listDirectories = false;
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), 0);
}

TEST_F(SignedFiles, EveryArchitectureCounts) {
  const Data intel = signedFile(sampleProgram(), bySigner());
  auto builder = sampleProgram();
  const Data arm = signedFile(builder.cpu(0x0100000C, 0), bySigner());
  const Data unsignedArm = builder.build();
  const auto fat = [&](const Data& second) {
    return fatFile({{intel, MachOBuilder::kCpuType, MachOBuilder::kCpuSubtype, {}}, {second, 0x0100000C, 0, {}}});
  };
  EXPECT_EQ(codeOfFile(fat(arm)), 0) << testing::PrintToString(findings_);
  EXPECT_EQ(codeOfFile(fat(unsignedArm)), code_signing_error::kUnsigned);
  EXPECT_EQ(codeOfCheck(place(fat(unsignedArm)), host::kAnchorAppleGeneric, 0, {false, true, true}), 0);
  EXPECT_EQ(codeOfFile(fat(signedFile(builder, SigningOptions::adHoc()))), code_signing_error::kSignatureFailed);
  auto options = bySigner();
  options.team = "OTHERTEAM1";
  EXPECT_EQ(codeOfFile(fat(signedFile(builder, options))), code_signing_error::kSignatureFailed);
  Data changed = fat(arm);
  changed[changed.size() - arm.size() + 3000] ^= 1;
  EXPECT_EQ(codeOfFile(changed), code_signing_error::kSignatureFailed);
  EXPECT_EQ(codeOfCheck(place(changed), host::kAnchorAppleGeneric, 0, {false, true, true}), 0);
}

TEST_F(SignedFiles, NothingHidesBetweenTheArchitectures) {
  const Data intel = signedFile(sampleProgram(), bySigner());
  Data fat = fatFile({{intel, MachOBuilder::kCpuType, MachOBuilder::kCpuSubtype, {}}});
  ASSERT_EQ(codeOfFile(fat), 0);
  fat[29] = 1;  // behind the header, before the first part
  EXPECT_EQ(codeOfFile(fat), code_signing_error::kBadObject);
  fat[29] = 0;
  fat.push_back(1);
  EXPECT_EQ(codeOfFile(fat), code_signing_error::kBadObject);
}

TEST_F(SignedFiles, RequirementsThatAreNotUnderstoodAreNeverMet) {
  const std::string path = place(signedFile(sampleProgram(), bySigner()));
  EXPECT_EQ(codeOfCheck(path, "anchor  apple generic "), 0);
  for (const char* requirement : {"anchor apple", "anchor apple generic and identifier \"x\"", "never", "anchor"}) {
    EXPECT_EQ(codeOfCheck(path, requirement), code_signing_error::kBadRequirementSyntax) << requirement;
  }
}

TEST_F(SignedFiles, OtherAnchorsAreRefused) {
  const std::string path = place(signedFile(sampleProgram(), bySigner()));
  host::LinuxCodeSignatures vendorOnly(fileSystem_);
  const auto error = (*vendorOnly.staticCodeAtPath(path))->checkValidity(kCheckEverything, host::kAnchorAppleGeneric);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), code_signing_error::kRequirementFailed);
  // Nor does the absence of a requirement let anybody in.
  EXPECT_TRUE((*vendorOnly.staticCodeAtPath(path))->checkValidity(kCheckEverything, ""));
}

TEST_F(SignedFiles, ARootThatOnlyLiesBesideTheChainIsNone) {
  TestAuthority stranger;
  auto options = SigningOptions::by(stranger);
  options.certificates.push_back(&authority().root);
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kRequirementFailed);
}

TEST_F(SignedFiles, AMissingIntermediateIsRefused) {
  auto options = bySigner();
  options.certificates = {&authority().root};
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kRequirementFailed);
  options.certificates = {&authority().intermediate};
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kRequirementFailed);
}

TEST_F(SignedFiles, CertificatesForOtherUsesAreRefused) {
  const char* const kUses[] = {
      "keyUsage=critical,digitalSignature\n",
      "keyUsage=critical,digitalSignature\nextendedKeyUsage=serverAuth\n",
      "keyUsage=critical,keyEncipherment\nextendedKeyUsage=codeSigning\n",
      "basicConstraints=critical,CA:TRUE\nkeyUsage=digitalSignature,keyCertSign\nextendedKeyUsage=codeSigning\n",
      "extendedKeyUsage=codeSigning\n1.2.3.4=critical,DER:0500\n",
  };
  for (const char* use : kUses) {
    const auto identity = authority().issue("Other", &authority().intermediate, use);
    auto options = bySigner();
    options.signer = &identity;
    EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kSignatureFailed) << use;
  }
}

TEST_F(SignedFiles, ASignerMayNotMakeSigners) {
  const auto child = authority().issue("Child", &authority().leaf, "extendedKeyUsage=codeSigning\n");
  auto options = bySigner();
  options.signer = &child;
  options.certificates.push_back(&authority().leaf);
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options)), code_signing_error::kSignatureFailed);
}

TEST_F(SignedFiles, ExpiredCertificatesNeedATimeStamp) {
  const std::string path = place(signedFile(sampleProgram(), bySigner()));
  EXPECT_EQ(codeOfCheck(path, host::kAnchorAppleGeneric, kTenYears), code_signing_error::kSignatureFailed);
  EXPECT_EQ(codeOfCheck(path, host::kAnchorAppleGeneric, -kTenYears), code_signing_error::kSignatureFailed);
  auto options = bySigner();
  options.timeStamp = true;
  const std::string stamped = place(signedFile(sampleProgram(), options, 200));
  EXPECT_EQ(codeOfCheck(stamped), 0) << testing::PrintToString(findings_);
  EXPECT_EQ(codeOfCheck(stamped, host::kAnchorAppleGeneric, kTenYears), 0) << testing::PrintToString(findings_);
}

TEST_F(SignedFiles, ATimeStampThatDoesNotHoldIsRefused) {
  auto options = bySigner();
  options.timeStamp = true;
  const auto impostor = authority().issue("Impostor", nullptr,
                                          "keyUsage=critical,digitalSignature\n"
                                          "extendedKeyUsage=critical,timeStamping\n");
  options.timeStamper = &impostor;
  EXPECT_EQ(codeOfFile(signedFile(sampleProgram(), options, 200)), code_signing_error::kSignatureFailed);

  options.timeStamper = nullptr;
  const Data file = signedFile(sampleProgram(), options, 200);
  const std::size_t stamp = textOf(file).rfind("Test Time Stamper");
  ASSERT_NE(stamp, std::string_view::npos);
  Data changed = file;
  changed[stamp] ^= 1;
  EXPECT_NE(codeOfFile(changed), 0);
}

TEST_F(SignedFiles, SymbolicLinksToTheFileServe) {
  place(signedFile(sampleProgram(), bySigner()));
  EXPECT_EQ(codeOfCheck(folder_.makeLink("link", "program")), 0);
}

TEST_F(SignedFiles, DevicesAndPipesAreNoCode) {
  EXPECT_EQ(codeOfCheck("/dev/zero"), 1);
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(codeOfCheck(folder_.path("pipe")), 1);
}

}  // namespace vantrell::tests
