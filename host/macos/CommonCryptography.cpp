// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/CommonCryptography.h"

#include <algorithm>
#include <limits>

#include <CommonCrypto/CommonCryptor.h>
#include <CommonCrypto/CommonDigest.h>
#include <CommonCrypto/CommonRandom.h>

#include "foundation/PosixCodes.h"

namespace vantrell::host {

namespace {

// The platform takes longer ones, too, but no more than these bytes count.
constexpr std::size_t kLargestKeySize = 256;
constexpr std::size_t kLargestPiece = std::numeric_limits<CC_LONG>::max();

static_assert(kSha1Size == CC_SHA1_DIGEST_LENGTH);

class CommonSha1 final : public Sha1Context {
 public:
  CommonSha1() { CC_SHA1_Init(&context_); }
  void update(DataView bytes) override {
    while (!bytes.empty()) {
      const DataView piece = bytes.first(std::min(bytes.size(), kLargestPiece));
      CC_SHA1_Update(&context_, piece.data(), static_cast<CC_LONG>(piece.size()));
      bytes = bytes.subspan(piece.size());
    }
  }
  Sha1Digest finish() override {
    Sha1Digest digest;
    CC_SHA1_Final(digest.data(), &context_);
    CC_SHA1_Init(&context_);
    return digest;
  }

 private:
  CC_SHA1_CTX context_;
};

std::int64_t errorNumber(CCCryptorStatus status) {
  switch (status) {
    case kCCParamError:
      return posix::kInvalidArgument;
    case kCCMemoryFailure:
      return posix::kNoMemory;
    default:
      return posix::kInputOutput;
  }
}

}  // namespace

Result<std::unique_ptr<Sha1Context>> CommonCryptography::makeSha1() {
  return std::make_unique<CommonSha1>();
}

Result<Sha1Digest> CommonCryptography::sha1(DataView bytes) {
  CommonSha1 context;
  context.update(bytes);
  return context.finish();
}

ErrorOrNil CommonCryptography::rc4(DataView key, DataView input, std::span<std::uint8_t> output) {
  if (key.empty() || key.size() > kLargestKeySize || input.size() != output.size()) {
    return Error::posix(posix::kInvalidArgument);
  }
  if (input.empty()) return std::nullopt;
  std::size_t written = 0;
  const auto status = CCCrypt(kCCEncrypt, kCCAlgorithmRC4, 0, key.data(), key.size(), nullptr, input.data(),
                              input.size(), output.data(), output.size(), &written);
  if (status != kCCSuccess) return Error::posix(errorNumber(status));
  if (written != output.size()) return Error::posix(posix::kInputOutput);
  return std::nullopt;
}

ErrorOrNil CommonCryptography::randomBytes(std::span<std::uint8_t> output) {
  if (output.empty()) return std::nullopt;
  const auto status = CCRandomGenerateBytes(output.data(), output.size());
  if (status != kCCSuccess) return Error::posix(errorNumber(status));
  return std::nullopt;
}

}  // namespace vantrell::host
