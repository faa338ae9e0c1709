// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/FileSystemContract.h"

namespace vantrell {
namespace {

using host::FileReader;
using tests::codeOf;

class FileStreamsContract : public tests::FileSystemContractBase {
 protected:
  std::string contentOf(const std::string& name) const {
    std::ifstream file(folder_.path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
};
INSTANTIATE_TEST_SUITE_P(All, FileStreamsContract, tests::fileSystemImplementations(), tests::implementationName);

class FileStreamsContractAsRoot : public FileStreamsContract {
 protected:
  void SetUp() override { needRoot("only root may mount"); }
};
INSTANTIATE_TEST_SUITE_P(All, FileStreamsContractAsRoot, tests::fileSystemImplementations(), tests::implementationName);

std::string patternOf(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t index = 0; index < size; ++index) text[index] = static_cast<char>(index * 31 % 253);
  return text;
}

std::string restOf(FileReader& reader) {
  std::string all;
  std::uint8_t buffer[777];
  for (;;) {
    const auto count = reader.read(buffer);
    if (!count || *count == 0) return all;
    all += textOf(DataView(buffer, *count));
  }
}

TEST_P(FileStreamsContract, ReadsFromTheStartToTheEnd) {
  const auto content = patternOf(10'000);
  folder_.makeFile("file", content);
  folder_.makeFile("empty", "");
  EXPECT_EQ(restOf(**open()->openFile("file")), content);
  EXPECT_EQ(restOf(**open()->openFile("empty")), "");
}

TEST_P(FileStreamsContract, OpensRegularFilesOnlyAndNothingElseEvenForAMoment) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  folder_.makeFolder("folder");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto handle = open();
  EXPECT_EQ(codeOf(handle->openFile("pipe")), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(handle->openFile("folder")), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(handle->openFile("link")), posix::kTooManyLinks);
  EXPECT_EQ(codeOf(handle->openFile("missing")), posix::kNoEntry);
  EXPECT_EQ(codeOf(open("/dev")->openFile("zero")), posix::kInvalidArgument);
}

TEST_P(FileStreamsContract, StatusIsOfTheOpenFileWhateverItsNameHasBecome) {
  folder_.makeFile("file", "12345");
  const auto handle = open();
  const auto reader = handle->openFile("file");
  const auto writer = handle->createFile("new", 0640);
  ASSERT_TRUE(reader && writer);
  const auto inode = tests::statusOfObject(folder_.path("new")).st_ino;
  std::filesystem::remove(folder_.path("file"));
  std::filesystem::remove(folder_.path("new"));
  folder_.makeFile("file", "other");
  EXPECT_EQ((*reader)->status()->size, 5U);
  EXPECT_EQ((*reader)->status()->links, 0U);
  EXPECT_EQ((*writer)->status()->inode, inode);
  EXPECT_EQ((*writer)->status()->permissions, 0640);
}

TEST_P(FileStreamsContract, WritesAllOfIt) {
  const auto content = patternOf(3'000'000);
  const auto writer = open()->createFile("file", 0);  // open for writing whatever its permissions
  ASSERT_TRUE(writer);
  EXPECT_EQ(codeOf((*writer)->write(bytesOf("start "))), 0);
  EXPECT_EQ(codeOf((*writer)->write({})), 0);
  EXPECT_EQ(codeOf((*writer)->write(bytesOf(content))), 0);
  EXPECT_EQ(codeOf((*writer)->synchronize()), 0);
  EXPECT_EQ(contentOf("file"), "start " + content);
  EXPECT_EQ(codeOf(open()->synchronize()), 0);
}

TEST_P(FileStreamsContract, CopiesTheRestOfAnotherFile) {
  for (const std::size_t size : {0, 1, 4096, 3'000'000}) {
    const auto content = patternOf(size);
    folder_.makeFile("source", "1234567890" + content);
    const auto handle = open();
    const auto reader = handle->openFile("source");
    const auto writer = handle->createFile("target", 0600);
    std::uint8_t head[10];
    ASSERT_EQ((*reader)->read(head).value(), sizeof head);
    EXPECT_EQ(codeOf((*writer)->write(bytesOf("head "))), 0);
    EXPECT_EQ(codeOf((*writer)->copyFrom(**reader)), 0);
    EXPECT_EQ(codeOf((*writer)->write(bytesOf(" tail"))), 0);
    EXPECT_EQ(contentOf("target"), "head " + content + " tail");
    EXPECT_EQ((*reader)->read(head).value(), 0U);
    ASSERT_EQ(codeOf(handle->removeFile("target")), 0);
  }
}

TEST_P(FileStreamsContract, CopiesWhatTheKernelCanNotCopy) {
  struct Counting final : FileReader {
    Result<host::FileStatus> status() const override { return posixFailure(posix::kNotSupported); }
    Result<std::size_t> read(std::span<std::uint8_t> buffer) override {
      if (left == 0) return fails ? Result<std::size_t>(posixFailure(posix::kInputOutput)) : std::size_t{0};
      const auto count = std::min<std::size_t>({buffer.size(), left, 1000});
      std::fill_n(buffer.begin(), count, std::uint8_t{'c'});
      left -= count;
      return count;
    }
    std::size_t left = 300'000;
    bool fails = false;
  } source;
  const auto handle = open();
  EXPECT_EQ(codeOf((*handle->createFile("target", 0600))->copyFrom(source)), 0);
  EXPECT_EQ(contentOf("target"), std::string(300'000, 'c'));
  source.left = 10;
  source.fails = true;
  EXPECT_EQ(codeOf((*handle->createFile("part", 0600))->copyFrom(source)), posix::kInputOutput);
  EXPECT_EQ(contentOf("part"), std::string(10, 'c'));
}

// The kernel says that there is nothing to copy in a file whose size it doesn't tell.
TEST_P(FileStreamsContract, CopiesPseudoFiles) {
  if (!tests::kHasPseudoFiles) GTEST_SKIP() << "every file tells its size here";
  const auto folder = fileSystem_.openDirectory(tests::kPseudoFolder, host::FollowLinks::Yes);
  const auto source = (*folder)->openFile(tests::kPseudoFile);
  ASSERT_TRUE(source);
  EXPECT_EQ(codeOf((*open()->createFile("target", 0600))->copyFrom(**source)), 0);
  EXPECT_TRUE(contentOf("target").starts_with("Name:"));
  EXPECT_GT(contentOf("target").size(), 500U);
}

TEST_P(FileStreamsContractAsRoot, CopiesFromOneFileSystemToAnother) {
  const tests::MountedFileSystem mounted(folder_.makeFolder("mounted"));
  const auto content = patternOf(5'000'000);
  folder_.makeFile("source", content);
  const auto source = open()->openFile("source");
  EXPECT_EQ(codeOf((*open(folder_.path("mounted"))->createFile("target", 0600))->copyFrom(**source)), 0);
  EXPECT_EQ(contentOf("mounted/target"), content);
}

TEST_P(FileStreamsContractAsRoot, TellsWhenThereIsNoSpaceLeft) {
  const tests::MountedFileSystem mounted(folder_.makeFolder("mounted"));  // 16 MiB
  const auto content = patternOf(20'000'000);
  folder_.makeFile("source", content);
  const auto target = open(folder_.path("mounted"));
  EXPECT_EQ(codeOf((*target->createFile("written", 0600))->write(bytesOf(content))), posix::kNoSpace);
  EXPECT_GT(std::filesystem::file_size(folder_.path("mounted/written")), 1'000'000U);
  ASSERT_EQ(codeOf(target->removeFile("written")), 0);
  EXPECT_EQ(codeOf((*target->createFile("copied", 0600))->copyFrom(**open()->openFile("source"))), posix::kNoSpace);
}

}  // namespace
}  // namespace vantrell
