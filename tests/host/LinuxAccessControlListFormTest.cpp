// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstring>
#include <random>
#include <string>

#include <acl/libacl.h>
#include <gtest/gtest.h>
#include <sys/acl.h>

#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/PosixAccessControlList.h"

namespace vantrell {
namespace {

using host::PosixAccessControlList;
using host::PosixAccessList;

/// What a program that uses the library itself hands over.
Data formOf(const char* text) {
  const acl_t list = acl_from_text(text);
  EXPECT_NE(list, nullptr) << text;
  Data form(static_cast<std::size_t>(acl_size(list)));
  EXPECT_GE(acl_copy_ext(form.data(), list, acl_size(list)), 0);
  acl_free(list);
  return form;
}
Data emptyForm() {
  const acl_t list = acl_init(0);
  Data form(static_cast<std::size_t>(acl_size(list)));
  EXPECT_GE(acl_copy_ext(form.data(), list, acl_size(list)), 0);
  acl_free(list);
  return form;
}
Data joined(Data first, const Data& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Result<std::unique_ptr<host::AccessControlList>> read(DataView bytes) {
  return host::LinuxFileSystem().accessControlListFromExternalForm(bytes);
}
const PosixAccessControlList& posixList(const host::AccessControlList& list) {
  return dynamic_cast<const PosixAccessControlList&>(list);
}
bool isRefused(DataView bytes) {
  const auto list = read(bytes);
  return !list && list.error() == Error::posix(posix::kInvalidArgument);
}

const char kFull[] = "u::rwx,u:1000:rwx,u:7:r--,g::r-x,g:5:-w-,m::rw-,o::---";

TEST(AccessControlListForm, IsWhatTheLibraryWrites) {
  const auto list = read(formOf(kFull));
  ASSERT_TRUE(list);
  const auto& named = posixList(**list).named();
  using Kind = PosixAccessList::Kind;
  EXPECT_EQ(named,
            (std::vector<PosixAccessList::NamedEntry>{{Kind::User, 7, 4}, {Kind::User, 1000, 6}, {Kind::Group, 5, 2}}));
  EXPECT_FALSE(posixList(**list).defaultList());
}

// Entries are tag, two bits of the library's own, identifier and permissions, each in eight bytes of which four mean
// something. What the library leaves in the others may be anybody's memory, and the form may go to another process.
TEST(AccessControlListForm, IsTheLibrarysWithNothingInTheGaps) {
  if (sizeof(long) != 8) GTEST_SKIP() << "there are no gaps on this machine";
  constexpr char kText[] = "u::---,u:7:r--,g::---,g:5:-w-,m::rw-,o::---";
  const Data theirs = formOf(kText);
  const Data ours = (*read(theirs))->externalForm();
  ASSERT_EQ(ours.size(), theirs.size());
  for (std::size_t index = 0; index < ours.size(); ++index) {
    const bool isGap = index >= 8 && index % 8 >= 4;
    EXPECT_EQ(ours[index], isGap ? 0 : theirs[index]) << index;
  }
}

TEST(AccessControlListForm, CanBeReadByTheLibraryAndIsValid) {
  const auto list = read(joined(formOf(kFull), formOf("u::rwx,u:1:r--,g::r-x,m::r-x,o::---")));
  ASSERT_TRUE(list);
  const Data form = (*list)->externalForm();
  for (std::size_t offset = 0; offset < form.size();) {
    std::size_t size = 0;
    std::memcpy(&size, form.data() + offset, sizeof size);
    ASSERT_LE(offset + size, form.size());
    const Data part(form.begin() + static_cast<std::ptrdiff_t>(offset),
                    form.begin() + static_cast<std::ptrdiff_t>(offset + size));
    const acl_t copied = acl_copy_int(part.data());
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(acl_valid(copied), 0);
    char* const text = acl_to_any_text(copied, nullptr, ',', TEXT_ABBREVIATE | TEXT_NUMERIC_IDS);
    EXPECT_STREQ(text, offset == 0 ? "u::---,u:7:r--,u:1000:rw-,g::---,g:5:-w-,m::rw-,o::---"
                                   : "u::rwx,u:1:r--,g::r-x,m::r-x,o::---");
    acl_free(text);
    acl_free(copied);
    offset += size;
  }
}

TEST(AccessControlListForm, OwnersAloneAreAnEmptyList) {
  const auto minimal = formOf("u::rwx,g::r-x,o::---");
  for (const Data& form : {minimal, formOf("u::rwx,g::r-x,m::r--,o::---"), emptyForm(), joined(minimal, emptyForm())}) {
    const auto list = read(form);
    ASSERT_TRUE(list);
    EXPECT_TRUE((*list)->isEmpty());
    ASSERT_TRUE(read((*list)->externalForm()));
    EXPECT_TRUE((*read((*list)->externalForm()))->isEmpty());
  }
}

TEST(AccessControlListForm, ASecondFormIsTheDefaultListWholeAsItStands) {
  for (const Data& access : {formOf(kFull), formOf("u::rwx,g::r-x,o::---"), emptyForm()}) {
    const auto list = read(joined(access, formOf("u::rw-,u:9:rwx,g::r-x,m::--x,o::-w-")));
    ASSERT_TRUE(list);
    EXPECT_FALSE((*list)->isEmpty());
    const auto& defaultList = posixList(**list).defaultList();
    ASSERT_TRUE(defaultList);
    EXPECT_EQ(defaultList->owner, 6);
    EXPECT_EQ(defaultList->group, 5);
    EXPECT_EQ(defaultList->mask, 1);
    EXPECT_EQ(defaultList->other, 2);
    EXPECT_EQ(defaultList->named.at(0).permissions, 7);
    EXPECT_EQ((*read((*list)->externalForm()))->externalForm(), (*list)->externalForm());
  }
}

TEST(AccessControlListForm, RefusesEveryLengthButTheRightOne) {
  const Data one = formOf(kFull);
  const Data two = joined(one, one);
  for (std::size_t size = 0; size < two.size(); ++size) {
    if (size == one.size()) continue;
    EXPECT_TRUE(isRefused(DataView(two).first(size))) << size;
  }
  EXPECT_TRUE(read(two));
  EXPECT_TRUE(isRefused(joined(two, one)));
  EXPECT_TRUE(isRefused(joined(two, {0})));
}

TEST(AccessControlListForm, RefusesSizesThatLie) {
  const Data form = formOf(kFull);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{7}, form.size() - 1, form.size() + 1,
                                 form.size() + 40, SIZE_MAX, SIZE_MAX - 7, std::size_t{1} << 63}) {
    Data lying = form;
    std::memcpy(lying.data(), &size, sizeof size);
    EXPECT_TRUE(isRefused(lying)) << size;
  }
}

TEST(AccessControlListForm, RefusesListsThatAreNotValid) {
  for (const char* text :
       {"u::rwx", "u::rwx,g::r-x", "g::r-x,o::r--", "u::rwx,g::r-x,o::---,u:5:r--", "u::rwx,u::r--,g::r-x,o::---",
        "u::rwx,g::r-x,o::---,o::r--", "u::rwx,g::r-x,g::r--,o::---", "u::rwx,g::r-x,m::r--,m::r--,o::---",
        "u::rwx,u:5:r--,u:5:rwx,g::r-x,m::r--,o::---", "u::rwx,g:5:r--,g:5:r--,g::r-x,m::r--,o::---"}) {
    EXPECT_TRUE(isRefused(formOf(text))) << text;
    EXPECT_TRUE(isRefused(joined(formOf(kFull), formOf(text)))) << text;
  }
  EXPECT_TRUE(read(formOf("u::rwx,u:5:r--,g:5:r--,g::r-x,m::r--,o::---")));
}

TEST(AccessControlListForm, RefusesMoreEntriesThanAnyFileSystemKeeps) {
  std::string text = "u::rwx,g::r-x,m::rwx,o::---";
  const Data form = formOf(text.c_str());
  const auto entry = (form.size() - emptyForm().size()) / 4;
  Data large = form;
  large.resize(form.size() + entry * 9000);
  const std::size_t size = large.size();
  std::memcpy(large.data(), &size, sizeof size);
  EXPECT_TRUE(isRefused(large));
}

TEST(AccessControlListForm, ReadsTheLargestListInReasonableTime) {
  std::vector<PosixAccessList::NamedEntry> named;
  for (std::uint32_t index = 0; index < host::kMostNamedEntries; ++index)
    named.push_back({PosixAccessList::Kind::User, index, 4});
  const PosixAccessControlList list(named, std::nullopt);
  const auto again = read(list.externalForm());
  ASSERT_TRUE(again);
  EXPECT_EQ(posixList(**again).named(), named);
}

TEST(AccessControlListForm, SurvivesAnyChangeOfItsBytes) {
  std::mt19937 random(1);
  const Data form = joined(formOf(kFull), formOf("u::rwx,u:1:r--,g::r-x,m::r-x,o::---"));
  int accepted = 0;
  for (int round = 0; round < 20'000; ++round) {
    Data changed = form;
    for (int change = 0; change <= round % 3; ++change)
      changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
    const auto list = read(changed);
    if (!list) continue;
    ++accepted;
    const auto again = read((*list)->externalForm());
    ASSERT_TRUE(again);
    EXPECT_EQ((*again)->externalForm(), (*list)->externalForm());
  }
  EXPECT_GT(accepted, 0);
}

TEST(PosixAccessListTest, ReadsOnlyValidAttributes) {
  const PosixAccessList list{
      .owner = 7, .group = 5, .other = 1, .mask = 6, .named = {{PosixAccessList::Kind::User, 5, 7}}};
  const Data bytes = attributeOfList(list);
  EXPECT_EQ(host::listFromAttribute(bytes), list);
  EXPECT_FALSE(host::listFromAttribute({}));
  EXPECT_FALSE(host::listFromAttribute(DataView(bytes).first(bytes.size() - 1)));
  EXPECT_FALSE(host::listFromAttribute(DataView(bytes).first(bytes.size() - 8)));
  for (std::size_t index : {0U, 4U, 6U}) {
    Data changed = bytes;
    changed[index] ^= 0x58;
    EXPECT_FALSE(host::listFromAttribute(changed)) << index;
  }
}

TEST(PosixAccessListTest, TheModeShowsTheMaskInTheGroupsPlace) {
  const PosixAccessList list{
      .owner = 7, .group = 5, .other = 1, .mask = 6, .named = {{PosixAccessList::Kind::User, 5, 7}}};
  EXPECT_EQ(modeOf(list), 0761U);
  EXPECT_EQ(modeOf(effectiveList(list)), 0761U);
  EXPECT_EQ(effectiveList(list).group, 4);
  EXPECT_EQ(effectiveList(list).named.at(0).permissions, 6);
  EXPECT_EQ(host::listOfMode(0754), (PosixAccessList{.owner = 7, .group = 5, .other = 4}));
}

}  // namespace
}  // namespace vantrell
