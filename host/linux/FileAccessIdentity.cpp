// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FileAccessIdentity.h"

#include <sys/fsuid.h>

namespace vantrell::host {
namespace {

// Neither call tells of a failure; both return what was so far, also for an identifier that can't be set.
bool hasUser(uid_t user) {
  return static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1))) == user;
}
bool hasGroup(gid_t group) {
  return static_cast<gid_t>(setfsgid(static_cast<gid_t>(-1))) == group;
}

}  // namespace

// With the user goes the right to choose the group: group first, and last on the way back.
FileAccessIdentity::FileAccessIdentity(uid_t user, gid_t group)
    : formerUser_(static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1)))),
      formerGroup_(static_cast<gid_t>(setfsgid(group))) {
  setfsuid(user);
  isAssumed_ = hasUser(user) && hasGroup(group);
}

FileAccessIdentity::~FileAccessIdentity() {
  setfsuid(formerUser_);
  setfsgid(formerGroup_);
}

}  // namespace vantrell::host
