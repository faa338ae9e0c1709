// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/linux/PeerConnection.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// Serves the clients of a listening Unix socket. The socket is never unlinked: it is the service manager's.
///
/// Letting the listener go ends its connections and waits for their threads; not from one of these.
class PeerListener final : public Listener {
 public:
  /// `systemLog` must outlive the listener.
  PeerListener(FileDescriptor listeningSocket, SystemLog& systemLog, const TransportLimits& limits);
  ~PeerListener() override;

  /// Waits until the present delegate is not being asked; not from within the delegate.
  void setDelegate(ListenerDelegate* delegate) override;
  ErrorOrNil resume() override;
  void suspend() override;
  void invalidate() override;

 private:
  void run() noexcept;
  bool waitForClient();
  bool isStopping();
  void acceptClient();
  void take(FileDescriptor socket);
  void serve(FileDescriptor socket);
  void reapEnded();
  void wake() const noexcept;
  void logError(const char* message) noexcept;

  const FileDescriptor socket_;
  const FileDescriptor wakeUp_;
  SystemLog& systemLog_;
  const TransportLimits limits_;

  std::mutex delegateMutex_;
  ListenerDelegate* delegate_ = nullptr;

  std::mutex mutex_;
  bool suspended_ = false;
  bool invalid_ = false;
  bool stopping_ = false;
  std::vector<PeerConnection*> ended_;

  // The accepting thread's own.
  std::unordered_map<PeerConnection*, std::unique_ptr<PeerConnection>> connections_;
  bool full_ = false;
  std::thread thread_;
};

}  // namespace vantrell::host
