// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/ReadAheadBlock.h"

#include <utility>

namespace vantrell {

bool ReadAheadBlock::fill(QELDirectoryEnumerator& walk) {
  texts_.clear();
  folders_.clear();
  slots_.clear();
  slots_.reserve(kObjects);
  while (slots_.size() < kObjects) {
    // A new folder is met no sooner than the next object is, so that one more than the bound may be.
    if (folders_.size() > kFolders) return true;
    const auto* object = walk.next();
    if (!object) return false;
    add(*object, walk.levels() - (object->isEntered() ? 1 : 0));
  }
  return true;
}

void ReadAheadBlock::add(const WalkedObject& object, std::size_t levels) {
  if (folders_.empty() || folders_.back() != object.folder_) folders_.push_back(object.folder_);
  auto& slot = slots_.emplace_back();
  slot.text = texts_.size();
  slot.textLength = object.relativePath().size();
  slot.nameLength = object.name().size();
  slot.folder = folders_.size() - 1;
  slot.levels = levels;
  slot.listedType = object.listedType();
  slot.isEntered = object.isEntered();
  slot.isPathFaithful = object.isPathFaithful();
  slot.refusal = object.refusal();
  slot.status = std::move(object.status_);
  texts_ += object.relativePath();
  texts_ += '\0';
}

void ReadAheadBlock::readStatus(std::size_t index) {
  auto& slot = slots_[index];
  const char* name = texts_.data() + slot.text + slot.textLength - slot.nameLength;
  if (!slot.status) slot.status.emplace(folders_[slot.folder]->statusOf(name, host::FollowLinks::No));
}

void ReadAheadBlock::take(std::size_t index, WalkedObject& object) {
  auto& slot = slots_[index];
  object.relativePath_ = {texts_.data() + slot.text, slot.textLength};
  object.name_ = object.relativePath_.substr(slot.textLength - slot.nameLength);
  if (object.folder_ != folders_[slot.folder]) object.folder_ = folders_[slot.folder];
  object.listedType_ = slot.listedType;
  object.isEntered_ = slot.isEntered;
  object.isPathFaithful_ = slot.isPathFaithful;
  object.refusal_ = slot.refusal;
  object.status_ = std::move(slot.status);
}

}  // namespace vantrell
