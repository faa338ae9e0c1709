// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/CertificateChain.h"

#include <algorithm>

#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/x509v3.h>

#include "foundation/Unicode.h"

namespace vantrell::host::codesign {
namespace {

constexpr int kLongestChain = 8;
constexpr std::string_view kVendorExtensions = "1.2.840.113635.100.6.";

bool hasFingerprint(const X509* certificate, const Fingerprint& expected) {
  std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest;
  unsigned size = 0;
  return X509_digest(certificate, EVP_sha256(), digest.data(), &size) == 1 && size == expected.size() &&
         std::equal(expected.begin(), expected.end(), digest.begin());
}

X509* certificateWith(const Fingerprint& fingerprint, STACK_OF(X509) * candidates) {
  for (int index = 0; index < sk_X509_num(candidates); ++index) {
    X509* candidate = sk_X509_value(candidates, index);
    if (hasFingerprint(candidate, fingerprint)) return candidate;
  }
  return nullptr;
}

bool isOfTheVendor(const X509_EXTENSION* extension) {
  std::array<char, 128> name;
  const int length = OBJ_obj2txt(name.data(), static_cast<int>(name.size()),
                                 X509_EXTENSION_get_object(const_cast<X509_EXTENSION*>(extension)), 1);
  return length > 0 && length < static_cast<int>(name.size()) &&
         std::string_view(name.data(), static_cast<std::size_t>(length)).starts_with(kVendorExtensions);
}

/// Whether all critical extensions are libcrypto's or the vendor's.
bool understandsExtensions(const X509* certificate) {
  for (int index = 0; index < X509_get_ext_count(certificate); ++index) {
    X509_EXTENSION* extension = X509_get_ext(certificate, index);
    if (X509_EXTENSION_get_critical(extension) == 0 || X509_supported_extension(extension) != 0) continue;
    if (!isOfTheVendor(extension)) return false;
  }
  return true;
}

int overlookVendorExtensions(int verified, X509_STORE_CTX* context) {
  if (verified != 0) return verified;
  if (X509_STORE_CTX_get_error(context) != X509_V_ERR_UNHANDLED_CRITICAL_EXTENSION) return 0;
  const X509* certificate = X509_STORE_CTX_get_current_cert(context);
  if (certificate == nullptr || !understandsExtensions(certificate)) return 0;
  X509_STORE_CTX_set_error(context, X509_V_OK);
  return 1;
}

/// What the leaf says of its use; nothing wrong gives nothing.
std::string misuse(X509* leaf, CertificateUse use) {
  const std::uint32_t extended = X509_get_extended_key_usage(leaf);
  const std::uint32_t wanted = use == CertificateUse::CodeSigning ? XKU_CODE_SIGN : XKU_TIMESTAMP;
  if (extended == UINT32_MAX || (extended & wanted) == 0) {
    return use == CertificateUse::CodeSigning ? "it isn't for signing code" : "it isn't for time stamps";
  }
  if ((X509_get_key_usage(leaf) & KU_DIGITAL_SIGNATURE) == 0) return "its key isn't for signatures";
  if (X509_check_ca(leaf) == 1) return "it is for signing certificates";
  return "";
}

ChainVerdict verdictFor(int error) {
  const char* reason = X509_verify_cert_error_string(error);
  switch (error) {
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_CERT_UNTRUSTED:
      return {ChainVerdict::Kind::OtherAnchor, reason};
    case X509_V_ERR_CERT_HAS_EXPIRED:
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return {ChainVerdict::Kind::Expired, reason};
    default:
      return {ChainVerdict::Kind::Refused, reason};
  }
}

std::string commonName(const X509* certificate) {
  const X509_NAME* name = X509_get_subject_name(certificate);
  const int index = X509_NAME_get_index_by_NID(name, NID_commonName, -1);
  if (index < 0) return "(no common name)";
  unsigned char* text = nullptr;
  const int length = ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, index)));
  if (length < 0) return "(no common name)";
  std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
  OPENSSL_free(text);
  return isWellFormedUtf8(result) ? result : "(no common name)";
}

}  // namespace

ChainVerdict verifyChain(X509* leaf, STACK_OF(X509) * candidates, const Fingerprint& anchor, CertificateUse use,
                         const Date& time) {
  X509* root = certificateWith(anchor, candidates);
  if (root == nullptr) return {ChainVerdict::Kind::OtherAnchor, "the root isn't among the certificates"};
  if (X509_cmp(root, leaf) == 0) return {ChainVerdict::Kind::Refused, "the root itself has signed"};
  const StoreHandle store(X509_STORE_new());
  const StoreContextHandle context(X509_STORE_CTX_new());
  if (!store || !context || X509_STORE_add_cert(store.get(), root) != 1 ||
      X509_STORE_CTX_init(context.get(), store.get(), leaf, candidates) != 1) {
    return {ChainVerdict::Kind::Refused, "no memory"};
  }
  X509_VERIFY_PARAM* parameters = X509_STORE_CTX_get0_param(context.get());
  X509_VERIFY_PARAM_set_depth(parameters, kLongestChain);
  X509_VERIFY_PARAM_set_auth_level(parameters, 0);  // SHA-1 in intermediates
  X509_VERIFY_PARAM_set_time(parameters, static_cast<time_t>(time.seconds));
  X509_STORE_CTX_set_verify_cb(context.get(), overlookVendorExtensions);
  if (X509_verify_cert(context.get()) != 1) return verdictFor(X509_STORE_CTX_get_error(context.get()));
  if (std::string reason = misuse(leaf, use); !reason.empty()) return {ChainVerdict::Kind::Refused, reason};
  return {ChainVerdict::Kind::Trusted, ""};
}

std::vector<std::string> chainNames(X509* leaf, STACK_OF(X509) * candidates) {
  std::vector<std::string> names;
  X509* current = leaf;
  while (current != nullptr && names.size() < kLongestChain) {
    names.push_back(commonName(current));
    X509* issuer = nullptr;
    for (int index = 0; index < sk_X509_num(candidates) && issuer == nullptr; ++index) {
      X509* candidate = sk_X509_value(candidates, index);
      if (X509_cmp(candidate, current) != 0 && X509_check_issued(candidate, current) == X509_V_OK) issuer = candidate;
    }
    current = issuer;
  }
  return names;
}

}  // namespace vantrell::host::codesign
