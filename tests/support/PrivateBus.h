// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// A message bus of this test's own, which passes for the system's.
class PrivateBus {
 public:
  PrivateBus() {
    const std::string socket = folder_.path("bus");
    const std::string configuration = folder_.path("bus.conf");
    std::ofstream(configuration)
        << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><listen>unix:path="
        << socket
        << "</listen><auth>EXTERNAL</auth>"
           "<policy context=\"default\"><allow user=\"*\"/><allow own=\"*\"/>"
           "<allow send_destination=\"*\" eavesdrop=\"false\"/>"
           "<allow receive_sender=\"*\"/></policy>"
           "<limit name=\"max_message_size\">134217728</limit></busconfig>\n";
    pid_ = fork();
    if (pid_ == 0) {
      // It complains there about limits that only a system's own bus may raise.
      const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
      dup2(nowhere, STDERR_FILENO);
      const std::string argument = "--config-file=" + configuration;
      execlp("dbus-daemon", "dbus-daemon", argument.c_str(), "--nofork", "--nopidfile", nullptr);
      _exit(127);
    }
    for (int i = 0; i < 1000; ++i) {
      if (isListening(socket)) {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + socket).c_str(), 1);
        return;
      }
      if (waitpid(pid_, nullptr, WNOHANG) == pid_) break;
      usleep(10000);
    }
    pid_ = -1;
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus() {
    if (pid_ <= 0) return;
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  bool isRunning() const noexcept { return pid_ > 0; }

 private:
  static bool isListening(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isConnected = connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return isConnected;
  }

  TemporaryFolder folder_;
  pid_t pid_ = -1;
};

}  // namespace vantrell::tests
