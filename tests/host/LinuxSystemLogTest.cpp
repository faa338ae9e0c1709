// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cerrno>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/linux/JournalLog.h"
#include "host/linux/LinuxSystemLog.h"
#include "host/linux/NoLog.h"
#include "host/linux/SyslogLog.h"
#include "host/posix/FileDescriptor.h"
#include "tests/host/SystemLogContract.h"

namespace vantrell::tests {
namespace {

using host::LogLevel;

INSTANTIATE_TEST_SUITE_P(
    Linux, SystemLogContract,
    testing::Values(SystemLogImplementation{"Journal", [] { return std::make_unique<host::JournalLog>(); }},
                    SystemLogImplementation{"Syslog", [] { return std::make_unique<host::SyslogLog>(); }},
                    SystemLogImplementation{"None", [] { return std::make_unique<host::NoLog>(); }},
                    SystemLogImplementation{"System", [] { return host::makeSystemLog(); }}),
    SystemLogContract::nameOf);

TEST(SystemLog, ALogThatLeadsNowhereSaysSo) {
  EXPECT_FALSE(host::NoLog().isRecording());
  EXPECT_TRUE(host::JournalLog().isRecording());
}

/// Runs each scenario in a child process that has mounts of its own, with an empty folder in the place of /run and of
/// /dev, where it puts a log daemon's socket. The child's exit status tells which step failed.
class SystemLogAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "mounts need root";
  }

  static int inPrivateFolders(const std::function<int()>& scenario) {
    const pid_t child = fork();
    if (child == 0) {
      if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) _exit(100);
      for (const char* folder : {"/run", "/dev"}) {
        if (mount("tmpfs", folder, "tmpfs", 0, nullptr) != 0) _exit(101);
      }
      _exit(scenario());
    }
    int status = -1;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
  }

  static host::FileDescriptor daemonAt(const char* path) {
    host::FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path);
    if (bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) socket.reset();
    return socket;
  }

  static std::string received(const host::FileDescriptor& socket) {
    pollfd watched{socket.get(), POLLIN, 0};
    if (poll(&watched, 1, 5000) <= 0) return "nothing";
    std::string datagram(65536, '\0');
    const ssize_t count = recv(socket.get(), datagram.data(), datagram.size(), 0);
    datagram.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return datagram;
  }

  // The journal's own protocol: KEY=value lines, or KEY, a 64-bit little-endian size, the bytes.
  static std::map<std::string, std::string> fieldsOf(std::string_view datagram) {
    std::map<std::string, std::string> fields;
    while (!datagram.empty()) {
      const std::size_t end = datagram.find('\n');
      if (end == datagram.npos) return {};
      const std::string_view line = datagram.substr(0, end);
      datagram.remove_prefix(end + 1);
      if (const std::size_t equals = line.find('='); equals != line.npos) {
        fields.emplace(line.substr(0, equals), line.substr(equals + 1));
        continue;
      }
      std::uint64_t size = 0;
      if (datagram.size() < sizeof size) return {};
      std::memcpy(&size, datagram.data(), sizeof size);
      if (datagram.size() < sizeof size + size + 1) return {};
      fields.emplace(line, datagram.substr(sizeof size, size));
      datagram.remove_prefix(sizeof size + size + 1);
    }
    return fields;
  }

  static bool makeJournalFolder() {
    return mkdir("/run/systemd", 0755) == 0 && mkdir("/run/systemd/journal", 0755) == 0;
  }
};

TEST_F(SystemLogAsRoot, WritesTheFieldsOfAnEntryToTheJournal) {
  EXPECT_EQ(inPrivateFolders([] {
              const host::FileDescriptor journal =
                  makeJournalFolder() ? daemonAt("/run/systemd/journal/socket") : host::FileDescriptor();
              if (!journal) return 1;
              const auto log = host::makeSystemLog();
              if (!log->isRecording()) return 2;
              log->write("com.vantrell.Helper", "general", LogLevel::Error, "two\nlines=2\n");
              const std::map<std::string, std::string> full{{"MESSAGE", "two\nlines=2"},
                                                            {"PRIORITY", "3"},
                                                            {"SUBSYSTEM", "com.vantrell.Helper"},
                                                            {"CATEGORY", "general"},
                                                            {"SYSLOG_IDENTIFIER", "Vantrell-PrivilegedTool"}};
              if (fieldsOf(received(journal)) != full) return 3;
              log->write({}, {}, LogLevel::Default, "plain");
              const std::map<std::string, std::string> plain{
                  {"MESSAGE", "plain"}, {"PRIORITY", "5"}, {"SYSLOG_IDENTIFIER", "Vantrell-PrivilegedTool"}};
              return fieldsOf(received(journal)) == plain ? 0 : 4;
            }),
            0);
}

TEST_F(SystemLogAsRoot, GivesTheJournalThePriorityOfEachLevel) {
  EXPECT_EQ(inPrivateFolders([] {
              const host::FileDescriptor journal =
                  makeJournalFolder() ? daemonAt("/run/systemd/journal/socket") : host::FileDescriptor();
              const auto log = host::makeSystemLog();
              const std::pair<LogLevel, const char*> priorities[] = {
                  {LogLevel::Default, "5"}, {LogLevel::Info, "6"}, {LogLevel::Error, "3"}, {LogLevel::Fault, "2"}};
              for (const auto& [level, priority] : priorities) {
                log->write({}, {}, level, "message");
                if (fieldsOf(received(journal))["PRIORITY"] != priority) return 1;
              }
              return 0;
            }),
            0);
}

TEST_F(SystemLogAsRoot, WritesToTheSyslogDaemonWhereNoJournalRuns) {
  EXPECT_EQ(inPrivateFolders([] {
              const host::FileDescriptor daemon = daemonAt("/dev/log");
              const auto log = host::makeSystemLog();
              if (!log->isRecording()) return 1;
              log->write("sub", "cat", LogLevel::Fault, "two\nlines\x7F\n");
              // <facility daemon (3) * 8 + priority>date identifier[process]: text
              const std::string entry = received(daemon);
              if (!entry.starts_with("<26>")) return 2;
              const std::string expected =
                  " Vantrell-PrivilegedTool[" + std::to_string(getpid()) + "]: [sub:cat] two#012lines#177";
              if (!entry.contains(expected)) return 3;
              log->write({}, {}, LogLevel::Info, "100%s");
              const std::string plain = received(daemon);
              return plain.starts_with("<30>") && plain.contains("]: 100%s") ? 0 : 4;
            }),
            0);
}

TEST_F(SystemLogAsRoot, PrefersTheJournal) {
  EXPECT_EQ(inPrivateFolders([] {
              const host::FileDescriptor daemon = daemonAt("/dev/log");
              const host::FileDescriptor journal =
                  makeJournalFolder() ? daemonAt("/run/systemd/journal/socket") : host::FileDescriptor();
              host::makeSystemLog()->write({}, {}, LogLevel::Info, "message");
              return fieldsOf(received(journal))["MESSAGE"] == "message" ? 0 : 1;
            }),
            0);
}

TEST_F(SystemLogAsRoot, LeadsNowhereWhereThereIsNoDaemon) {
  EXPECT_EQ(inPrivateFolders([] { return host::makeSystemLog()->isRecording() ? 1 : 0; }), 0);
}

TEST_F(SystemLogAsRoot, LosesEntriesSilentlyWhenTheDaemonEnds) {
  EXPECT_EQ(inPrivateFolders([] {
              host::FileDescriptor daemon = daemonAt("/dev/log");
              const auto log = host::makeSystemLog();
              log->write({}, {}, LogLevel::Info, "first");
              daemon.reset();
              unlink("/dev/log");
              log->write({}, {}, LogLevel::Info, "lost");
              return 0;
            }),
            0);
}

}  // namespace
}  // namespace vantrell::tests
