// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Each operation once through everything: the command, the wire, token and argument checks, the implementor's table and
// the room that does the work, on real objects.

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <nlohmann/json.hpp>
#include <sched.h>
#include <sys/acl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace tests;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Words = std::vector<std::string>;
using nlohmann::json;

const std::string kProgram = std::string(VANTRELL_BINARY_DIR) + "/vantrellctl";
const std::string kHelper = std::string(VANTRELL_BINARY_DIR) + "/Vantrell-PrivilegedTool";
const std::string kPosixDomain = "NSPOSIXErrorDomain";
const std::string kOperationDomain = VANTRELL_VENDOR_DOMAIN_PREFIX ".error.privileged-operation";

class OperationsOverTheWireAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the helper serves as root only";
  }

  /// The result; the feedback messages before it are kept in `messages_`.
  json run(Words words) {
    Words all{"--spawn", kHelper, "--json", "run"};
    all.insert(all.end(), words.begin(), words.end());
    const auto result = runProgram(kProgram, all);
    messages_.clear();
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) messages_.push_back(json::parse(line));
    if (messages_.empty()) {
      ADD_FAILURE() << words.front() << " printed nothing: " << result.error;
      return {};
    }
    auto answer = messages_.back().value("result", json());
    messages_.pop_back();
    EXPECT_EQ(result.status, answer.is_null() || answer["code"] == 0 ? 0 : 1) << words.front();
    return answer;
  }
  void expectSuccess(const Words& words) {
    const auto answer = run(words);
    EXPECT_TRUE(answer.is_null()) << words.front() << ": " << answer.dump();
  }
  void expectError(const Words& words, const std::string& domain, int code) {
    const auto answer = run(words);
    ASSERT_TRUE(answer.is_object()) << words.front();
    EXPECT_EQ(answer["domain"], domain) << words.front();
    EXPECT_EQ(answer["code"], code) << words.front();
  }
  std::vector<std::string> hits() const {
    std::vector<std::string> paths;
    for (const auto& message : messages_)
      for (const auto& record : message.value("FileObjectInfo", json::array())) paths.push_back(record["Path"]);
    return paths;
  }
  static std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
  }

  /// With the folders on the way to it.
  std::string makeFile(const std::string& name, const std::string& content = "content") const {
    std::filesystem::create_directories(std::filesystem::path(folder_.path(name)).parent_path());
    return folder_.makeFile(name, content);
  }

  TemporaryFolder folder_;
  std::vector<json> messages_;
};

TEST_F(OperationsOverTheWireAsRoot, CreatesRenamesTouchesAndInspectsObjects) {
  expectSuccess({"create-fileobject", folder_.path("file"), "F"});
  expectSuccess({"create-fileobject", folder_.path("folder"), "D"});
  expectSuccess({"create-fileobject", folder_.path("tool"), "X"});
  EXPECT_EQ(statusOf(folder_.path("file")).st_mode, S_IFREG | 0644U);
  EXPECT_EQ(statusOf(folder_.path("folder")).st_mode, S_IFDIR | 0755U);
  EXPECT_EQ(statusOf(folder_.path("tool")).st_mode, S_IFREG | 0755U);
  expectError({"create-fileobject", folder_.path("file"), "F"}, kPosixDomain, 17);
  expectError({"create-fileobject", folder_.path("other"), "Z"}, kPosixDomain, 22);

  expectSuccess({"rename-fileobject", folder_.path("file"), folder_.path("folder/moved")});
  EXPECT_TRUE(std::filesystem::exists(folder_.path("folder/moved")));
  expectError({"rename-fileobject", folder_.path("tool"), folder_.path("folder/moved")}, "NSCocoaErrorDomain", 516);

  const timespec old[] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, folder_.path("tool").c_str(), old, 0), 0);
  expectSuccess({"touch-fileobject", folder_.path("tool")});
  EXPECT_GT(statusOf(folder_.path("tool")).st_mtime, 1'000'000);
  EXPECT_EQ(run({"inspect-fileobject", folder_.path("folder")})["userInfo"]["ObjectExistence"], 1);
  EXPECT_EQ(run({"inspect-fileobject", folder_.path("nothing")})["userInfo"]["ObjectExistence"], 0);
}

TEST_F(OperationsOverTheWireAsRoot, ReplacesASystemFileWithABackup) {
  const auto file = makeFile("hosts", "old");
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  expectSuccess({"modify-systemfile", file, "@" + makeFile("new", "new content"), "0"});
  EXPECT_EQ(contentOf(file), "new content");
  EXPECT_EQ(contentOf(file + ".backup"), "old");
  EXPECT_EQ(statusOf(file).st_mode & 07777, 0640U);
  expectSuccess({"modify-systemfile", file, "hex:6162", "1"});
  EXPECT_EQ(contentOf(file), "ab");
  EXPECT_FALSE(std::filesystem::exists(file + ".backup"));
}

// As large as a client lets an argument be: token and argument fill one message.
TEST_F(OperationsOverTheWireAsRoot, ReplacesASystemFileWithAsMuchAsARequestHolds) {
  const auto file = makeFile("large", "old");
  const auto content = makeFile("content", std::string((std::size_t{60} << 20), 'x'));
  expectSuccess({"modify-systemfile", file, "@" + content, "1"});
  EXPECT_EQ(std::filesystem::file_size(file), std::uintmax_t{60} << 20);
}

TEST_F(OperationsOverTheWireAsRoot, ChangesProtectionAttributesAndLinks) {
  makeFile("tree/inner/file");
  const auto tree = folder_.path("tree");
  expectSuccess({"modify-protection", tree, "1", "1", "1"});
  EXPECT_TRUE(inodeFlags(folder_.path("tree/inner/file")) & FS_IMMUTABLE_FL);
  expectSuccess({"modify-protection", tree, "0", "1", "1"});
  EXPECT_FALSE(inodeFlags(folder_.path("tree/inner/file")) & FS_IMMUTABLE_FL);
  expectSuccess({"modify-hfsattr", folder_.path("tree/inner/file"), "0x54455854", "0x74747874", "1"});
  expectSuccess({"create-link", folder_.path("soft"), "tree", "0"});
  EXPECT_EQ(std::filesystem::read_symlink(folder_.path("soft")), "tree");
  expectSuccess({"create-link", folder_.path("hard"), folder_.path("tree/inner/file"), "1"});
  EXPECT_EQ(statusOf(folder_.path("hard")).st_nlink, 2U);
  expectSuccess({"rename-stashfolder", tree, "stash", "1"});
  EXPECT_TRUE(std::filesystem::exists(folder_.path("stash/inner/file")));
  EXPECT_TRUE(std::filesystem::is_empty(tree));
}

TEST_F(OperationsOverTheWireAsRoot, DeletesTheContentsOfFolders) {
  addInodeFlags(makeFile("a/inner/locked"), FS_IMMUTABLE_FL);
  makeFile("a/.hidden");
  expectSuccess({"delete-foldercontents", folder_.path("a"), folder_.path("missing")});
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("a")));
  std::vector<double> fractions;
  for (const auto& message : messages_)
    if (message.contains("ProgressFraction")) fractions.push_back(message["ProgressFraction"]);
  EXPECT_THAT(fractions, ElementsAre(0.0, 0.0, 0.5, 1.0));
  expectError({"delete-foldercontents", makeFile("file")}, kPosixDomain, 20);
}

TEST_F(OperationsOverTheWireAsRoot, SearchesAndMeasures) {
  const auto old = makeFile("tree/old.txt", "12345");
  const auto orphan = makeFile("tree/inner/orphan.log", "123");
  const timespec times[] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, old.c_str(), times, 0), 0);
  ASSERT_EQ(chown(orphan.c_str(), 3'333'333, 0), 0);
  const auto tree = folder_.path("tree");
  expectSuccess({"search-agedfiles", tree, "365", "1"});
  EXPECT_THAT(hits(), ElementsAre(old));
  expectSuccess({"search-filenames", tree, "", "txt", "0"});
  EXPECT_THAT(hits(), ElementsAre(old));
  expectSuccess({"search-patterns", tree, "1", "0", "inner", "2", "log"});
  EXPECT_THAT(hits(), UnorderedElementsAre(folder_.path("tree/inner"), orphan));
  EXPECT_EQ(messages_[messages_.size() - 2]["FinalFeedbackMessage"], true);
  EXPECT_EQ(messages_.back()["FinalFeedbackMessage"], true) << "the service's own, behind the search's";
  expectSuccess({"search-fileorphans", tree, "1"});
  EXPECT_THAT(hits(), ElementsAre(orphan));
  const std::uint64_t size = run({"inspect-storagesize", tree})["userInfo"]["Size"];
  EXPECT_EQ(size, 8 + static_cast<std::uint64_t>(statusOf(folder_.path("tree/inner")).st_size));
}

TEST_F(OperationsOverTheWireAsRoot, TellsNamesThatAreNoTextWithReplacementCharacters) {
  folder_.makeFolder("tree");
  makeFile("tree/a\xff.txt");
  makeFile("tree/b.txt");
  expectSuccess({"search-patterns", folder_.path("tree"), "1", "2", "txt"});
  EXPECT_THAT(hits(), UnorderedElementsAre(folder_.path("tree/a\uFFFD.txt"), folder_.path("tree/b.txt")));
}

TEST_F(OperationsOverTheWireAsRoot, HandsRightsDown) {
  const auto file = makeFile("tree/inner/file");
  const auto tree = folder_.path("tree");
  ASSERT_EQ(chmod(file.c_str(), 0755), 0);
  ASSERT_EQ(chown(tree.c_str(), 1234, 2345), 0);
  ASSERT_EQ(chmod(tree.c_str(), 0750), 0);
  expectSuccess({"prop-permissions", tree, "2", "0x3e"});
  EXPECT_EQ(statusOf(file).st_uid, 1234U);
  EXPECT_EQ(statusOf(file).st_gid, 2345U);
  EXPECT_EQ(statusOf(file).st_mode & 07777, 0751U);
  expectError({"prop-permissions", file, "1", "0"}, kPosixDomain, 20);

  const auto form = folder_.path("form");
  acl_t list = acl_from_text("u::rw-,u:4321:rwx,g::r--,m::rwx,o::---");
  ASSERT_TRUE(list);
  std::string bytes(static_cast<std::size_t>(acl_size(list)), '\0');
  ASSERT_GE(acl_copy_ext(bytes.data(), list, acl_size(list)), 0);
  acl_free(list);
  std::ofstream(form, std::ios::binary) << bytes;
  expectSuccess({"modify-acl", file, "@" + form});
  acl_t set = acl_get_file(file.c_str(), ACL_TYPE_ACCESS);
  char* text = acl_to_text(set, nullptr);
  EXPECT_THAT(text, testing::HasSubstr("user:4321:rwx"));
  acl_free(text);
  acl_free(set);
  expectError({"modify-acl", file, "hex:0102"}, kPosixDomain, 22);
}

TEST_F(OperationsOverTheWireAsRoot, SignalsProcesses) {
  const pid_t child = fork();
  if (child == 0) {
    for (;;) pause();
  }
  expectSuccess({"signal-process", std::to_string(child), "0"});
  expectSuccess({"signal-process", std::to_string(child), std::to_string(SIGTERM)});
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  expectError({"signal-process", std::to_string(child), "0"}, kPosixDomain, 3);
  expectError({"signal-process", "0", "0"}, kPosixDomain, 22);
}

TEST_F(OperationsOverTheWireAsRoot, ErasesBlocksBelowTheDeviceFolder) {
  const std::string path = "/dev/shm/vantrell-erase-" + std::to_string(getpid());
  std::ofstream(path) << std::string(2048, 'x');
  expectSuccess({"erase-diskblocks", path.substr(5), "2"});
  EXPECT_EQ(contentOf(path), std::string(1024, '\0') + std::string(1024, 'x'));
  std::filesystem::remove(path);
  expectSuccess({"erase-diskblocks", "no-such-device", "0"});
  expectError({"erase-diskblocks", "no-such-device", "1"}, kPosixDomain, 2);
}

/// The folder of the settings, empty, as this thread and whatever it starts sees it.
class PrivateLibrary {
 public:
  PrivateLibrary() : isOurs_(mkdir(kPath, 0755) == 0) {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
      throw std::system_error(errno, std::system_category(), "a private mount namespace");
    memory_.emplace(kPath);
  }
  PrivateLibrary(const PrivateLibrary&) = delete;
  PrivateLibrary& operator=(const PrivateLibrary&) = delete;
  ~PrivateLibrary() {
    memory_.reset();
    if (isOurs_) rmdir(kPath);
  }

 private:
  static constexpr char kPath[] = "/Library";
  bool isOurs_;
  std::optional<MountedFileSystem> memory_;
};

TEST_F(OperationsOverTheWireAsRoot, ChangesPreferencesAndSystemConfiguration) {
  std::optional<PrivateLibrary> library;
  try {
    library.emplace();
  } catch (const std::system_error& error) {
    GTEST_SKIP() << error.what();
  }
  const Words preference{"modify-preferences", "Colour", "com.example.app", "kCFPreferencesAnyUser",
                         "kCFPreferencesCurrentHost"};
  auto words = preference;
  words.emplace_back("{Name = blue;}");
  expectSuccess(words);
  EXPECT_THAT(contentOf("/Library/Preferences/com.example.app.plist"), testing::HasSubstr("blue"));
  words.back() = "";
  expectSuccess(words);
  EXPECT_FALSE(std::filesystem::exists("/Library/Preferences/com.example.app.plist"));
  words.back() = "{broken";
  expectError(words, kPosixDomain, 22);

  const std::string configuration = "/Library/Preferences/SystemConfiguration/preferences.plist";
  expectSuccess({"modify-sysconf", "vantrellctl", "", "NetworkServices",
                 "{S1 = {IPv6 = {ConfigMethod = Automatic;}; Interface = {DeviceName = nodevice0;};};}"});
  expectSuccess({"enable-ipvsix", "vantrellctl", "S1", "0"});
  EXPECT_THAT(contentOf(configuration), testing::HasSubstr("__INACTIVE__"));
  expectSuccess({"enable-ipvsix", "vantrellctl", "S1", "1"});
  EXPECT_THAT(contentOf(configuration), testing::Not(testing::HasSubstr("__INACTIVE__")));
  expectError({"enable-ipvsix", "vantrellctl", "S2", "1"}, kOperationDomain, 10);
}

TEST_F(OperationsOverTheWireAsRoot, RefusesWhatTheSystemHasNot) {
  expectError({"modify-kernelsetting", "vantrell.no.such.setting", "1"}, kPosixDomain, 2);
  expectError({"modify-preferences", "key", "app", "user", "", "1"}, kPosixDomain, 22);
  expectError({"modify-sysconf", "", "", "key", "1"}, kPosixDomain, 22);
  expectError({"modify-nvram", "", "1"}, kPosixDomain, 22);
  expectError({"write-smcvalue", "F0Mn", "hex:0102"}, kOperationDomain,
              std::filesystem::exists("/sys/devices/platform/applesmc.768") ? 21 : 20);
  expectError({"create-installmedia", folder_.path(), folder_.path()}, kOperationDomain, 18);
}

}  // namespace
}  // namespace vantrell
