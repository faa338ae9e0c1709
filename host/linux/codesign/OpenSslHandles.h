// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/ts.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

namespace vantrell::host::codesign {

/// Owners of what libcrypto hands out.
struct FreeWithOpenSsl {
  void operator()(BIO* bio) const noexcept { BIO_free_all(bio); }
  void operator()(CMS_ContentInfo* message) const noexcept { CMS_ContentInfo_free(message); }
  void operator()(TS_TST_INFO* info) const noexcept { TS_TST_INFO_free(info); }
  void operator()(X509* certificate) const noexcept { X509_free(certificate); }
  void operator()(STACK_OF(X509) * certificates) const noexcept { sk_X509_pop_free(certificates, X509_free); }
  void operator()(X509_STORE* store) const noexcept { X509_STORE_free(store); }
  void operator()(X509_STORE_CTX* context) const noexcept { X509_STORE_CTX_free(context); }
  void operator()(ASN1_OBJECT* identifier) const noexcept { ASN1_OBJECT_free(identifier); }
};

using CmsHandle = std::unique_ptr<CMS_ContentInfo, FreeWithOpenSsl>;
using TimeStampInfoHandle = std::unique_ptr<TS_TST_INFO, FreeWithOpenSsl>;
using CertificateHandle = std::unique_ptr<X509, FreeWithOpenSsl>;
using CertificateListHandle = std::unique_ptr<STACK_OF(X509), FreeWithOpenSsl>;
using StoreHandle = std::unique_ptr<X509_STORE, FreeWithOpenSsl>;
using StoreContextHandle = std::unique_ptr<X509_STORE_CTX, FreeWithOpenSsl>;
using ObjectIdentifierHandle = std::unique_ptr<ASN1_OBJECT, FreeWithOpenSsl>;

/// libcrypto's name of a message's digest; null for those that aren't taken.
inline const char* digestNamed(const X509_ALGOR* algorithm) {
  switch (OBJ_obj2nid(algorithm->algorithm)) {
    case NID_sha1:
      return "SHA1";
    case NID_sha256:
      return "SHA256";
    case NID_sha384:
      return "SHA384";
    case NID_sha512:
      return "SHA512";
    default:
      return nullptr;
  }
}

}  // namespace vantrell::host::codesign
