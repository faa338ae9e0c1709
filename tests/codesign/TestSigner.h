// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <openssl/cms.h>

#include "foundation/PropertyList.h"
#include "host/linux/codesign/CodeDigest.h"
#include "host/linux/codesign/CodeDirectory.h"
#include "host/linux/codesign/SuperBlob.h"
#include "tests/codesign/TestAuthority.h"
#include "tests/macho/MachOBuilder.h"

namespace vantrell::tests {

using host::codesign::HashType;

/// How a test signs.
struct SigningOptions {
  TestAuthority* authority = nullptr;             // of the time stamp
  const TestIdentity* signer = nullptr;           // null: ad-hoc
  std::vector<const TestIdentity*> certificates;  // beside the signer's
  std::string identifier = "com.example.program";
  std::optional<std::string> team = "TEAM123456";
  std::vector<HashType> hashTypes = {HashType::Sha256};  // one code directory each
  std::uint32_t version = 0x20400;
  std::uint8_t pageExponent = 12;
  bool listDirectories = true;  // in the signed attributes
  bool timeStamp = false;
  const TestIdentity* timeStamper = nullptr;  // null: the authority's
  std::optional<std::uint32_t> scatter;
  std::optional<Data> informationList;
  std::optional<Data> codeResources;
  std::optional<std::string> entitlements = "<plist version=\"1.0\"><dict/></plist>";
  /// Changes the signature's parts (by slot) before they are put together; not told of the CMS part.
  std::function<void(std::vector<std::pair<std::uint32_t, Data>>&)> beforeMessage;
  /// The same, with the CMS part.
  std::function<void(std::vector<std::pair<std::uint32_t, Data>>&)> afterMessage;

  static SigningOptions by(TestAuthority& authority) {
    SigningOptions options;
    options.authority = &authority;
    options.signer = &authority.leaf;
    options.certificates = {&authority.intermediate, &authority.root};
    return options;
  }
  static SigningOptions adHoc() { return {}; }
};

namespace signing {

inline Data blob(std::uint32_t magic, DataView content) {
  ByteWriter writer(Endian::Big);
  writer.word(magic).word(static_cast<std::uint32_t>(content.size() + 8)).bytes(content);
  return writer.data();
}

inline std::size_t headerSizeOf(std::uint32_t version) {
  return version >= 0x20600   ? 108
         : version >= 0x20500 ? 96
         : version >= 0x20400 ? 88
         : version >= 0x20300 ? 64
         : version >= 0x20200 ? 52
         : version >= 0x20100 ? 48
                              : 44;
}

inline Data hashOf(HashType type, DataView bytes) {
  Data hash = host::codesign::digestOf(type, bytes);
  hash.resize(host::codesign::storedHashSize(type));
  return hash;
}

/// A code directory over `code`, with a special slot for each of `parts` and the files.
inline Data codeDirectory(const SigningOptions& options, HashType type, DataView code,
                          const std::vector<std::pair<std::uint32_t, Data>>& parts) {
  constexpr std::uint32_t kSpecialSlots = 7;
  std::vector<Data> special(kSpecialSlots, Data(host::codesign::storedHashSize(type)));
  for (const auto& [slot, bytes] : parts) {
    if (slot <= kSpecialSlots) special[slot - 1] = hashOf(type, bytes);
  }
  if (options.informationList) special[0] = hashOf(type, *options.informationList);
  if (options.codeResources) special[2] = hashOf(type, *options.codeResources);
  Data hashes;
  for (auto slot = special.rbegin(); slot != special.rend(); ++slot) hashes = std::move(hashes) + *slot;
  const std::size_t page = options.pageExponent == 0 ? code.size() : std::size_t{1} << options.pageExponent;
  std::uint32_t pages = 0;
  for (std::size_t start = 0; start < code.size(); start += page, ++pages) {
    hashes = std::move(hashes) + hashOf(type, code.subspan(start, std::min(page, code.size() - start)));
  }
  const std::size_t header = headerSizeOf(options.version);
  const bool hasTeam = options.team && options.version >= 0x20200;
  Data texts = dataOf(options.identifier + '\0');
  const std::size_t teamOffset = header + texts.size();
  if (hasTeam) texts = std::move(texts) + dataOf(*options.team + '\0');

  Data head(header);
  const auto put = [&head](std::size_t offset, std::size_t value) {
    putWord(head, offset, static_cast<std::uint32_t>(value), Endian::Big);
  };
  put(0, 0xfade0c02);
  put(4, header + texts.size() + hashes.size());
  put(8, options.version);
  put(12, options.signer == nullptr ? 2 : 0);
  put(16, header + texts.size() + kSpecialSlots * host::codesign::storedHashSize(type));
  put(20, header);
  put(24, kSpecialSlots);
  put(28, pages);
  put(32, code.size());
  head[36] = static_cast<std::uint8_t>(host::codesign::storedHashSize(type));
  head[37] = static_cast<std::uint8_t>(type);
  head[39] = options.pageExponent;
  if (options.scatter) put(44, *options.scatter);
  if (hasTeam) put(48, teamOffset);
  return (head + texts) + hashes;
}

/// SEQUENCE { algorithm, hash }
inline Data digestPair(HashType type, DataView hash) {
  const Data algorithm = type == HashType::Sha1     ? Data{0x06, 5, 0x2b, 0x0e, 3, 2, 0x1a}
                         : type == HashType::Sha384 ? Data{0x06, 9, 0x60, 0x86, 0x48, 1, 0x65, 3, 4, 2, 2}
                                                    : Data{0x06, 9, 0x60, 0x86, 0x48, 1, 0x65, 3, 4, 2, 1};
  const Data octets = Data{0x04, static_cast<std::uint8_t>(hash.size())} + hash;
  const Data content = algorithm + octets;
  return Data{0x30, static_cast<std::uint8_t>(content.size())} + content;
}

inline void addHashLists(CMS_SignerInfo* signer, const SigningOptions& options, const std::vector<Data>& directories) {
  Array cut;
  X509_ATTRIBUTE* pairs = nullptr;
  for (std::size_t index = 0; index < directories.size(); ++index) {
    const HashType type = options.hashTypes[index];
    const Data hash = host::codesign::digestOf(type, directories[index]);
    cut.emplace_back(Data(hash.begin(), hash.begin() + 20));
    const Data pair = digestPair(type, hash);
    if (pairs == nullptr) {
      pairs = X509_ATTRIBUTE_create_by_txt(nullptr, "1.2.840.113635.100.9.2", V_ASN1_SEQUENCE, pair.data(),
                                           static_cast<int>(pair.size()));
    } else {
      X509_ATTRIBUTE_set1_data(pairs, V_ASN1_SEQUENCE, pair.data(), static_cast<int>(pair.size()));
    }
  }
  const Data list = xmlPropertyListFromValue(Dictionary{{"cdhashes", cut}}).value();
  CMS_signed_add1_attr_by_txt(signer, "1.2.840.113635.100.9.1", V_ASN1_OCTET_STRING, list.data(),
                              static_cast<int>(list.size()));
  CMS_signed_add1_attr(signer, pairs);
  X509_ATTRIBUTE_free(pairs);
}

/// The CMS message over the first of `directories`.
inline Data message(const SigningOptions& options, const std::vector<Data>& directories) {
  constexpr unsigned kFlags = CMS_DETACHED | CMS_BINARY | CMS_PARTIAL | CMS_NOSMIMECAP;
  const host::codesign::CmsHandle message(CMS_sign(nullptr, nullptr, nullptr, nullptr, kFlags));
  CMS_SignerInfo* signer = CMS_add1_signer(message.get(), options.signer->certificate.get(), options.signer->key.get(),
                                           EVP_sha256(), kFlags);
  for (const TestIdentity* identity : options.certificates) {
    CMS_add1_cert(message.get(), identity->certificate.get());
  }
  if (options.listDirectories) addHashLists(signer, options, directories);
  const std::unique_ptr<BIO, host::codesign::FreeWithOpenSsl> content(
      BIO_new_mem_buf(directories.front().data(), static_cast<int>(directories.front().size())));
  if (CMS_final(message.get(), content.get(), nullptr, kFlags) != 1) throw std::runtime_error("CMS_final failed");
  if (options.timeStamp) {
    const ASN1_OCTET_STRING* signature = CMS_SignerInfo_get0_signature(signer);
    const std::string token = options.authority->timeStampOver(
        {reinterpret_cast<const char*>(signature->data), static_cast<std::size_t>(signature->length)},
        options.timeStamper != nullptr ? *options.timeStamper : options.authority->timeStamper);
    CMS_unsigned_add1_attr_by_txt(signer, "1.2.840.113549.1.9.16.2.14", V_ASN1_SEQUENCE, token.data(),
                                  static_cast<int>(token.size()));
  }
  unsigned char* bytes = nullptr;
  const int size = i2d_CMS_ContentInfo(message.get(), &bytes);
  Data result(bytes, bytes + size);
  OPENSSL_free(bytes);
  return result;
}

inline Data superBlob(const std::vector<std::pair<std::uint32_t, Data>>& parts) {
  ByteWriter index(Endian::Big);
  Data contents;
  std::size_t place = 12 + parts.size() * 8;
  for (const auto& [slot, bytes] : parts) {
    index.word(slot).word(static_cast<std::uint32_t>(place + contents.size()));
    contents = std::move(contents) + bytes;
  }
  ByteWriter writer(Endian::Big);
  writer.word(0xfade0cc0).word(static_cast<std::uint32_t>(place + contents.size()));
  writer.word(static_cast<std::uint32_t>(parts.size())).bytes(index.data()).bytes(contents);
  return writer.data();
}

/// The signature of `code`.
inline Data signatureOf(const SigningOptions& options, DataView code) {
  std::vector<std::pair<std::uint32_t, Data>> parts;
  parts.emplace_back(2, blob(0xfade0c01, Data(4)));  // a set of no requirements
  if (options.entitlements) parts.emplace_back(5, blob(0xfade7171, bytesOf(*options.entitlements)));
  std::vector<Data> directories;
  for (const HashType type : options.hashTypes) directories.push_back(codeDirectory(options, type, code, parts));
  for (std::size_t index = 0; index < directories.size(); ++index) {
    parts.emplace_back(static_cast<std::uint32_t>(index == 0 ? 0 : 0xFFF + index), directories[index]);
  }
  if (options.beforeMessage) options.beforeMessage(parts);
  const Data cms = options.signer != nullptr ? message(options, directories) : Data();
  parts.emplace_back(0x10000, blob(0xfade0b01, cms));
  if (options.afterMessage) options.afterMessage(parts);
  return superBlob(parts);
}

}  // namespace signing

/// The file that `unsignedFile` makes, with a signature behind everything else.
inline Data signedFile(const MachOBuilder& unsignedFile, const SigningOptions& options, std::size_t spare = 64) {
  // The load command tells the signature's length, and is signed itself: a first round finds the length out.
  const std::size_t likely = signing::signatureOf(options, MachOBuilder(unsignedFile).signature("").build()).size();
  const std::size_t room = likely + spare;
  Data file = MachOBuilder(unsignedFile).signature(std::string(room, '\0')).build();
  const std::size_t limit = file.size() - room;
  const Data signature = signing::signatureOf(options, DataView(file).first(limit));
  if (signature.size() > room) throw std::runtime_error("the signature has no room");
  std::copy(signature.begin(), signature.end(), file.begin() + static_cast<std::ptrdiff_t>(limit));
  return file;
}

/// Where the signature of a thin file of signedFile begins.
inline std::size_t signatureStart(DataView file) {
  const std::string_view magic("\xfa\xde\x0c\xc0", 4);
  return textOf(file).rfind(magic);
}

/// The hash by which a seal refers to the thin file (that of its first code directory).
inline Data cdHashOf(DataView file) {
  const auto blobs = host::codesign::SuperBlob::parse(file.subspan(signatureStart(file))).value();
  const auto directory = host::codesign::CodeDirectory::parse(blobs.find(0)->bytes).value();
  return Data(directory.cdHash().begin(), directory.cdHash().end());
}

/// A program of some pages.
inline MachOBuilder sampleProgram(std::size_t size = 20'000, char seed = 'a') {
  std::string text(size, seed);
  for (std::size_t index = 0; index < size; ++index) text[index] = static_cast<char>(seed + index % 97);
  return MachOBuilder().segment("__TEXT", {{"__TEXT", "__text", text, 0, {}, {}}});
}

}  // namespace vantrell::tests
