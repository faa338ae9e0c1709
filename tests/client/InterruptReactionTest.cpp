// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "client/InterruptReaction.h"
#include "tests/client/ClientFixture.h"
#include "tests/client/FakeTerminal.h"

namespace vantrell {
namespace {

class InterruptReactionTest : public tests::ClientFixture {
 protected:
  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  CommandContext command_{context_.host, terminal_, operations_, out_, out_};
};

TEST_F(InterruptReactionTest, CancelsFirstAndEndsTheProcessThen) {
  InterruptReaction reaction(command_);
  const std::shared_ptr<PrivilegedToolClient> client = registered();
  reaction.setClient(client);
  reaction.interrupt();
  EXPECT_TRUE(reaction.cancellation().isRequested());
  EXPECT_EQ(context_.process->exits(), 0);
  EXPECT_TRUE(service_.registered(context_.process->identifier()));

  reaction.interrupt();
  EXPECT_EQ(context_.process->exits(), 1);
  EXPECT_EQ(context_.process->exitStatus(), 1);
  EXPECT_FALSE(service_.registered(context_.process->identifier()));
}

TEST_F(InterruptReactionTest, DoesNotTakeAnotherCancellationForAnInterrupt) {
  InterruptReaction reaction(command_);
  reaction.cancellation().request();
  reaction.interrupt();
  EXPECT_EQ(context_.process->exits(), 0);
}

TEST_F(InterruptReactionTest, EndsTheProcessWithoutAClient) {
  InterruptReaction reaction(command_);
  reaction.interrupt();
  reaction.interrupt();
  EXPECT_EQ(context_.process->exits(), 1);
}

}  // namespace
}  // namespace vantrell
