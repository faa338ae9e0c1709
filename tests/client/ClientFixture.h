// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "client/PrivilegedToolClient.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeService.h"

namespace vantrell::tests {

inline constexpr char kHelper[] = "/fake/helper";
inline constexpr char kDescriptor[] = "000102030405060708090a0b0c0d0e0f10111213";

inline Data keyPrefix() {
  Data prefix(20);
  for (std::size_t i = 0; i < prefix.size(); ++i) prefix[i] = static_cast<std::uint8_t>(i);
  return prefix;
}

/// The service's answer, where there must be one.
inline ErrorOrNil answerIn(const Result<ErrorOrNil>& result) {
  if (result) return *result;
  ADD_FAILURE() << "no answer: " << result.error().code();
  return Error("no answer", -1);
}

class ClientFixture : public testing::Test {
 protected:
  ClientFixture() {
    context_.executables->descriptors[kHelper] = kDescriptor;
    auto transport = std::make_unique<FakeClientTransport>(service_);
    transport_ = transport.get();
    context_.host.clientTransport = std::move(transport);
  }

  std::unique_ptr<PrivilegedToolClient> connect(const std::string& helper = kHelper) {
    auto client = PrivilegedToolClient::connect({HelperLocation::Way::Address, "unix:path=/socket", helper},
                                                operations_, context_.host);
    if (!client) {
      ADD_FAILURE() << "no connection";
      return nullptr;
    }
    return std::move(*client);
  }
  std::unique_ptr<PrivilegedToolClient> registered() {
    auto client = connect();
    if (client) {
      EXPECT_EQ(client->registerClient(), std::nullopt);
    }
    return client;
  }

  ClientHost context_;
  QELPrivilegedToolOperationSetLM4 operations_{*context_.host.systemLog};
  FakeService service_{context_.host, operations_, keyPrefix()};
  FakeClientTransport* transport_;
};

}  // namespace vantrell::tests
