// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManagerEnumerator.h"

#include <utility>

namespace vantrell {

using Event = TreeWalkCursor::Event;

namespace {

bool isFolder(const TreeEntry& entry) {
  if (entry.type() != host::FileType::Unknown) return entry.type() == host::FileType::Directory;
  const auto status = entry.folder().statusOf(entry.name(), host::FollowLinks::No);
  return status && status->isDirectory();
}

}  // namespace

FileManagerEnumerator::FileManagerEnumerator(std::unique_ptr<host::DirectoryHandle> top, const std::string& path) {
  if (!top) return;
  cursor_ = std::make_unique<TreeWalkCursor>(std::move(top), path, host::MountPoints::Enter);
  relativeOffset_ = path.empty() || path.back() != '/' ? path.size() + 1 : path.size();
}

std::optional<std::string> FileManagerEnumerator::nextObject() {
  if (!cursor_) return std::nullopt;
  for (;;) {
    const auto event = cursor_->next();
    if (!event || *event == Event::End) {
      cursor_.reset();
      return std::nullopt;
    }
    if (*event != Event::Entry) continue;
    const auto& entry = cursor_->entry();
    if (isFolder(entry)) cursor_->descend();
    return entry.path().substr(relativeOffset_);
  }
}

void FileManagerEnumerator::skipDescendants() noexcept {
  if (cursor_) cursor_->skip();
}

}  // namespace vantrell
