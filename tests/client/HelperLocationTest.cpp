// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "client/ErrorText.h"
#include "client/HelperLocation.h"
#include "foundation/PosixCodes.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeService.h"

namespace vantrell {
namespace {

using host::FileType;
using testing::HasSubstr;
using Way = HelperLocation::Way;

constexpr char kSocket[] = "/run/vantrell/privilegedtool.socket";
constexpr char kInstalled[] = "/usr/libexec/Vantrell-PrivilegedTool";
constexpr char kBeside[] = "/fake/bin/Vantrell-PrivilegedTool";

class HelperLocationTest : public testing::Test {
 protected:
  HelperLocationTest() {
    place(kSocket, FileType::Unknown);
    place(kInstalled, FileType::Unknown);
    place(kBeside, FileType::Unknown);
    client_.process->setUserID(501);
    auto transport = std::make_unique<tests::FakeClientTransport>(service_);
    transport_ = transport.get();
    client_.host.clientTransport = std::move(transport);
  }
  void place(const std::string& path, FileType type) { client_.files->objects[path] = type; }
  Result<HelperLocation> locate(const ConnectionOptions& options = {}) {
    return locateHelper(options, operations_, client_.host);
  }

  tests::ClientHost client_;
  QELPrivilegedToolOperationSetLM4 operations_{*client_.host.systemLog};
  tests::FakeService service_{client_.host, operations_, {}};
  tests::FakeClientTransport* transport_;
};

TEST_F(HelperLocationTest, TakesTheAddressThatIsNamed) {
  const auto location = locate({.address = "unix:path=/x", .helper = "/h"});
  ASSERT_TRUE(location);
  EXPECT_EQ(location->way, Way::Address);
  EXPECT_EQ(location->target, "unix:path=/x");
  EXPECT_EQ(location->executable, "/h");
}

TEST_F(HelperLocationTest, TakesTheServicesNameOnTheBus) {
  const auto location = locate({.bus = true});
  ASSERT_TRUE(location);
  EXPECT_EQ(location->way, Way::Bus);
  EXPECT_EQ(location->target, VANTRELL_VENDOR_DOMAIN_PREFIX ".system.privilegedtool-lm4");
  EXPECT_EQ(location->executable, kInstalled);
}

TEST_F(HelperLocationTest, TakesTheStartedHelperAsTheExecutableUnlessAnotherIsNamed) {
  auto location = locate({.spawn = "./helper"});
  ASSERT_TRUE(location);
  EXPECT_EQ(location->way, Way::Spawn);
  EXPECT_EQ(location->target, "./helper");
  EXPECT_EQ(location->executable, "./helper");
  location = locate({.spawn = "./helper", .helper = "/other"});
  ASSERT_TRUE(location);
  EXPECT_EQ(location->target, "./helper");
  EXPECT_EQ(location->executable, "/other");
}

TEST_F(HelperLocationTest, PrefersTheHelperBesideThisProgram) {
  place(kBeside, FileType::Regular);
  place(kInstalled, FileType::Regular);
  EXPECT_EQ(locate({.bus = true})->executable, kBeside);
  place(kBeside, FileType::Directory);
  EXPECT_EQ(locate({.bus = true})->executable, kInstalled);
}

TEST_F(HelperLocationTest, TakesTheServiceManagersSocketWhereItExists) {
  place(kSocket, FileType::Socket);
  for (const std::uint32_t user : {0U, 501U}) {
    client_.process->setUserID(user);
    const auto location = locate();
    ASSERT_TRUE(location);
    EXPECT_EQ(location->way, Way::Address);
    EXPECT_EQ(location->target, "unix:path=/run/vantrell/privilegedtool.socket");
  }
}

TEST_F(HelperLocationTest, TakesTheServicesNameWhereNoSocketLeadsToServices) {
  transport_->places = {"", "/Library/PrivilegedHelperTools"};
  for (const std::uint32_t user : {0U, 501U}) {
    client_.process->setUserID(user);
    const auto location = locate();
    ASSERT_TRUE(location);
    EXPECT_EQ(location->way, Way::Bus);
    EXPECT_EQ(location->target, VANTRELL_VENDOR_DOMAIN_PREFIX ".system.privilegedtool-lm4");
    EXPECT_EQ(location->executable, "/Library/PrivilegedHelperTools/Vantrell-PrivilegedTool");
  }
}

TEST_F(HelperLocationTest, StartsAHelperForRootWithoutASocket) {
  client_.process->setUserID(0);
  place(kBeside, FileType::Regular);
  const auto location = locate();
  ASSERT_TRUE(location);
  EXPECT_EQ(location->way, Way::Spawn);
  EXPECT_EQ(location->target, kBeside);
  EXPECT_EQ(location->executable, kBeside);
}

TEST_F(HelperLocationTest, TellsWhatToDoWhenNoWayIsLeft) {
  place(kBeside, FileType::Regular);
  auto location = locate();
  ASSERT_FALSE(location);
  EXPECT_TRUE(location.error().isPosix(posix::kNoEntry));
  EXPECT_THAT(textOfError(location.error()).description, HasSubstr(kSocket));
  EXPECT_THAT(textOfError(location.error()).recoverySuggestion, HasSubstr("--address"));

  client_.process->setUserID(0);
  place(kBeside, FileType::Unknown);
  location = locate();
  ASSERT_FALSE(location);
  EXPECT_THAT(textOfError(location.error()).description, HasSubstr(kInstalled));
  EXPECT_THAT(textOfError(location.error()).recoverySuggestion, HasSubstr("--spawn"));
}

}  // namespace
}  // namespace vantrell
