// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Data.h"

namespace vantrell {

class QELTaskExecutor;

/// Receives the output of a program and what becomes of it.
class QELTaskExecutorDelegate {
 public:
  virtual ~QELTaskExecutorDelegate() = default;

  /// Before and right after the launch, on the thread that asked for it. An exception goes on to the caller of the
  /// launch; after the launch it doesn't keep the program from being relayed and waited for.
  virtual void taskWillExecute(QELTaskExecutor&) {}
  virtual void taskDidLaunch(QELTaskExecutor&) {}

  /// For every piece of output as it was read, and once for the end of each stream without a byte. One call at a time:
  /// on the caller's thread in the synchronous form, else on a thread of the run's own. The view is valid during the
  /// call only. While this call lasts nothing more is read. What it throws is logged.
  virtual void receiveTaskOutput(DataView, bool /*isError*/) {}
};

}  // namespace vantrell
