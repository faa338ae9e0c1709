// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/host/CryptographyContract.h"

namespace vantrell::tests {

namespace {

std::string hexOf(DataView bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += fmt::format("{:02x}", byte);
  return text;
}

Data dataOf(std::string_view text) {
  const DataView bytes = bytesOf(text);
  return {bytes.begin(), bytes.end()};
}

// Bytes 1, 2, 3 … as the published vectors' keys have them.
Data countingKey(std::size_t size) {
  Data key(size);
  for (std::size_t i = 0; i < size; ++i) key[i] = static_cast<std::uint8_t>(i + 1);
  return key;
}

}  // namespace

std::string CryptographyContract::sha1(std::string_view text) const {
  const auto digest = cryptography->sha1(bytesOf(text));
  return digest ? hexOf(*digest) : "failed";
}

Result<Data> CryptographyContract::rc4(DataView key, DataView input) const {
  Data output(input.size());
  if (const ErrorOrNil error = cryptography->rc4(key, input, output)) return failure(*error);
  return output;
}

TEST_P(CryptographyContract, DigestsThePublishedSha1Vectors) {
  EXPECT_EQ(sha1(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
  EXPECT_EQ(sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(sha1("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
  EXPECT_EQ(
      sha1("abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqr"
           "stnopqrstu"),
      "a49b2446a02c645bf419f995b67091253a04a259");
  EXPECT_EQ(sha1(std::string(1'000'000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST_P(CryptographyContract, AStreamedDigestEqualsTheOneShot) {
  Data bytes(1000);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 37 + i / 7);
  auto context = cryptography->makeSha1();
  ASSERT_TRUE(context.has_value());
  // Sizes around the padding's and the block's edges, in pieces of several sizes; one context serves them all.
  for (const std::size_t size : {0U, 1U, 55U, 56U, 63U, 64U, 65U, 119U, 120U, 128U, 1000U}) {
    const DataView whole = DataView(bytes).first(size);
    const auto expected = cryptography->sha1(whole);
    ASSERT_TRUE(expected.has_value());
    for (const std::size_t piece : {1U, 3U, 63U, 64U, 65U, 1000U}) {
      for (std::size_t at = 0; at < size; at += piece) {
        (*context)->update(whole.subspan(at, std::min(piece, size - at)));
      }
      (*context)->update({});
      EXPECT_EQ((*context)->finish(), *expected) << size << " bytes in pieces of " << piece;
    }
  }
}

TEST_P(CryptographyContract, ContextsAreIndependent) {
  auto one = cryptography->makeSha1();
  auto other = cryptography->makeSha1();
  ASSERT_TRUE(one.has_value() && other.has_value());
  (*one)->update(bytesOf("a"));
  (*other)->update(bytesOf("something else"));
  (*one)->update(bytesOf("bc"));
  EXPECT_EQ(hexOf((*one)->finish()), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST_P(CryptographyContract, EnciphersTheClassicRc4Vectors) {
  const auto enciphered = [&](std::string_view key, std::string_view text) {
    return hexOf(rc4(bytesOf(key), bytesOf(text)).value());
  };
  EXPECT_EQ(enciphered("Key", "Plaintext"), "bbf316e8d940af0ad3");
  EXPECT_EQ(enciphered("Wiki", "pedia"), "1021bf0420");
  EXPECT_EQ(enciphered("Secret", "Attack at dawn"), "45a01f645fc35b383552544b9bf5");
}

// RFC 6229: the key stream from offsets 0 and 4096 (zeros are enciphered to see it).
TEST_P(CryptographyContract, MakesThePublishedRc4KeyStreams) {
  struct Vector {
    std::size_t keySize;
    std::string_view at0;
    std::string_view at4096;
  };
  const std::vector<Vector> vectors = {
      {5, "b2396305f03dc027ccc3524a0a1118a8", "ff25b58995996707e51fbdf08b34d875"},
      {7, "293f02d47f37c9b633f2af5285feb46b", "e74b0b9731227fd37c0ec08a47ddd8b8"},
      {8, "97ab8a1bf0afb96132f2f67258da15a8", "3fb46e2c8f0f068edce8cdcd7dfc5862"},
      {16, "9ac7cc9a609d1ef7b2932899cde41b97", "a36a4c301ae8ac13610ccbc12256cacc"},
      {32, "eaa6bd25880bf93d3f5d1e4ca2611d91", "f3e4c0a2e02d1d01f7f0a74618af2b48"},
  };
  const Data zeros(4112);
  for (const Vector& vector : vectors) {
    const auto stream = rc4(countingKey(vector.keySize), zeros);
    ASSERT_TRUE(stream.has_value());
    EXPECT_EQ(hexOf(DataView(*stream).first(16)), vector.at0);
    EXPECT_EQ(hexOf(DataView(*stream).last(16)), vector.at4096);
  }
}

TEST_P(CryptographyContract, Rc4DeciphersWhatItEnciphered) {
  for (const std::size_t keySize : {1U, 16U, 256U}) {
    const Data key = countingKey(keySize);
    Data plain(3000);
    for (std::size_t i = 0; i < plain.size(); ++i) plain[i] = static_cast<std::uint8_t>(i * i);
    const auto enciphered = rc4(key, plain);
    ASSERT_TRUE(enciphered.has_value());
    EXPECT_NE(*enciphered, plain);
    EXPECT_EQ(rc4(key, *enciphered).value(), plain);
  }
}

TEST_P(CryptographyContract, Rc4WorksInPlace) {
  Data bytes = dataOf("Plaintext");
  EXPECT_EQ(cryptography->rc4(bytesOf("Key"), bytes, bytes), std::nullopt);
  EXPECT_EQ(hexOf(bytes), "bbf316e8d940af0ad3");
}

TEST_P(CryptographyContract, Rc4OfNothingIsNothing) {
  EXPECT_EQ(rc4(bytesOf("Key"), {}).value(), Data());
}

TEST_P(CryptographyContract, Rc4RefusesBadLengthsAndLeavesTheOutputAlone) {
  const Data input = dataOf("Plaintext");
  Data output(input.size(), 7);
  const Data untouched = output;
  const ErrorOrNil invalid = Error::posix(22);
  EXPECT_EQ(cryptography->rc4({}, input, output), invalid);
  EXPECT_EQ(cryptography->rc4(Data(257, 1), input, output), invalid);
  EXPECT_EQ(cryptography->rc4(bytesOf("Key"), DataView(input).first(8), output), invalid);
  EXPECT_EQ(cryptography->rc4(bytesOf("Key"), input, std::span(output).first(8)), invalid);
  EXPECT_EQ(output, untouched);
}

TEST_P(CryptographyContract, RandomBytesDiffer) {
  std::set<Data> seen;
  for (int i = 0; i < 100; ++i) {
    Data bytes(16);
    ASSERT_EQ(cryptography->randomBytes(bytes), std::nullopt);
    EXPECT_TRUE(seen.insert(bytes).second);
  }
}

// More than the Linux kernel hands out in one call, which is a byte less than 32 MiB.
TEST_P(CryptographyContract, RandomBytesFillAllOfALargeBuffer) {
  Data bytes(std::size_t{40} << 20);
  ASSERT_EQ(cryptography->randomBytes(bytes), std::nullopt);
  const Data zeros(64);
  for (const std::size_t at : {std::size_t{0}, std::size_t{32} << 20, bytes.size() - 64}) {
    EXPECT_FALSE(std::ranges::equal(DataView(bytes).subspan(at, 64), zeros)) << "at " << at;
  }
}

TEST_P(CryptographyContract, NoRandomBytesAreASuccess) {
  EXPECT_EQ(cryptography->randomBytes({}), std::nullopt);
}

}  // namespace vantrell::tests
