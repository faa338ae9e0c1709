// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "system/SystemSettingOperations.h"
#include "tests/support/FakeKernelSettings.h"
#include "tests/support/FakeProcessSignals.h"
#include "tests/support/FakeStorageDevices.h"

namespace vantrell {
namespace {

const Error kInvalid = Error::posix(posix::kInvalidArgument);

TEST(ModifyKernelsetting, SetsTheVariable) {
  tests::FakeKernelSettings kernel({{"a.b", 1}, {"a.c", 2}});
  EXPECT_EQ(modifyKernelsetting({"a.b", 42}, kernel), std::nullopt);
  EXPECT_EQ(kernel.variables(), (tests::FakeKernelSettings::Variables{{"a.b", 42}, {"a.c", 2}}));
}

TEST(ModifyKernelsetting, TakesTheNumberAsSigned64BitInteger) {
  using Limits = std::numeric_limits<std::int64_t>;
  tests::FakeKernelSettings kernel({{"a", 1}});
  const std::pair<Value, std::int64_t> kCases[] = {{Limits::max(), Limits::max()},
                                                   {Limits::min(), Limits::min()},
                                                   {std::numeric_limits<std::uint64_t>::max(), -1},
                                                   {-7.9, -7},
                                                   {true, 1},
                                                   {1e300, Limits::max()}};
  for (const auto& [value, expected] : kCases) {
    EXPECT_EQ(modifyKernelsetting({"a", value}, kernel), std::nullopt);
    EXPECT_EQ(kernel.variables().at("a"), expected);
  }
}

TEST(ModifyKernelsetting, RefusesAnEmptyNameAndMissingArguments) {
  tests::FakeKernelSettings kernel({{"", 1}});
  for (const Array& arguments : {Array{"", 1}, Array{"a"}, Array{}, Array{"a", "1"}, Array{1, 1}})
    EXPECT_EQ(modifyKernelsetting(arguments, kernel), kInvalid);
  EXPECT_EQ(kernel.variables().at(""), 1);
}

TEST(ModifyKernelsetting, ReportsTheSystemsError) {
  tests::FakeKernelSettings kernel({{"a", 1}});
  EXPECT_EQ(modifyKernelsetting({"b", 1}, kernel), Error::posix(2));
  kernel.failure = Error::posix(1);
  EXPECT_EQ(modifyKernelsetting({"a", 1}, kernel), Error::posix(1));
}

TEST(SignalProcess, SendsTheSignal) {
  tests::FakeProcessSignals signals;
  signals.processes[42];
  EXPECT_EQ(signalProcess({42, 15}, signals), std::nullopt);
  EXPECT_EQ(signalProcess({42, 0}, signals), std::nullopt);
  EXPECT_EQ(signals.processes, (tests::FakeProcessSignals::Processes{{42, {15}}}));
}

TEST(SignalProcess, RefusesWhatIsNoSingleProcessBeforeAnySignalIsSent) {
  tests::FakeProcessSignals signals;
  signals.processes[42];
  for (const Value& process : {Value(0), Value(-1), Value(-42), Value(std::int64_t{1} << 32), Value(0x80000001u),
                               Value(std::numeric_limits<std::int64_t>::min()), Value(0.9), Value(false)})
    EXPECT_EQ(signalProcess({process, 15}, signals), kInvalid);
  for (const Array& arguments : {Array{}, Array{42}, Array{"42", 15}, Array{42, "15"}})
    EXPECT_EQ(signalProcess(arguments, signals), kInvalid);
  EXPECT_EQ(signals.calls, 0);
}

TEST(SignalProcess, TakesTheLow32BitsOfBoth) {
  tests::FakeProcessSignals signals;
  signals.processes[42];
  EXPECT_EQ(signalProcess({(std::int64_t{5} << 32) + 42, (std::int64_t{7} << 32) + 9}, signals), std::nullopt);
  EXPECT_EQ(signals.processes.at(42), std::vector<std::int32_t>{9});
}

TEST(SignalProcess, ReportsTheSystemsError) {
  tests::FakeProcessSignals signals;
  signals.processes[42];
  EXPECT_EQ(signalProcess({43, 15}, signals), Error::posix(3));
  EXPECT_EQ(signalProcess({42, 9999}, signals), kInvalid);
  signals.failure = Error::posix(1);
  EXPECT_EQ(signalProcess({42, 15}, signals), Error::posix(1));
}

TEST(EraseDiskblocks, WritesZerosToTheDeviceBelowDev) {
  tests::FakeStorageDevices storage;
  storage.devices["/dev/disk9"] = {Data(2048, 0xAA)};
  EXPECT_EQ(eraseDiskblocks({"disk9", 3}, storage), std::nullopt);
  Data expected(2048, 0xAA);
  std::fill_n(expected.begin(), 1536, std::uint8_t{0});
  EXPECT_EQ(storage.devices["/dev/disk9"].bytes, expected);
}

TEST(EraseDiskblocks, NoBlocksIsSuccessWithoutALookAtTheDevice) {
  tests::FakeStorageDevices storage;
  for (const Value& count : {Value(0), Value(0u), Value(0.5), Value(-0.5), Value(false)})
    EXPECT_EQ(eraseDiskblocks({"missing", count}, storage), std::nullopt);
  EXPECT_TRUE(storage.openedPaths.empty());
  EXPECT_EQ(eraseDiskblocks({"missing", 1}, storage), Error::posix(2));
}

TEST(EraseDiskblocks, JoinsTheNameAsOnePathComponentMore) {
  tests::FakeStorageDevices storage;
  for (const auto* name : {"disk9", "shm/x", "/disk9/", "../etc/x", ""}) eraseDiskblocks({name, 1}, storage);
  EXPECT_EQ(storage.openedPaths,
            (std::vector<std::string>{"/dev/disk9", "/dev/shm/x", "/dev/disk9", "/dev/../etc/x", "/dev"}));
}

TEST(EraseDiskblocks, RefusesAnyOtherNumberOfArguments) {
  tests::FakeStorageDevices storage;
  storage.devices["/dev/disk9"] = {Data(512, 0xAA)};
  for (const Array& arguments : {Array{}, Array{"disk9"}, Array{"disk9", 1, 1}, Array{"disk9", 0, 0}, Array{1, 1},
                                 Array{"disk9", "1"}, Array{"disk9", -1}, Array{"disk9", -1.0}})
    EXPECT_EQ(eraseDiskblocks(arguments, storage), kInvalid);
  EXPECT_TRUE(storage.openedPaths.empty());
}

TEST(EraseDiskblocks, StopsAtTheFirstBlockThatCannotBeWritten) {
  tests::FakeStorageDevices storage;
  storage.devices["/dev/short"] = {Data(1024, 0xAA)};
  storage.devices["/dev/bad"] = {Data(2048, 0xAA), 1, Error::posix(posix::kInputOutput)};
  EXPECT_EQ(eraseDiskblocks({"short", 3}, storage), Error::posix(posix::kNoSpace));
  EXPECT_EQ(storage.devices["/dev/short"].bytes, Data(1024));
  EXPECT_EQ(eraseDiskblocks({"bad", 4}, storage), Error::posix(posix::kInputOutput));
  Data expected(2048, 0xAA);
  std::fill_n(expected.begin(), 512, std::uint8_t{0});
  EXPECT_EQ(storage.devices["/dev/bad"].bytes, expected);
}

}  // namespace
}  // namespace vantrell
