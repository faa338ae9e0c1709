// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/OperationArguments.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "system/SystemSettingOperations.h"

namespace vantrell {
namespace {

constexpr char kDeviceFolder[] = "/dev";

// As an unsigned number, a negative one would erase everything there is.
bool isNegative(const Number& number) {
  return number.kind() != Number::Kind::Unsigned && number.signedValue() < 0;
}

}  // namespace

ErrorOrNil eraseDiskblocks(const Array& arguments, host::StorageDevices& storageDevices) {
  const auto* name = textAt(arguments, 0);
  const auto* count = numberAt(arguments, 1);
  if (arguments.size() != 2 || !name || !count || isNegative(*count)) return Error::posix(posix::kInvalidArgument);
  if (count->unsignedValue() == 0) return std::nullopt;
  auto device = storageDevices.openForWriting(stringByAppendingPathComponent(kDeviceFolder, *name));
  if (!device) return device.error();
  return (*device)->writeZeroBlocks(count->unsignedValue());
}

}  // namespace vantrell
