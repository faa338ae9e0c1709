// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/codesign/DirectorySignature.h"

#include <algorithm>

#include <openssl/asn1t.h>
#include <openssl/err.h>

#include "foundation/PropertyList.h"
#include "host/linux/codesign/Findings.h"
#include "host/linux/codesign/TimeStamp.h"

namespace vantrell::host::codesign {
namespace {

constexpr char kDataContentType[] = "1.2.840.113549.1.7.1";
constexpr char kHashListAttribute[] = "1.2.840.113635.100.9.1";        // a property list of cut hashes
constexpr char kHashesByDigestAttribute[] = "1.2.840.113635.100.9.2";  // pairs of algorithm and whole hash
constexpr std::size_t kMaximumListSize = 64 << 10;

Error refused(std::string text) {
  return codeSigningError(code_signing_error::kSignatureFailed, std::move(text));
}

/// {"cdhashes": [the directories' hashes, in their order, cut to 20 bytes]}
bool listsAll(DataView list, std::span<const CodeDirectory> directories) {
  const auto parsed =
      propertyListFromData(list, {.maximumSize = kMaximumListSize, .maximumDepth = 8, .maximumObjects = 1000});
  if (!parsed) return false;
  const Dictionary* dictionary = parsed->root.asDictionary();
  const Value* value = dictionary == nullptr ? nullptr : dictionary->find("cdhashes");
  const Array* hashes = value == nullptr ? nullptr : value->asArray();
  return hashes != nullptr &&
         std::ranges::equal(*hashes, directories, [](const Value& hash, const CodeDirectory& directory) {
           return hash.asData() != nullptr && std::ranges::equal(*hash.asData(), directory.cdHash());
         });
}

/// One SEQUENCE of an object identifier and an octet string.
struct DigestPair {
  int algorithm = NID_undef;
  Data hash;
};

std::optional<DigestPair> pairFrom(DataView element) {
  const unsigned char* place = element.data();
  STACK_OF(ASN1_TYPE)* parts = d2i_ASN1_SEQUENCE_ANY(nullptr, &place, static_cast<long>(element.size()));
  if (parts == nullptr) {
    ERR_clear_error();
    return std::nullopt;
  }
  std::optional<DigestPair> pair;
  if (place == element.data() + element.size() && sk_ASN1_TYPE_num(parts) == 2) {
    const ASN1_TYPE* algorithm = sk_ASN1_TYPE_value(parts, 0);
    const ASN1_TYPE* hash = sk_ASN1_TYPE_value(parts, 1);
    if (algorithm->type == V_ASN1_OBJECT && hash->type == V_ASN1_OCTET_STRING) {
      const std::uint8_t* bytes = ASN1_STRING_get0_data(hash->value.octet_string);
      pair = DigestPair{OBJ_obj2nid(algorithm->value.object),
                        Data(bytes, bytes + ASN1_STRING_length(hash->value.octet_string))};
    }
  }
  sk_ASN1_TYPE_pop_free(parts, ASN1_TYPE_free);
  return pair;
}

int algorithmOf(HashType type) noexcept {
  switch (type) {
    case HashType::Sha1:
      return NID_sha1;
    case HashType::Sha384:
      return NID_sha384;
    default:
      return NID_sha256;
  }
}

/// Every directory among the pairs, and every pair a directory's.
bool pairsMatch(const std::vector<Data>& elements, std::span<const CodeDirectory> directories) {
  std::vector<DigestPair> pairs;
  for (const Data& element : elements) {
    auto pair = pairFrom(element);
    if (!pair) return false;
    pairs.push_back(*std::move(pair));
  }
  const auto belong = [](const DigestPair& pair, const CodeDirectory& directory) {
    return pair.algorithm == algorithmOf(directory.hashType()) && pair.hash == directory.digest();
  };
  return std::ranges::all_of(directories,
                             [&](const CodeDirectory& directory) {
                               return std::ranges::any_of(
                                   pairs, [&](const DigestPair& pair) { return belong(pair, directory); });
                             }) &&
         std::ranges::all_of(pairs, [&](const DigestPair& pair) {
           return std::ranges::any_of(directories,
                                      [&](const CodeDirectory& directory) { return belong(pair, directory); });
         });
}

ErrorOrNil verifyHashLists(const SignedMessage& message, std::span<const CodeDirectory> directories) {
  const auto list = message.signedAttribute(kHashListAttribute);
  if (!list) return list.error();
  const auto pairs = message.signedAttributeValues(kHashesByDigestAttribute);
  if (!pairs) return pairs.error();
  if (*list) {
    const auto octets = octetsOf(**list);
    if (!octets || !listsAll(*octets, directories)) return refused("The signer lists other code directories.");
  }
  if (!pairs->empty() && !pairsMatch(*pairs, directories)) return refused("The signer lists other code directories.");
  if (!*list && pairs->empty() && directories.size() > 1) {
    return refused("The signer has signed one of several code directories only.");
  }
  return std::nullopt;
}

}  // namespace

ErrorOrNil verifySignature(const SignedMessage& message, std::span<const CodeDirectory> directories,
                           const Trust& trust) {
  if (message.content()) return refused("The cryptographic signature has content of its own.");
  if (auto wrong = message.verify(directories.front().bytes(), kDataContentType)) return refused(*std::move(wrong));
  if (auto error = verifyHashLists(message, directories)) return error;
  const auto stamped = verifiedTimeOf(message, trust.anchor);
  // Another root's time stamp is told as what it is: another root.
  const Date time = stamped && *stamped ? **stamped : trust.now();
  const auto verdict =
      verifyChain(message.signer(), message.certificates(), trust.anchor, CertificateUse::CodeSigning, time);
  if (verdict.kind == ChainVerdict::Kind::OtherAnchor) {
    return codeSigningError(code_signing_error::kRequirementFailed,
                            "The signer's certificates don't lead to the root (" + verdict.reason + ").");
  }
  if (!stamped) return stamped.error();
  if (verdict.kind == ChainVerdict::Kind::Expired) {
    return refused(
        "The signer's certificates aren't valid " +
        std::string(*stamped ? "at the time of the time stamp" : "now, and no time stamp says that they were") + " (" +
        verdict.reason + ").");
  }
  if (verdict.kind != ChainVerdict::Kind::Trusted) {
    return refused("The signer's certificate isn't trusted (" + verdict.reason + ").");
  }
  return std::nullopt;
}

}  // namespace vantrell::host::codesign
