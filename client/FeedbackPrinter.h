// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <iosfwd>
#include <mutex>
#include <optional>

#include "client/OutputSequence.h"
#include "client/ProgressBar.h"
#include "foundation/Dictionary.h"
#include "foundation/Value.h"
#include "host/Terminal.h"

namespace vantrell {

/// What is to be seen of an operation's feedback. As JSON: each message as it is, one a line. Else: a progress bar, a
/// line for each hit of a search, a child's output on the stream that it came from. Safe from any thread.
class FeedbackPrinter {
 public:
  struct Options {
    bool json = false;
    bool progress = true;  // a bar, if standard error is a terminal
  };

  /// `out` and `err` lead to the standard streams; all must outlive the printer.
  FeedbackPrinter(std::ostream& out, std::ostream& err, const host::Terminal& terminal, Options options);

  void print(const Dictionary& message);

  /// Prints what waits for its turn and takes the bar away.
  void finish();

  /// True once a stream has taken no more: nobody reads it any longer.
  bool hasFailed() const noexcept { return failed_.load(); }

 private:
  void printMessage(const Dictionary& message);
  void printHits(const Array& records);
  void printHit(const Dictionary& record);
  void printOutput(const Dictionary& message, const char* key, OutputStream stream);
  void writeChunk(OutputStream stream, DataView chunk);
  void noteFailures();

  std::ostream& out_;
  std::ostream& err_;
  const bool json_;
  const bool escape_;  // standard output is a terminal
  std::mutex lock_;
  std::optional<ProgressBar> bar_;
  OutputSequence sequence_;
  std::atomic<bool> failed_ = false;
};

}  // namespace vantrell
