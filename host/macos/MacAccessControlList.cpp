// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacAccessControlList.h"

#include <cstring>

#include <arpa/inet.h>
#include <sys/acl.h>
#include <sys/kauth.h>

#include "foundation/PosixCodes.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kHeaderSize = KAUTH_FILESEC_SIZE(0);
static_assert(kHeaderSize == 44 && sizeof(kauth_ace) == 24);
static_assert(MacAccessControlList::kMaximumNativeSize == KAUTH_FILESEC_SIZE(KAUTH_ACL_MAX_ENTRIES));

constexpr std::size_t kMagicOffset = offsetof(kauth_filesec, fsec_magic);
constexpr std::size_t kOwnerOffset = offsetof(kauth_filesec, fsec_owner);
constexpr std::size_t kListOffset = offsetof(kauth_filesec, fsec_acl);
constexpr std::size_t kCountOffset = kListOffset + offsetof(kauth_acl, acl_entrycount);
constexpr std::size_t kFlagsOffset = kListOffset + offsetof(kauth_acl, acl_flags);
constexpr std::uint32_t kPrivateFlags = 0xFFFF;  // file systems' own business

struct FreeList {
  void operator()(acl_t list) const noexcept { acl_free(list); }
};
using LibraryList = std::unique_ptr<std::remove_pointer_t<acl_t>, FreeList>;

// `bytes` is at least as long as a header.
std::uint32_t numberAt(DataView bytes, std::size_t offset) {
  std::uint32_t number;
  std::memcpy(&number, bytes.data() + offset, sizeof number);
  return number;
}

// Whether a list of so many entries lies in so many bytes.
bool isWhole(std::size_t size, std::uint32_t magic, std::uint32_t count) {
  return magic == KAUTH_FILESEC_MAGIC && count <= KAUTH_ACL_MAX_ENTRIES && size >= KAUTH_FILESEC_SIZE(count);
}

// Either of the library's functions that write a form.
template <class Copy>
Data formOf(const LibraryList& list, const Copy& copy) {
  if (!list) return {};
  const ssize_t size = acl_size(list.get());
  if (size <= 0) return {};
  Data form(static_cast<std::size_t>(size));
  const ssize_t used = copy(form.data(), list.get(), size);
  form.resize(used > 0 ? static_cast<std::size_t>(used) : 0);
  return form;
}

}  // namespace

Result<std::unique_ptr<MacAccessControlList>> MacAccessControlList::fromNativeForm(DataView bytes) {
  if (bytes.size() < kHeaderSize) return posixFailure(posix::kInvalidArgument);
  const auto count = numberAt(bytes, kCountOffset);
  if (count == KAUTH_FILESEC_NOACL) return nullptr;
  if (!isWhole(bytes.size(), numberAt(bytes, kMagicOffset), count)) return posixFailure(posix::kInvalidArgument);
  const auto size = static_cast<std::ptrdiff_t>(KAUTH_FILESEC_SIZE(count));
  Data native(bytes.begin(), bytes.begin() + size);
  std::memset(native.data() + kOwnerOffset, 0, kListOffset - kOwnerOffset);
  return std::make_unique<MacAccessControlList>(std::move(native));
}

Result<std::unique_ptr<AccessControlList>> MacAccessControlList::fromExternalForm(DataView bytes) {
  // The library believes the count that it reads.
  if (bytes.size() < kHeaderSize ||
      !isWhole(bytes.size(), ntohl(numberAt(bytes, kMagicOffset)), ntohl(numberAt(bytes, kCountOffset))))
    return posixFailure(posix::kInvalidArgument);
  const Data aligned(bytes.begin(), bytes.end());
  auto list = fromNativeForm(formOf(LibraryList(acl_copy_int(aligned.data())), acl_copy_ext_native));
  if (!list || !*list) return posixFailure(posix::kInvalidArgument);
  return std::move(*list);
}

Data MacAccessControlList::nativeFormOfNone() {
  Data form(kHeaderSize);
  const std::uint32_t magic = KAUTH_FILESEC_MAGIC;
  const std::uint32_t none = KAUTH_FILESEC_NOACL;
  std::memcpy(form.data() + kMagicOffset, &magic, sizeof magic);
  std::memcpy(form.data() + kCountOffset, &none, sizeof none);
  return form;
}

bool MacAccessControlList::isEmpty() const noexcept {
  return numberAt(native_, kCountOffset) == 0 && (numberAt(native_, kFlagsOffset) & ~kPrivateFlags) == 0;
}

Data MacAccessControlList::externalForm() const {
  return formOf(LibraryList(acl_copy_int_native(native_.data())), acl_copy_ext);
}

}  // namespace vantrell::host
