// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "fileops/FileObjectOperations.h"
#include "foundation/Value.h"
#include "tests/fileops/AdvancedOpsFixture.h"

namespace vantrell {
namespace {

using namespace tests;
namespace file_flags = host::file_flags;

class RecordingFeedback final : public QELPrivilegedOperationFeedbackProtocol {
 public:
  void processPrivilegedOperationFeedback(const Dictionary& message) override { messages.push_back(message); }
  std::vector<Dictionary> messages;
};

std::vector<Dictionary> progress(std::initializer_list<double> fractions) {
  std::vector<Dictionary> messages;
  for (const double fraction : fractions) messages.push_back({{"ProgressFraction", fraction}});
  return messages;
}

class FileObjects : public OverlayFixture {
 protected:
  ErrorOrNil deleteObjects(const Array& arguments) {
    return operations_.deleteFileobjects(arguments, &feedback_, [this] { return cancelAfter_-- <= 0; });
  }
  ErrorOrNil deleteContents(const Array& arguments) {
    return operations_.deleteFoldercontents(arguments, &feedback_, [this] { return cancelAfter_-- <= 0; });
  }
  Error systemFlagsError(const std::string& name) {
    return {kOperationDomain, 8,
            Dictionary{{"NSFilePath", folder_.path(name)},
                       {"NSLocalizedDescription", "Single User Mode is required to remove this object."},
                       {"QELLocalizedRecoverySuggestionTemplate",
                        "The object located at '$1$' uses special protection which should only be deactivated when the "
                        "system is not in full operation. Please restart the operating system in Single User Mode and "
                        "remove the protection attribute."},
                       {"QELLocalizedRecoverySuggestionParameters", Array{folder_.path(name)}}}};
  }
  Value path(const std::string& name) { return folder_.path(name); }

  AdvancedOps ops_{fileSystem_, lists_, "10.15.7"};
  FileObjectOperations operations_{ops_.ops(), ops_.fileManager(), fileSystem_};
  RecordingFeedback feedback_;
  int cancelAfter_ = 1000;  // that many looks, each of which says no
};

using DeleteFileobjects = FileObjects;
using DeleteFoldercontents = FileObjects;
using FileObjectChanges = FileObjects;
using InspectFileobject = FileObjects;
using FileObjectInfo = FileObjects;

TEST_F(DeleteFileobjects, ReadsDigitsForTruthValues) {
  EXPECT_EQ(FileObjectOperations::getBool("0"), false);
  EXPECT_EQ(FileObjectOperations::getBool("1"), true);
  for (const char* text : {"", "true", "yes", "YES", "2", "01", " 1"})
    EXPECT_EQ(FileObjectOperations::getBool(text), std::nullopt) << text;
}

TEST_F(DeleteFileobjects, RefusesArgumentsThatMakeNoSense) {
  folder_.makeFile("file");
  const Value file = path("file");
  for (const Array& arguments :
       {Array{}, Array{"0"}, Array{"0", "0"}, Array{"yes", "0", file}, Array{"0", "true", file}, Array{"", "0", file},
        Array{0, 0, file}, Array{"0", "0", file, 5}, Array{"0", "0", Value(Null())}}) {
    EXPECT_EQ(deleteObjects(arguments), Error::posix(posix::kInvalidArgument));
  }
  EXPECT_TRUE(isThere("file"));
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(DeleteFileobjects, RemovesAndReportsEachPath) {
  folder_.makeFile("1");
  folder_.makeFile("2");
  EXPECT_EQ(deleteObjects({"0", "1", path("1"), path("2")}), std::nullopt);
  EXPECT_FALSE(isThere("1"));
  EXPECT_FALSE(isThere("2"));
  EXPECT_EQ(feedback_.messages, progress({0.5, 1.0, 1.0}));
}

TEST_F(DeleteFileobjects, GoesOnAfterAFailureUnlessToldToStop) {
  for (const char* name : {"1", "2", "3"}) folder_.makeFile(name);
  force("2", file_flags::kSystemImmutable);
  EXPECT_EQ(deleteObjects({"0", "0", path("1"), path("2"), path("3")}), systemFlagsError("2"));
  EXPECT_FALSE(isThere("1"));
  EXPECT_TRUE(isThere("2"));
  EXPECT_FALSE(isThere("3"));
  EXPECT_EQ(feedback_.messages, progress({1.0 / 3.0, 2.0 / 3.0, 1.0, 1.0}));
}

TEST_F(DeleteFileobjects, StopsAtTheFirstFailureWhenTold) {
  for (const char* name : {"1", "2", "3"}) folder_.makeFile(name);
  force("2", file_flags::kSystemImmutable);
  EXPECT_EQ(deleteObjects({"0", "1", path("1"), path("2"), path("3")}), systemFlagsError("2"));
  EXPECT_FALSE(isThere("1"));
  EXPECT_TRUE(isThere("3"));
  EXPECT_EQ(feedback_.messages, progress({1.0 / 3.0, 1.0}));
}

TEST_F(DeleteFileobjects, ReportsTheLastOfSeveralFailures) {
  folder_.makeFile("1");
  force("1", file_flags::kSystemImmutable);
  EXPECT_EQ(deleteObjects({"0", "0", path("1"), path("missing")}), Error::posix(posix::kNoEntry));
  EXPECT_EQ(deleteObjects({"0", "0", path("missing"), path("1")}), systemFlagsError("1"));
}

TEST_F(DeleteFileobjects, PassesErrorsOfOtherDomainsOn) {
  folder_.makeFolder("folder/inner");
  EXPECT_EQ(deleteObjects({"0", "1", path("folder")}), Error::posix(posix::kNotEmpty));
  EXPECT_EQ(deleteObjects({"1", "1", ""}), Error::posix(posix::kInvalidArgument));
}

TEST_F(DeleteFileobjects, RemovesTreesWhenRecursive) {
  folder_.makeFolder("folder/inner");
  folder_.makeFile("folder/inner/file");
  force("folder/inner/file", file_flags::kUserImmutable);
  EXPECT_EQ(deleteObjects({"1", "1", path("folder"), path("missing")}), std::nullopt);
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(DeleteFileobjects, LeavesALinkWithoutTargetOnlyWhenRecursive) {
  folder_.makeLink("dangling", "nowhere");
  EXPECT_EQ(deleteObjects({"1", "1", path("dangling")}), std::nullopt);
  EXPECT_TRUE(isThere("dangling"));
  EXPECT_EQ(deleteObjects({"0", "1", path("dangling")}), std::nullopt);
  EXPECT_FALSE(isThere("dangling"));
}

TEST_F(DeleteFileobjects, EndsAtOnceWhenCancelled) {
  for (const char* name : {"1", "2", "3"}) folder_.makeFile(name);
  cancelAfter_ = 1;
  EXPECT_EQ(deleteObjects({"0", "0", path("1"), path("2"), path("3")}), Error::posix(posix::kCanceled));
  EXPECT_FALSE(isThere("1"));
  EXPECT_TRUE(isThere("2"));
  EXPECT_TRUE(isThere("3"));
  EXPECT_EQ(feedback_.messages, progress({1.0 / 3.0}));
}

TEST_F(DeleteFileobjects, CancellationReplacesAnEarlierFailure) {
  folder_.makeFile("1");
  cancelAfter_ = 1;
  EXPECT_EQ(deleteObjects({"0", "0", path("missing"), path("1")}), Error::posix(posix::kCanceled));
  EXPECT_TRUE(isThere("1"));
}

TEST_F(DeleteFileobjects, WorksWithoutFeedbackAndCancellation) {
  folder_.makeFile("1");
  EXPECT_EQ(operations_.deleteFileobjects({"0", "0", path("1")}, nullptr, nullptr), std::nullopt);
  EXPECT_FALSE(isThere("1"));
}

TEST_F(DeleteFoldercontents, RemovesEverythingInTheFoldersButNotThem) {
  folder_.makeFolder("1/inner/.hidden");
  folder_.makeFile("1/inner/file");
  folder_.makeFolder("2");
  folder_.makeFile("2/.file");
  folder_.makeLink("link", "2");
  force("1/inner/file", file_flags::kUserImmutable);
  EXPECT_EQ(deleteContents({path("1"), path("link")}), std::nullopt);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("1")));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("2")));
  EXPECT_TRUE(isThere("link"));
  EXPECT_EQ(feedback_.messages, progress({0.0, 0.5, 1.0}));
}

TEST_F(DeleteFoldercontents, PassesOverWhatDoesNotExist) {
  EXPECT_EQ(deleteContents({path("missing"), ""}), std::nullopt);
  EXPECT_EQ(feedback_.messages, progress({0.0, 0.5, 1.0}));
}

TEST_F(DeleteFoldercontents, LeavesLinksWithoutTarget) {
  folder_.makeFolder("folder");
  folder_.makeLink("folder/dangling", "nowhere");
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeLink("folder/link", "../target");
  EXPECT_EQ(deleteContents({path("folder")}), std::nullopt);
  EXPECT_TRUE(isThere("folder/dangling"));
  EXPECT_FALSE(isThere("folder/link"));
  EXPECT_TRUE(isThere("target/file"));
}

TEST_F(DeleteFoldercontents, StopsAtWhatIsNoFolder) {
  folder_.makeFile("file");
  folder_.makeFolder("folder/inner");
  EXPECT_EQ(deleteContents({path("file"), path("folder")}), Error::posix(posix::kNotDirectory));
  EXPECT_TRUE(isThere("folder/inner"));
  EXPECT_EQ(feedback_.messages, progress({0.0}));
}

TEST_F(DeleteFoldercontents, StopsAtTheFirstFailureWithoutAFinalMessage) {
  folder_.makeFolder("1");
  folder_.makeFile("1/file");
  folder_.makeFolder("2/inner");
  force("1", file_flags::kSystemRestricted);
  const auto error = deleteContents({path("1"), path("2")});
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), kOperationDomain);
  EXPECT_EQ(error->code(), 17);
  EXPECT_EQ(*error->userInfo().find("QELLocalizedRecoverySuggestionParameters"), Value(Array{folder_.path("1/file")}));
  EXPECT_TRUE(isThere("2/inner"));
  EXPECT_EQ(feedback_.messages, progress({0.0}));
}

TEST_F(DeleteFoldercontents, LooksForCancellationBeforeEachFolderAndEntry) {
  folder_.makeFolder("folder/1");
  folder_.makeFolder("folder/2");
  folder_.makeFolder("folder/3");
  cancelAfter_ = 2;
  EXPECT_EQ(deleteContents({path("folder")}), Error::posix(posix::kCanceled));
  EXPECT_EQ(isThere("folder/1") + isThere("folder/2") + isThere("folder/3"), 2);
  EXPECT_EQ(feedback_.messages, progress({0.0}));
  cancelAfter_ = 0;
  EXPECT_EQ(deleteContents({path("folder")}), Error::posix(posix::kCanceled));
}

TEST_F(DeleteFoldercontents, RefusesArgumentsThatMakeNoSense) {
  EXPECT_EQ(deleteContents({}), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(deleteContents({5}), Error::posix(posix::kInvalidArgument));
}

TEST_F(FileObjectChanges, RenameWithTheFileManagersErrors) {
  folder_.makeFile("old");
  EXPECT_EQ(operations_.renameFileobject({path("old"), path("new")}), std::nullopt);
  EXPECT_TRUE(isThere("new"));
  EXPECT_EQ(operations_.renameFileobject({path("old"), path("other")})->code(), 4);
  folder_.makeFile("old");
  EXPECT_EQ(operations_.renameFileobject({path("old"), path("new")})->code(), 516);
  EXPECT_EQ(operations_.renameFileobject({path("old")}), Error::posix(posix::kInvalidArgument));
}

TEST_F(FileObjectChanges, TouchSetsBothTimesThroughLinks) {
  const auto file = folder_.makeFile("file");
  const timespec times[] = {{1000, 0}, {2000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  folder_.makeLink("link", "file");
  const auto before = Date::now().seconds;
  EXPECT_EQ(operations_.touchFileobject({path("link")}), std::nullopt);
  const auto status = fileSystem_.status(file, host::FollowLinks::No);
  EXPECT_GE(status->modified.seconds + 1, before);
  EXPECT_GE(status->accessed.seconds + 1, before);
  folder_.makeLink("dangling", "nowhere");
  EXPECT_EQ(operations_.touchFileobject({path("dangling")}), Error::posix(posix::kNoEntry));
  EXPECT_EQ(operations_.touchFileobject({""}), Error::posix(posix::kInvalidArgument));
  force("file", file_flags::kUserImmutable);
  EXPECT_EQ(operations_.touchFileobject({path("file")}), Error::posix(posix::kNotPermitted));
}

TEST_F(FileObjectChanges, ProtectionReachesTheWholeTreeWhenRecursive) {
  folder_.makeFolder("folder");
  folder_.makeFile("folder/file");
  EXPECT_EQ(operations_.modifyProtection({path("folder"), true, false, false}), std::nullopt);
  EXPECT_EQ(flagsOf("folder"), file_flags::kUserImmutable);
  EXPECT_EQ(flagsOf("folder/file"), 0U);
  EXPECT_EQ(operations_.modifyProtection({path("folder"), 1, 1, 1}), std::nullopt);
  EXPECT_EQ(flagsOf("folder/file"), file_flags::kUserImmutable);
  EXPECT_EQ(operations_.modifyProtection({path("folder"), false, true, true}), std::nullopt);
  EXPECT_EQ(flagsOf("folder") | flagsOf("folder/file"), 0U);
  EXPECT_EQ(operations_.modifyProtection({path("missing"), true, true, true}), Error::posix(posix::kNoEntry));
  EXPECT_EQ(operations_.modifyProtection({path("folder"), true, true}), Error::posix(posix::kInvalidArgument));
}

TEST_F(FileObjectChanges, HfsAttributesAreSet) {
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(operations_.modifyHfsattr({file, 0x54455854U, 0xFFFFFFFFU, true}), std::nullopt);
  const auto attributes = ops_.fileManager().attributesOfItemAtPath(file).value();
  EXPECT_EQ(*attributes.find(NSFileHFSTypeCode), Value(0x54455854U));
  EXPECT_EQ(*attributes.find(NSFileHFSCreatorCode), Value(0xFFFFFFFFU));
  EXPECT_EQ(operations_.modifyHfsattr({"", 1, 2, true}), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(operations_.modifyHfsattr({file}), Error::posix(posix::kInvalidArgument));
}

TEST_F(FileObjectChanges, LinksAreCreated) {
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(operations_.createLink({path("soft"), "any/text", false}), std::nullopt);
  EXPECT_EQ(operations_.createLink({path("hard"), file, true}), std::nullopt);
  EXPECT_EQ(std::filesystem::read_symlink(folder_.path("soft")), "any/text");
  EXPECT_EQ(std::filesystem::hard_link_count(file), 2U);
  EXPECT_EQ(operations_.createLink({path("x"), file}), Error::posix(posix::kInvalidArgument));
}

TEST_F(FileObjectChanges, AStashedFolderLeavesASubstitute) {
  folder_.makeFolder("folder/inner");
  EXPECT_EQ(operations_.renameStashfolder({path("folder"), "stashed", true}), std::nullopt);
  EXPECT_TRUE(isThere("stashed/inner"));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("folder")));
  EXPECT_EQ(operations_.renameStashfolder({path("folder"), "stashed"}), Error::posix(posix::kInvalidArgument));
}

TEST_F(InspectFileobject, TellsWhatIsThere) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("to folder", "folder");
  folder_.makeLink("to file", "to folder/../file");
  folder_.makeLink("dangling", "nowhere");
  folder_.makeLink("loop", "loop");
  const auto existenceOf = [&](const std::string& name) {
    const auto answer = operations_.inspectFileobject({path(name)});
    EXPECT_EQ(answer->domain(), kOperationDomain);
    EXPECT_EQ(answer->code(), 0);
    EXPECT_EQ(answer->userInfo().size(), 1U);
    const auto* existence = answer->userInfo().find("ObjectExistence")->asNumber();
    EXPECT_EQ(existence->kind(), Number::Kind::Unsigned);
    return existence->unsignedValue();
  };
  EXPECT_EQ(existenceOf("missing"), 0U);
  EXPECT_EQ(existenceOf("dangling"), 0U);
  EXPECT_EQ(existenceOf("loop"), 0U);
  EXPECT_EQ(existenceOf("folder"), 1U);
  EXPECT_EQ(existenceOf("to folder"), 1U);
  EXPECT_EQ(existenceOf("file"), 2U);
  EXPECT_EQ(existenceOf("to file"), 2U);
}

TEST_F(InspectFileobject, RefusesArgumentsThatMakeNoSense) {
  for (const Array& arguments : {Array{}, Array{""}, Array{5}})
    EXPECT_EQ(operations_.inspectFileobject(arguments), Error::posix(posix::kInvalidArgument));
}

TEST_F(FileObjectInfo, HoldsFiveEntriesOfTheObjectItself) {
  const auto file = folder_.makeFile("file", "12345");
  ASSERT_EQ(chmod(file.c_str(), 0751), 0);
  const auto link = folder_.makeLink("link", "file");
  Array records;
  ops_->addFileSystemObjectInfoDictionaryToArray(&records, file);
  ops_->addFileSystemObjectInfoDictionaryToArray(&records, link);
  const auto fileStatus = fileSystem_.status(file, host::FollowLinks::No);
  const auto linkStatus = fileSystem_.status(link, host::FollowLinks::No);
  const Array expected{Dictionary{{"Path", file},
                                  {"Type", "NSFileTypeRegular"},
                                  {"Size", 5U},
                                  {"ModificationDate", fileStatus->modified},
                                  {"Mode", 0751U}},
                       Dictionary{{"Path", link},
                                  {"Type", "NSFileTypeSymbolicLink"},
                                  {"Size", 4U},
                                  {"ModificationDate", linkStatus->modified},
                                  {"Mode", 0777U}}};
  EXPECT_EQ(records, expected);
}

TEST_F(FileObjectInfo, IsLeftOutWhereItCannotBeHad) {
  Array records;
  ops_->addFileSystemObjectInfoDictionaryToArray(&records, folder_.path("missing"));
  ops_->addFileSystemObjectInfoDictionaryToArray(&records, "");
  ops_->addFileSystemObjectInfoDictionaryToArray(nullptr, folder_.path());
  EXPECT_TRUE(records.empty());
}

}  // namespace
}  // namespace vantrell
