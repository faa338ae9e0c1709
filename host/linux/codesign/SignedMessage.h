// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/linux/codesign/OpenSslHandles.h"

namespace vantrell::host::codesign {

/// A message of the Cryptographic Message Syntax (RFC 5652) with exactly one signer: the signature of a code directory,
/// or a time stamp.
class SignedMessage {
 public:
  static constexpr std::size_t kMaximumSize = std::size_t{1} << 20;
  static constexpr int kMaximumCertificates = 32;

  /// DER or BER, all of it. kBadObject for what is malformed, kUnsupported for other kinds of messages and for sizes
  /// and numbers that no real one reaches.
  static Result<SignedMessage> parse(DataView bytes);

  /// Whether the signer's certificate has signed the attributes, and they the content. `contentType` is the dotted
  /// identifier that the content must go by. A description of what is wrong, or nothing.
  std::optional<std::string> verify(DataView content, const std::string& contentType) const;

  /// What the message itself holds; nothing when it is detached.
  std::optional<DataView> content() const;

  /// The only value of a signed (or unsigned) attribute, as a whole DER element; nothing where there is no such
  /// attribute. An attribute that comes twice is an error.
  Result<std::optional<Data>> signedAttribute(const std::string& identifier) const;
  Result<std::optional<Data>> unsignedAttribute(const std::string& identifier) const;
  /// All values of a signed attribute.
  Result<std::vector<Data>> signedAttributeValues(const std::string& identifier) const;

  DataView signatureBytes() const;
  /// Valid as long as this message.
  X509* signer() const noexcept { return signer_; }
  STACK_OF(X509) * certificates() const noexcept { return certificates_.get(); }

 private:
  CMS_SignerInfo* signerInfo() const;

  CmsHandle message_;
  CertificateListHandle certificates_;
  X509* signer_ = nullptr;  // one of the certificates
};

/// The content octets of a DER element of this universal tag, with nothing behind it; nothing for anything else.
std::optional<Data> octetsOf(DataView element);

}  // namespace vantrell::host::codesign
