// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>

#include "host/posix/PosixChildProcesses.h"
#include "tests/support/ChildScripts.h"

namespace vantrell::tests {
namespace {

TEST(MacChildProcesses, TheFirstWordIsThePath) {
  host::PosixChildProcesses children;
  const std::string line = "ps -o args= -p $$; exit 3";
  auto child = children.launch(kShell, script(line), children.makePipes().value()).value();
  OutputRecord record;
  EXPECT_EQ(child->relayOutputUntilExit([&](host::ChildStream, DataView bytes) { record.add(bytes, false); }), 3);
  EXPECT_EQ(record.text(false), std::string(kShell) + " -c " + line + "\n");
}

}  // namespace
}  // namespace vantrell::tests
