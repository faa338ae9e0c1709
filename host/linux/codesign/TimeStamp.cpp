// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/TimeStamp.h"

#include <algorithm>
#include <ctime>
#include <string>

#include <openssl/err.h>

#include "host/linux/codesign/CodeDigest.h"
#include "host/linux/codesign/Findings.h"

namespace vantrell::host::codesign {
namespace {

constexpr char kTimeStampAttribute[] = "1.2.840.113549.1.9.16.2.14";   // id-aa-timeStampToken
constexpr char kTimeStampContentType[] = "1.2.840.113549.1.9.16.1.4";  // id-ct-TSTInfo

std::unexpected<Error> refused(const std::string& reason) {
  ERR_clear_error();
  return codeSigningFailure(code_signing_error::kSignatureFailed, "The time stamp doesn't hold: " + reason);
}

const char* imprintDigest(TS_TST_INFO* info) {
  return digestNamed(TS_MSG_IMPRINT_get_algo(TS_TST_INFO_get_msg_imprint(info)));
}

bool isOver(DataView signature, TS_TST_INFO* info) {
  const char* algorithm = imprintDigest(info);
  if (algorithm == nullptr) return false;
  const ASN1_OCTET_STRING* imprint = TS_MSG_IMPRINT_get_msg(TS_TST_INFO_get_msg_imprint(info));
  const DataView stated(ASN1_STRING_get0_data(imprint), static_cast<std::size_t>(ASN1_STRING_length(imprint)));
  const Data digest = digestOf(algorithm, signature);
  return !digest.empty() && std::ranges::equal(digest, stated);
}

std::optional<Date> timeOf(const TS_TST_INFO* info) {
  std::tm parts{};
  const ASN1_GENERALIZEDTIME* time = TS_TST_INFO_get_time(info);
  if (time == nullptr || ASN1_TIME_to_tm(time, &parts) != 1) return std::nullopt;
  return Date{timegm(&parts), 0};
}

/// The token's certificates, and those of the message, which may have the root that the token leaves out.
CertificateListHandle joined(STACK_OF(X509) * first, STACK_OF(X509) * second) {
  CertificateListHandle list(sk_X509_new_null());
  if (list && first != nullptr) X509_add_certs(list.get(), first, X509_ADD_FLAG_UP_REF | X509_ADD_FLAG_NO_DUP);
  if (list && second != nullptr) X509_add_certs(list.get(), second, X509_ADD_FLAG_UP_REF | X509_ADD_FLAG_NO_DUP);
  return list;
}

}  // namespace

Result<std::optional<Date>> verifiedTimeOf(const SignedMessage& message, const Fingerprint& anchor) {
  const auto attribute = message.unsignedAttribute(kTimeStampAttribute);
  if (!attribute) return failure(attribute.error());
  if (!*attribute) return std::nullopt;
  const auto token = SignedMessage::parse(**attribute);
  if (!token) return refused(sentenceOf(token.error()));
  const auto content = token->content();
  if (!content) return refused("It is empty.");
  if (const auto wrong = token->verify(*content, kTimeStampContentType)) return refused(*wrong);

  const unsigned char* place = content->data();
  const TimeStampInfoHandle info(d2i_TS_TST_INFO(nullptr, &place, static_cast<long>(content->size())));
  if (!info || place != content->data() + content->size()) return refused("It is malformed.");
  if (!isOver(message.signatureBytes(), info.get())) return refused("It is over something else.");
  const auto time = timeOf(info.get());
  if (!time) return refused("It names no time.");

  const auto candidates = joined(token->certificates(), message.certificates());
  const auto verdict = verifyChain(token->signer(), candidates.get(), anchor, CertificateUse::TimeStamping, *time);
  if (verdict.kind != ChainVerdict::Kind::Trusted) return refused("Its signer isn't trusted (" + verdict.reason + ").");
  return time;
}

}  // namespace vantrell::host::codesign
