// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/StorageSize.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "foundation/PosixCodes.h"
#include "foundation/TreeWalk.h"

namespace vantrell {
namespace {

constexpr std::uint64_t kObjectsPerLook = 100;

/// Adds up what it is shown, by two threads at a time.
class SizeVisitor final : public TreeVisitor {
 public:
  explicit SizeVisitor(const std::function<bool()>& isCancelled) : isCancelled_(isCancelled) {}

  Result<Enter> enter(TreeEntry& entry) override {
    const auto status = entry.folder().statusOf(entry.name(), host::FollowLinks::No);
    if (status) total_.fetch_add(status->size, std::memory_order_relaxed);
    const auto count = count_.fetch_add(1, std::memory_order_relaxed) + 1;
    if (count % kObjectsPerLook == 0) look();
    if (wasCancelled()) return posixFailure(posix::kCanceled);
    return status && status->isDirectory() ? Enter::Descend : Enter::Skip;
  }

  std::uint64_t total() const noexcept { return total_.load(std::memory_order_relaxed); }
  bool wasCancelled() const noexcept { return wasCancelled_.load(std::memory_order_relaxed); }

 private:
  void look() {
    if (!isCancelled_) return;
    const std::lock_guard lock(looking_);
    if (!wasCancelled() && isCancelled_()) wasCancelled_ = true;
  }

  const std::function<bool()>& isCancelled_;
  std::mutex looking_;
  std::atomic<bool> wasCancelled_ = false;
  std::atomic<std::uint64_t> total_ = 0;
  std::atomic<std::uint64_t> count_ = 0;
};

}  // namespace

Result<std::uint64_t> storageSize(std::unique_ptr<host::DirectoryHandle> folder,
                                  const std::function<bool()>& isCancelled) {
  SizeVisitor visitor(isCancelled);
  // What else breaks the walk off, a folder that was moved while it was read, leaves the size as far as it was read.
  static_cast<void>(TreeWalk::runOnTwoThreads(std::move(folder), {}, host::MountPoints::Enter, visitor));
  if (visitor.wasCancelled()) return posixFailure(posix::kCanceled);
  return visitor.total();
}

}  // namespace vantrell
