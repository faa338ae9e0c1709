// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/SignedMessage.h"

#include <algorithm>

#include <openssl/err.h>

#include "host/linux/codesign/CodeDigest.h"
#include "host/linux/codesign/Findings.h"

namespace vantrell::host::codesign {
namespace {

constexpr char kContentTypeAttribute[] = "1.2.840.113549.1.9.3";
constexpr char kMessageDigestAttribute[] = "1.2.840.113549.1.9.4";

std::unexpected<Error> malformed(const char* text) {
  ERR_clear_error();
  return codeSigningFailure(code_signing_error::kBadObject, text);
}
std::unexpected<Error> unsupported(const char* text) {
  ERR_clear_error();
  return codeSigningFailure(code_signing_error::kUnsupported, text);
}

ObjectIdentifierHandle identifierFrom(const std::string& dotted) {
  return ObjectIdentifierHandle(OBJ_txt2obj(dotted.c_str(), 1));
}

/// The key decides how a signature is verified; what the message says of it must make sense all the same.
bool isSigningAlgorithm(const X509_ALGOR* algorithm) {
  const int name = OBJ_obj2nid(algorithm->algorithm);
  int digest = NID_undef;
  int key = NID_undef;
  return name == NID_rsaEncryption || OBJ_find_sigid_algs(name, &digest, &key) == 1;
}

/// A value as a DER element.
std::optional<Data> elementOf(ASN1_TYPE* value) {
  unsigned char* bytes = nullptr;
  const int length = i2d_ASN1_TYPE(value, &bytes);
  if (length < 0) return std::nullopt;
  Data element(bytes, bytes + length);
  OPENSSL_free(bytes);
  return element;
}

using CountAttributes = int (*)(const CMS_SignerInfo*);
using GetAttribute = X509_ATTRIBUTE* (*)(const CMS_SignerInfo*, int);

/// The values of the one attribute of this name; none where there is no such attribute.
Result<std::vector<Data>> valuesOf(const CMS_SignerInfo* signer, CountAttributes countOf, GetAttribute attributeAt,
                                   const std::string& dotted) {
  const auto identifier = identifierFrom(dotted);
  std::vector<Data> values;
  bool met = false;
  for (int index = 0; identifier && index < countOf(signer); ++index) {
    X509_ATTRIBUTE* attribute = attributeAt(signer, index);
    if (OBJ_cmp(X509_ATTRIBUTE_get0_object(attribute), identifier.get()) != 0) continue;
    if (met) return malformed("An attribute of the signature comes twice.");
    met = true;
    for (int number = 0; number < X509_ATTRIBUTE_count(attribute); ++number) {
      auto element = elementOf(X509_ATTRIBUTE_get0_type(attribute, number));
      if (!element) return malformed("An attribute of the signature is malformed.");
      values.push_back(*std::move(element));
    }
  }
  return values;
}

Result<std::optional<Data>> onlyValue(Result<std::vector<Data>> values) {
  if (!values) return failure(values.error());
  if (values->empty()) return std::nullopt;
  if (values->size() != 1) return malformed("An attribute of the signature has several values.");
  return std::move(values->front());
}

}  // namespace

Result<SignedMessage> SignedMessage::parse(DataView bytes) {
  if (bytes.size() > kMaximumSize) return unsupported("The cryptographic signature is too large.");
  SignedMessage result;
  const unsigned char* place = bytes.data();
  result.message_.reset(d2i_CMS_ContentInfo(nullptr, &place, static_cast<long>(bytes.size())));
  if (!result.message_) return malformed("The cryptographic signature is malformed.");
  if (place != bytes.data() + bytes.size()) return malformed("Something follows the cryptographic signature.");
  if (OBJ_obj2nid(CMS_get0_type(result.message_.get())) != NID_pkcs7_signed) {
    return unsupported("The cryptographic signature is a message of another kind.");
  }
  STACK_OF(CMS_SignerInfo)* signers = CMS_get0_SignerInfos(result.message_.get());
  if (signers == nullptr || sk_CMS_SignerInfo_num(signers) != 1) {
    return unsupported("The cryptographic signature isn't that of one signer.");
  }
  result.certificates_.reset(CMS_get1_certs(result.message_.get()));
  const int count = result.certificates_ ? sk_X509_num(result.certificates_.get()) : 0;
  if (count > kMaximumCertificates) return unsupported("The cryptographic signature has too many certificates.");
  for (int index = 0; index < count && result.signer_ == nullptr; ++index) {
    X509* candidate = sk_X509_value(result.certificates_.get(), index);
    if (CMS_SignerInfo_cert_cmp(result.signerInfo(), candidate) == 0) result.signer_ = candidate;
  }
  if (result.signer_ == nullptr) return malformed("The signer's certificate is missing.");
  CMS_SignerInfo_set1_signer_cert(result.signerInfo(), result.signer_);
  return result;
}

CMS_SignerInfo* SignedMessage::signerInfo() const {
  return sk_CMS_SignerInfo_value(CMS_get0_SignerInfos(message_.get()), 0);
}

std::optional<std::string> SignedMessage::verify(DataView content, const std::string& contentType) const {
  X509_ALGOR* algorithm = nullptr;
  X509_ALGOR* signing = nullptr;
  CMS_SignerInfo_get0_algs(signerInfo(), nullptr, nullptr, &algorithm, &signing);
  const char* digest = algorithm == nullptr ? nullptr : digestNamed(algorithm);
  if (digest == nullptr || signing == nullptr || !isSigningAlgorithm(signing)) {
    return "The cryptographic signature uses an algorithm that isn't taken.";
  }
  if (CMS_signed_get_attr_count(signerInfo()) <= 0) return "The cryptographic signature has no signed attributes.";

  const auto type = signedAttribute(kContentTypeAttribute);
  const auto wanted = identifierFrom(contentType);
  unsigned char* encoded = nullptr;
  const int length = wanted ? i2d_ASN1_OBJECT(wanted.get(), &encoded) : -1;
  const bool typeMatches =
      length > 0 && type && *type && std::ranges::equal(**type, DataView(encoded, encoded + length));
  OPENSSL_free(encoded);
  if (!typeMatches) return "The cryptographic signature is over content of another type.";

  const auto stated = signedAttribute(kMessageDigestAttribute);
  const auto expected = stated && *stated ? octetsOf(**stated) : std::nullopt;
  const Data actual = digestOf(digest, content);
  if (!expected || actual.empty() || *expected != actual) return "The cryptographic signature is over something else.";
  if (CMS_SignerInfo_verify(signerInfo()) != 1) {
    ERR_clear_error();
    return "The cryptographic signature wasn't made with the signer's key.";
  }
  return std::nullopt;
}

std::optional<DataView> SignedMessage::content() const {
  ASN1_OCTET_STRING** content = CMS_get0_content(message_.get());
  if (content == nullptr || *content == nullptr) return std::nullopt;
  return DataView(ASN1_STRING_get0_data(*content), static_cast<std::size_t>(ASN1_STRING_length(*content)));
}

Result<std::vector<Data>> SignedMessage::signedAttributeValues(const std::string& identifier) const {
  return valuesOf(signerInfo(), CMS_signed_get_attr_count, CMS_signed_get_attr, identifier);
}

Result<std::optional<Data>> SignedMessage::signedAttribute(const std::string& identifier) const {
  return onlyValue(signedAttributeValues(identifier));
}

Result<std::optional<Data>> SignedMessage::unsignedAttribute(const std::string& identifier) const {
  return onlyValue(valuesOf(signerInfo(), CMS_unsigned_get_attr_count, CMS_unsigned_get_attr, identifier));
}

DataView SignedMessage::signatureBytes() const {
  const ASN1_OCTET_STRING* signature = CMS_SignerInfo_get0_signature(signerInfo());
  return {ASN1_STRING_get0_data(signature), static_cast<std::size_t>(ASN1_STRING_length(signature))};
}

std::optional<Data> octetsOf(DataView element) {
  const unsigned char* place = element.data();
  ASN1_OCTET_STRING* octets = d2i_ASN1_OCTET_STRING(nullptr, &place, static_cast<long>(element.size()));
  if (octets == nullptr) {
    ERR_clear_error();
    return std::nullopt;
  }
  const std::uint8_t* bytes = ASN1_STRING_get0_data(octets);
  std::optional<Data> result;
  if (place == element.data() + element.size()) result.emplace(bytes, bytes + ASN1_STRING_length(octets));
  ASN1_OCTET_STRING_free(octets);
  return result;
}

}  // namespace vantrell::host::codesign
