// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/OperationQueue.h"
#include "foundation/Value.h"
#include "host/ChildProcesses.h"
#include "host/FileSystem.h"
#include "host/Transport.h"

namespace vantrell {

/// Runs one program of the operating system for one request: checks that it is safe to, relays its output as feedback,
/// and interrupts it when the operation is cancelled. The calling thread waits until it has ended.
class SystemProgramRunner {
 public:
  /// `operation` is the one that is being carried out; null where there is none to be cancelled.
  SystemProgramRunner(host::ChildProcesses& childProcesses, FileManager& fileManager, host::FileSystem& fileSystem,
                      Log log, BlockOperation* operation)
      : childProcesses_(childProcesses),
        fileManager_(fileManager),
        fileSystem_(fileSystem),
        log_(std::move(log)),
        operation_(operation) {}

  /// Arguments: the application's path, the bare name of a utility in the table, and what it is to be given. POSIX
  /// error 22 for anything else.
  ErrorOrNil executeUtility(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback);

  /// `trusted` spares the check of the program's permissions. The search path of this very process becomes the safe
  /// one, or is removed, and stays so. Each piece of output is sent to `feedback` (which may be null) with its number,
  /// counted from 0 over both streams.
  ///
  /// Errors of the operation set's domain: 2 for unsafe permissions, 3 for an exit status other than 0; POSIX error 89
  /// after an interruption, 24 when there were no descriptors left. Raises what a failed launch raises.
  ErrorOrNil executeTrusted(bool trusted, const std::string& systemProgramAtPath,
                            const std::vector<std::string>& arguments, bool safePathEnvironment,
                            QELPrivilegedOperationFeedbackProtocol* forwardingOutputToConnection);

 private:
  ErrorOrNil runAndWait(const std::string& path, const std::vector<std::string>& arguments,
                        QELPrivilegedOperationFeedbackProtocol* feedback);

  host::ChildProcesses& childProcesses_;
  FileManager& fileManager_;
  host::FileSystem& fileSystem_;
  Log log_;
  BlockOperation* operation_;
};

}  // namespace vantrell
