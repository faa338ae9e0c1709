// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/OperationCancellation.h"
#include "client/PrivilegedToolClient.h"
#include "foundation/Value.h"
#include "host/Host.h"
#include "host/linux/NoLog.h"
#include "tests/support/ChildScripts.h"
#include "tests/support/PrivateSystemFolders.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

inline const std::string kProgram = std::string(VANTRELL_BINARY_DIR) + "/vantrellctl";
inline const std::string kHelper = std::string(VANTRELL_BINARY_DIR) + "/Vantrell-PrivilegedTool";
inline const std::string kOperationErrors = std::string(VANTRELL_VENDOR_DOMAIN_PREFIX) + ".error.privileged-operation";
inline constexpr char kApplication[] = "/Applications/Test.app";

enum Code : std::uint64_t {
  kExecuteUtility = 22,
  kCheckSecurityPolicy = 9994,
  kPerformUninstall = 9995,
  kDeleteFiles = 9996,
  kDiscardAuth = 9997
};

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline bool exists(const std::string& path) {
  return std::filesystem::exists(std::filesystem::symlink_status(path));
}

/// What a client hears of one run.
struct Heard {
  std::vector<Dictionary> messages;
  ErrorOrNil result;

  /// The numbered pieces of output in the order in which they arrived, which must be that of their numbers from 0 on.
  std::vector<Piece> pieces() const {
    std::vector<Piece> pieces;
    for (const auto& message : messages) {
      const auto* number = message.find("SequenceNumber");
      if (!number) continue;
      EXPECT_EQ(number->asNumber()->unsignedValue(), pieces.size());
      EXPECT_EQ(message.size(), 2u);
      const auto* error = message.find("ErrorData");
      const auto* data = error ? error : message.find("OutputData");
      if (!data || !data->asData()) {
        ADD_FAILURE() << "a piece without data";
        continue;
      }
      pieces.push_back({error != nullptr, std::string(textOf(*data->asData()))});
    }
    return pieces;
  }
  std::string text(bool ofError) const {
    std::string all;
    for (const auto& piece : pieces()) {
      if (piece.isError == ofError) all += piece.bytes;
    }
    return all;
  }
  /// That each stream ended with its only empty piece.
  void expectEachStreamEndsOnce() const {
    for (const bool ofError : {false, true}) {
      std::vector<bool> empty;
      for (const auto& piece : pieces()) {
        if (piece.isError == ofError) empty.push_back(piece.bytes.empty());
      }
      ASSERT_FALSE(empty.empty()) << ofError;
      EXPECT_TRUE(empty.back()) << ofError;
      EXPECT_EQ(std::ranges::count(empty, true), 1) << ofError;
    }
  }
};

/// The real helper, which sees private folders of system programs, and a registered client.
class SystemProgramsFixture : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the helper serves as root only";
    try {
      folders_.emplace();
    } catch (const std::system_error& error) {
      GTEST_SKIP() << "private system folders can't be had: " << error.what();
    }
    host_.systemLog = std::make_unique<host::NoLog>();
    startHelper();
  }

  void startHelper() {
    client_.reset();
    service_ = std::move(host_.clientTransport->spawnService(kHelper).value());
    const HelperLocation location{HelperLocation::Way::Address, service_->address(), kHelper};
    client_ = std::move(PrivilegedToolClient::connect(location, operations_, host_).value());
    ASSERT_EQ(client_->registerClient(), std::nullopt);
  }

  /// The operation's own result; a request without an answer fails the test.
  ErrorOrNil perform(Code code, const Array& arguments) {
    auto answer = client_->perform(code, arguments);
    if (!answer) {
      ADD_FAILURE() << "no answer: " << answer.error().code();
      return Error("no answer", -1);
    }
    return std::move(*answer);
  }

  /// Runs a utility. `whileRunning` gets all of its output up to now with each new piece.
  Heard execute(const std::string& utility, const std::vector<std::string>& words,
                const std::function<void(const std::string&)>& whileRunning = {},
                OperationCancellation* cancellation = nullptr) {
    Array arguments{kApplication, utility};
    arguments.insert(arguments.end(), words.begin(), words.end());
    Heard heard;
    std::string output;
    auto answer = client_->perform(
        kExecuteUtility, arguments,
        [&](const Dictionary& message) {
          heard.messages.push_back(message);
          const auto* data = message.find("OutputData");
          if (data && data->asData()) output += textOf(*data->asData());
          if (whileRunning) whileRunning(output);
        },
        cancellation);
    if (!answer) {
      ADD_FAILURE() << "no answer: " << answer.error().code();
      return heard;
    }
    heard.result = std::move(*answer);
    return heard;
  }

  /// Puts a program in the place of a utility that leaves a mark when it runs; returns the mark's path.
  std::string putMarkingProgram(const std::string& path) {
    const auto mark = folder_.path("it-ran");
    folders_->putScript(path, "touch " + mark);
    return mark;
  }

  TemporaryFolder folder_;
  std::optional<PrivateSystemFolders> folders_;
  host::Host host_ = host::makeHost();
  QELPrivilegedToolOperationSetLM4 operations_{*host_.systemLog};
  std::unique_ptr<host::SpawnedService> service_;
  std::unique_ptr<PrivilegedToolClient> client_;
};

}  // namespace vantrell::tests
