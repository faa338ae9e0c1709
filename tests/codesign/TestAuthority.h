// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include "host/linux/codesign/CertificateChain.h"
#include "host/linux/codesign/OpenSslHandles.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// A certificate and its key, made by the openssl command.
struct TestIdentity {
  struct FreeKey {
    void operator()(EVP_PKEY* key) const noexcept { EVP_PKEY_free(key); }
  };

  std::string certificateFile;
  std::string keyFile;
  host::codesign::CertificateHandle certificate;
  std::unique_ptr<EVP_PKEY, FreeKey> key;
};

/// A certificate authority made on the spot: a root, an intermediate, a signer of code with the vendor's critical
/// marker extensions, and an authority for time stamps. Certificates hold for 30 days, those of the authorities for 20
/// years.
class TestAuthority {
 public:
  TestAuthority() {
    root =
        issue("Test Root", nullptr, "basicConstraints=critical,CA:TRUE\nkeyUsage=critical,keyCertSign,cRLSign\n", 7300);
    intermediate = issue("Test Intermediate", &root,
                         "basicConstraints=critical,CA:TRUE\nkeyUsage=critical,keyCertSign,cRLSign\n"
                         "1.2.840.113635.100.6.2.6=DER:0500\n",
                         7300);
    leaf = issue("Test Signer", &intermediate,
                 "keyUsage=critical,digitalSignature\nextendedKeyUsage=critical,codeSigning\n"
                 "1.2.840.113635.100.6.1.13=critical,DER:0500\n");
    timeStamper = issue("Test Time Stamper", &root,
                        "keyUsage=critical,digitalSignature\nextendedKeyUsage=critical,timeStamping\n");
  }

  /// A further certificate; `issuer` is null for one that signs itself.
  TestIdentity issue(const std::string& name, const TestIdentity* issuer, const std::string& extensions,
                     int days = 30) {
    const std::string stem = folder_.path(std::to_string(++count_));
    TestIdentity identity;
    identity.certificateFile = stem + ".pem";
    identity.keyFile = stem + ".key";
    const std::string list = folder_.makeFile(std::to_string(count_) + ".ext", extensions);
    openssl({"ecparam", "-name", "prime256v1", "-genkey", "-noout", "-out", identity.keyFile});
    openssl({"req", "-new", "-key", identity.keyFile, "-subj", "/CN=" + name, "-out", stem + ".csr"});
    std::vector<std::string> arguments = {"x509",
                                          "-req",
                                          "-in",
                                          stem + ".csr",
                                          "-extfile",
                                          list,
                                          "-sha256",
                                          "-days",
                                          std::to_string(days),
                                          "-out",
                                          identity.certificateFile};
    if (issuer != nullptr) {
      arguments.insert(arguments.end(), {"-CA", issuer->certificateFile, "-CAkey", issuer->keyFile, "-set_serial",
                                         std::to_string(1000 + count_)});
    } else {
      arguments.insert(arguments.end(), {"-signkey", identity.keyFile});
    }
    openssl(arguments);
    load(identity);
    return identity;
  }

  /// A time stamp over `signature`, made by the openssl command at this moment, as a DER element.
  std::string timeStampOver(std::string_view signature, const TestIdentity& stamper) {
    const std::string stem = folder_.path("stamp-" + std::to_string(++count_));
    const std::string name = lastOf(stem);
    const std::string data = folder_.makeFile(name + ".data", signature);
    const std::string serial = folder_.path("serial");
    const std::string settings =
        folder_.makeFile(name + ".cnf", "[tsa]\ndefault_tsa=one\n[one]\nserial=" + serial +
                                            "\ndefault_policy=1.2.3.4\ndigests=sha256\nsigner_digest=sha256\n"
                                            "ess_cert_id_chain=no\nordering=yes\n");
    openssl({"ts", "-query", "-data", data, "-sha256", "-cert", "-out", stem + ".query"});
    openssl({"ts", "-reply", "-config", settings, "-section", "one", "-queryfile", stem + ".query", "-signer",
             stamper.certificateFile, "-inkey", stamper.keyFile, "-token_out", "-out", stem + ".token"});
    std::ifstream token(stem + ".token", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(token), {});
  }

  host::codesign::Fingerprint anchor() const { return fingerprintOf(root); }

  static host::codesign::Fingerprint fingerprintOf(const TestIdentity& identity) {
    host::codesign::Fingerprint fingerprint;
    unsigned size = 0;
    X509_digest(identity.certificate.get(), EVP_sha256(), fingerprint.data(), &size);
    return fingerprint;
  }

  TestIdentity root;
  TestIdentity intermediate;
  TestIdentity leaf;
  TestIdentity timeStamper;

 private:
  static std::string lastOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

  static void openssl(const std::vector<std::string>& arguments) {
    const auto result = runProgram("/usr/bin/openssl", arguments);
    if (result.status != 0) throw std::runtime_error("openssl " + arguments.front() + ": " + result.error);
  }

  static void load(TestIdentity& identity) {
    const std::unique_ptr<BIO, host::codesign::FreeWithOpenSsl> certificate(
        BIO_new_file(identity.certificateFile.c_str(), "r"));
    const std::unique_ptr<BIO, host::codesign::FreeWithOpenSsl> key(BIO_new_file(identity.keyFile.c_str(), "r"));
    identity.certificate.reset(PEM_read_bio_X509(certificate.get(), nullptr, nullptr, nullptr));
    identity.key.reset(PEM_read_bio_PrivateKey(key.get(), nullptr, nullptr, nullptr));
    if (!identity.certificate || !identity.key) throw std::runtime_error("no certificate from openssl");
  }

  TemporaryFolder folder_;
  int count_ = 0;
};

}  // namespace vantrell::tests
