// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/CodeDigest.h"

#include <algorithm>

namespace vantrell::host::codesign {

std::optional<HashType> hashTypeFromNumber(std::uint8_t number) noexcept {
  if (number < 1 || number > 4) return std::nullopt;
  return static_cast<HashType>(number);
}

std::size_t storedHashSize(HashType type) noexcept {
  switch (type) {
    case HashType::Sha256:
      return 32;
    case HashType::Sha384:
      return 48;
    default:
      return 20;
  }
}

const char* digestName(HashType type) noexcept {
  switch (type) {
    case HashType::Sha1:
      return "SHA1";
    case HashType::Sha384:
      return "SHA384";
    default:
      return "SHA256";
  }
}

CodeDigest::CodeDigest(const char* algorithm)
    : algorithm_(EVP_MD_fetch(nullptr, algorithm, nullptr)), context_(EVP_MD_CTX_new()) {
  usable_ = algorithm_ && context_ && EVP_DigestInit_ex2(context_.get(), algorithm_.get(), nullptr) == 1;
}

void CodeDigest::begin() noexcept {
  // Without an algorithm the one in place is begun again, which saves its look-up.
  usable_ = usable_ && EVP_DigestInit_ex2(context_.get(), nullptr, nullptr) == 1;
}

void CodeDigest::update(DataView bytes) noexcept {
  usable_ = usable_ && EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1;
}

DataView CodeDigest::finish() noexcept {
  unsigned size = 0;
  usable_ = usable_ && EVP_DigestFinal_ex(context_.get(), digest_, &size) == 1;
  return usable_ ? DataView(digest_, size) : DataView();
}

DataView CodeDigest::digestOf(DataView bytes) noexcept {
  begin();
  update(bytes);
  return finish();
}

bool CodeDigest::matches(DataView bytes, DataView expected) noexcept {
  const DataView digest = digestOf(bytes);
  return !expected.empty() && digest.size() >= expected.size() &&
         std::ranges::equal(digest.first(expected.size()), expected);
}

Data digestOf(HashType type, DataView bytes) {
  return digestOf(digestName(type), bytes);
}

Data digestOf(const char* algorithm, DataView bytes) {
  CodeDigest digest(algorithm);
  const DataView result = digest.digestOf(bytes);
  return {result.begin(), result.end()};
}

}  // namespace vantrell::host::codesign
