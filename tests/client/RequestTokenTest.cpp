// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/RequestToken.h"
#include "foundation/PropertyList.h"
#include "host/linux/NettleCryptography.h"
#include "tests/client/ClientHost.h"

namespace vantrell {
namespace {

const Data kKey(24, 0x5A);

TEST(RequestToken, IsDigestThenLittleEndianPidThenCipherText) {
  host::NettleCryptography cryptography;
  const Data envelope{'e', 'n', 'v', 'e', 'l', 'o', 'p', 'e'};
  const auto token = makeRequestToken(0x0102030405060708, kKey, envelope, cryptography);
  ASSERT_TRUE(token);
  ASSERT_EQ(token->size(), 20 + 8 + envelope.size());

  const DataView body = DataView(*token).subspan(20);
  const auto digest = cryptography.sha1(body);
  EXPECT_TRUE(std::equal(digest->begin(), digest->end(), token->begin()));
  EXPECT_EQ(Data(body.begin(), body.begin() + 8), (Data{8, 7, 6, 5, 4, 3, 2, 1}));
  Data plain(envelope.size());
  EXPECT_EQ(cryptography.rc4(kKey, body.subspan(8), plain), std::nullopt);
  EXPECT_EQ(plain, envelope);
}

// The bytes were computed with an independent implementation of SHA-1 and RC4.
TEST(RequestToken, HasTheseBytesForThisEnvelope) {
  host::NettleCryptography cryptography;
  const Data key{'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b',
                 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j', 'S', 'A', 'L', 'T'};
  const auto token = makeRequestToken(4711, key, bytesOf("bplist00"), cryptography);
  ASSERT_TRUE(token);
  EXPECT_EQ(*token, (Data{0xD8, 0x1B, 0x7F, 0xA9, 0xC2, 0x1E, 0x15, 0x62, 0xE0, 0xFD, 0xCB, 0xBA,
                          0x4A, 0xFC, 0xA9, 0xDA, 0xC4, 0x2F, 0x8B, 0x41, 0x67, 0x12, 0x00, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x68, 0x15, 0x71, 0x87, 0xD5, 0xEC, 0x3B, 0x2D}));
}

TEST(RequestToken, CarriesAnEmptyEnvelope) {
  host::NettleCryptography cryptography;
  const auto token = makeRequestToken(1, kKey, {}, cryptography);
  ASSERT_TRUE(token);
  EXPECT_EQ(token->size(), 28u);
}

TEST(RequestToken, NeedsAKey) {
  host::NettleCryptography cryptography;
  EXPECT_FALSE(makeRequestToken(1, {}, bytesOf("x"), cryptography));
}

TEST(RenewedEnvelope, KeepsAllButTheTime) {
  tests::ClientHost client;
  const QELPrivilegedToolOperationSetLM4 operations(*client.host.systemLog);
  const Array arguments{"1", "0", "/tmp/\xC3\xA4"};
  auto envelope = operations.standaloneDataForConcretePrivilegedOperation(3, arguments, client.host);
  ASSERT_TRUE(envelope);
  auto old = *propertyListFromData(*envelope)->root.asDictionary();
  old.set("Time", Date{1'000'000, 0});
  const auto oldData = binaryPropertyListFromValue(old);

  const auto before = Date::now();
  const auto renewed = renewedEnvelope(*oldData);
  ASSERT_TRUE(renewed);
  auto fresh = *propertyListFromData(*renewed)->root.asDictionary();
  ASSERT_TRUE(fresh.find("Time") && fresh.find("Time")->asDate());
  EXPECT_GE(fresh.find("Time")->asDate()->secondsSince(before), -0.001);
  fresh.remove("Time");
  old.remove("Time");
  EXPECT_EQ(fresh, old);
}

TEST(RenewedEnvelope, IsNothingForOtherData) {
  EXPECT_EQ(renewedEnvelope(bytesOf("bplist00 and nothing more")), std::nullopt);
  const auto array = binaryPropertyListFromValue(Array{1, 2});
  ASSERT_TRUE(array);
  EXPECT_EQ(renewedEnvelope(*array), std::nullopt);
}

}  // namespace
}  // namespace vantrell
