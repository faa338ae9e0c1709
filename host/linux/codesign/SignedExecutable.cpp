// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/SignedExecutable.h"

#include <algorithm>
#include <utility>

#include "host/linux/codesign/CertificateChain.h"
#include "host/linux/codesign/Findings.h"

namespace vantrell::host::codesign {
namespace {

Error malformed(const char* text) {
  return codeSigningError(code_signing_error::kBadObject, text);
}

}  // namespace

Result<ArchitectureSignature> ArchitectureSignature::read(const MachOSlice& slice) {
  if (!slice.signatureOffset) {
    return codeSigningFailure(code_signing_error::kUnsigned, "The code isn't signed (" + slice.architecture + ").");
  }
  ArchitectureSignature signature;
  signature.slice_ = slice;
  auto blobs = SuperBlob::parse(slice.signature);
  if (!blobs) return failure(blobs.error());
  signature.blobs_ = *std::move(blobs);
  if (auto error = signature.readDirectories()) return failure(*std::move(error));
  if (auto error = signature.readMessage()) return failure(*std::move(error));
  return signature;
}

ErrorOrNil ArchitectureSignature::readDirectories() {
  std::vector<std::uint32_t> slots = {slot::kCodeDirectory};
  for (auto number = slot::kFirstAlternateDirectory; number <= slot::kLastAlternateDirectory; ++number) {
    slots.push_back(number);
  }
  for (const std::uint32_t number : slots) {
    const SignatureBlob* blob = blobs_.find(number);
    if (blob == nullptr) continue;
    auto directory = CodeDirectory::parse(blob->bytes);
    if (!directory) return directory.error();
    directories_.push_back(*std::move(directory));
  }
  if (blobs_.find(slot::kCodeDirectory) == nullptr) return malformed("The signature has no code directory.");
  const CodeDirectory& first = directories_.front();
  for (const CodeDirectory& directory : directories_) {
    if (directory.identifier() != first.identifier() || directory.teamIdentifier() != first.teamIdentifier() ||
        directory.isAdHoc() != first.isAdHoc()) {
      return malformed("The signature's code directories contradict each other.");
    }
    if (directory.codeLimit() != *slice_.signatureOffset) {
      return malformed("The signature doesn't cover everything that precedes it.");
    }
  }
  return std::nullopt;
}

ErrorOrNil ArchitectureSignature::readMessage() {
  const SignatureBlob* blob = blobs_.find(slot::kSignature);
  const bool isEmpty = blob == nullptr || blob->content().empty();
  if (isEmpty != directories_.front().isAdHoc()) {
    return codeSigningError(code_signing_error::kSignatureFailed,
                            isEmpty ? "The cryptographic signature is missing."
                                    : "The code is marked as signed by nobody, and yet has a cryptographic signature.");
  }
  if (isEmpty) return std::nullopt;
  auto message = SignedMessage::parse(blob->content());
  if (!message) return message.error();
  message_ = *std::move(message);
  return std::nullopt;
}

CodeSigningInformation ArchitectureSignature::information() const {
  const CodeDirectory& directory = directories_.front();
  CodeSigningInformation information{directory.identifier(), directory.teamIdentifier(), {}, directory.isAdHoc()};
  if (message_) information.authorities = chainNames(message_->signer(), message_->certificates());
  return information;
}

Result<SignedExecutable> SignedExecutable::load(FileSystem& fileSystem, const std::string& path, bool all) {
  SignedExecutable executable;
  auto contents = fileSystem.loadFile(path, kMaximumSize);
  if (!contents) return failure(contents.error());
  executable.contents = *std::move(contents);
  auto slices = machOSlices(executable.contents->bytes());
  if (!slices) return failure(slices.error());
  if (!all) slices->resize(1);
  for (const MachOSlice& slice : *slices) {
    auto signature = ArchitectureSignature::read(slice);
    if (!signature) return failure(signature.error());
    executable.architectures.push_back(*std::move(signature));
  }
  return executable;
}

}  // namespace vantrell::host::codesign
