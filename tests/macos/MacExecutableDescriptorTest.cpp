// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "host/macos/MacExecutableDescriptor.h"

namespace vantrell::tests {

TEST(MacExecutableDescriptor, NoFileHasAnotherFormatOfThisHosts) {
  host::MacExecutableDescriptor descriptor;
  for (const char* path : {"/bin/ls", "/etc/passwd", "/no/such/file", ""}) {
    const auto descriptors = descriptor.descriptorsForFileAtPath(path);
    ASSERT_FALSE(descriptors) << path;
    EXPECT_EQ(descriptors.error(), Error::posix(posix::kWrongFormat)) << path;
  }
}

}  // namespace vantrell::tests
