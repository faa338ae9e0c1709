// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManagerAttributes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell {

namespace file_flags = host::file_flags;

namespace {

constexpr std::uint32_t kImmutableFlags = file_flags::kUserImmutable | file_flags::kSystemImmutable;
constexpr std::uint32_t kAppendFlags = file_flags::kUserAppend | file_flags::kSystemAppend;
constexpr std::uint32_t kClearableFlags = file_flags::kUserImmutable | file_flags::kUserAppend;

/// The 32 bytes that file browsers keep with an object, in big-endian order.
class FinderInfo {
 public:
  /// Zero throughout where there is none.
  static FinderInfo of(const host::ObjectHandle& object, const std::string& attribute) {
    FinderInfo info;
    const auto data = object.extendedAttribute(attribute);
    if (data && data->size() == info.bytes_.size()) std::ranges::copy(*data, info.bytes_.begin());
    return info;
  }

  std::uint32_t typeCode() const noexcept { return numberAt(0, 4); }
  std::uint32_t creatorCode() const noexcept { return numberAt(4, 4); }
  bool isExtensionHidden() const noexcept { return numberAt(8, 2) & kExtensionHidden; }

  void setTypeCode(std::uint32_t code) noexcept { setNumberAt(0, 4, code); }
  void setCreatorCode(std::uint32_t code) noexcept { setNumberAt(4, 4, code); }
  void setExtensionHidden(bool value) noexcept { setFlag(kExtensionHidden, value); }
  void setInvisible(bool value) noexcept { setFlag(kInvisible, value); }

  ErrorOrNil writeTo(host::ObjectHandle& object, const std::string& attribute) const {
    return object.setExtendedAttribute(attribute, bytes_);
  }

  bool operator==(const FinderInfo&) const = default;

 private:
  // The platform's public Finder.h.
  static constexpr std::uint32_t kExtensionHidden = 0x0010;
  static constexpr std::uint32_t kInvisible = 0x4000;

  std::uint32_t numberAt(std::size_t offset, std::size_t length) const noexcept {
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < length; ++index) number = number << 8 | bytes_[offset + index];
    return number;
  }
  void setNumberAt(std::size_t offset, std::size_t length, std::uint32_t number) noexcept {
    for (std::size_t index = length; index-- > 0; number >>= 8)
      bytes_[offset + index] = static_cast<std::uint8_t>(number);
  }
  void setFlag(std::uint32_t flag, bool value) noexcept {
    const auto flags = numberAt(8, 2);
    setNumberAt(8, 2, value ? flags | flag : flags & ~flag);
  }

  std::array<std::uint8_t, 32> bytes_{};
};

const Number* numberIn(const Dictionary& attributes, const char* key) {
  const auto* value = attributes.find(key);
  return value ? value->asNumber() : nullptr;
}

std::optional<std::uint32_t> identifierIn(const Dictionary& attributes, const char* key) {
  const auto* number = numberIn(attributes, key);
  return number ? std::optional(number->unsigned32Value()) : std::nullopt;
}

// A flag that isn't mentioned stays as it was.
std::uint32_t finalFlags(const Dictionary& attributes, std::uint32_t before) {
  auto flags = before;
  const auto take = [&](const char* key, std::uint32_t flag) {
    if (const auto* number = numberIn(attributes, key)) flags = number->boolValue() ? flags | flag : flags & ~flag;
  };
  take(NSFileImmutable, file_flags::kUserImmutable);
  take(NSFileAppendOnly, file_flags::kUserAppend);
  return flags;
}

// Unchanged information is not written: an object without any stays without.
ErrorOrNil setFinderInfo(host::ObjectHandle& object, const Dictionary& attributes, const std::string& attribute) {
  const auto* type = numberIn(attributes, NSFileHFSTypeCode);
  const auto* creator = numberIn(attributes, NSFileHFSCreatorCode);
  const auto* hidden = numberIn(attributes, NSFileExtensionHidden);
  if (!type && !creator && !hidden) return std::nullopt;
  const auto before = FinderInfo::of(object, attribute);
  auto info = before;
  if (type) info.setTypeCode(type->unsigned32Value());
  if (creator) info.setCreatorCode(creator->unsigned32Value());
  if (hidden) info.setExtensionHidden(hidden->boolValue());
  return info == before ? std::nullopt : info.writeTo(object, attribute);
}

ErrorOrNil setAllButFlags(host::ObjectHandle& object, const Dictionary& attributes, const std::string& finderInfo) {
  const auto owner = identifierIn(attributes, NSFileOwnerAccountID);
  const auto group = identifierIn(attributes, NSFileGroupOwnerAccountID);
  if (owner || group) {
    if (auto error = object.setOwner(owner, group)) return error;
  }
  if (const auto* permissions = numberIn(attributes, NSFilePosixPermissions)) {
    if (auto error = object.setPermissions(static_cast<std::uint16_t>(permissions->unsigned32Value() & 07777)))
      return error;
  }
  if (auto error = setFinderInfo(object, attributes, finderInfo)) return error;
  const auto* modified = attributes.find(NSFileModificationDate);
  if (const auto* date = modified ? modified->asDate() : nullptr) return object.setTimes(std::nullopt, *date);
  return std::nullopt;
}

}  // namespace

Result<Dictionary> attributesOf(const host::ObjectHandle& object, const std::string& finderInfoAttribute) {
  const auto status = object.status();
  if (!status) return failure(status.error());
  const auto permissions = object.ownPermissions(*status);
  if (!permissions) return failure(permissions.error());
  const auto info = FinderInfo::of(object, finderInfoAttribute);
  Dictionary attributes{{NSFileType, fileTypeText(status->type)},   {NSFileSize, status->size},
                        {NSFileModificationDate, status->modified}, {NSFilePosixPermissions, *permissions},
                        {NSFileOwnerAccountID, status->owner},      {NSFileGroupOwnerAccountID, status->group},
                        {NSFileReferenceCount, status->links},      {NSFileSystemNumber, status->device},
                        {NSFileSystemFileNumber, status->inode},    {NSFileExtensionHidden, info.isExtensionHidden()}};
  if (status->created) attributes.set(NSFileCreationDate, *status->created);
  if (status->flags & kImmutableFlags) attributes.set(NSFileImmutable, true);
  if (status->flags & kAppendFlags) attributes.set(NSFileAppendOnly, true);
  if (info.typeCode() != 0) attributes.set(NSFileHFSTypeCode, info.typeCode());
  if (info.creatorCode() != 0) attributes.set(NSFileHFSCreatorCode, info.creatorCode());
  return attributes;
}

ErrorOrNil setAttributesOf(host::ObjectHandle& object, const Dictionary& attributes,
                           const std::string& finderInfoAttribute) {
  const auto status = object.status();
  if (!status) return status.error();
  const auto cleared = status->flags & ~kClearableFlags;
  if (cleared != status->flags) {
    if (auto error = object.setFlags(cleared)) return error;
  }
  auto error = setAllButFlags(object, attributes, finderInfoAttribute);
  const auto flags = finalFlags(attributes, status->flags);
  if (flags == cleared) return error;
  auto flagError = object.setFlags(flags);
  return error ? error : flagError;
}

ErrorOrNil setHiddenStateOf(host::ObjectHandle& object, bool hidden, const std::string& finderInfoAttribute) {
  const auto before = FinderInfo::of(object, finderInfoAttribute);
  auto info = before;
  info.setInvisible(hidden);
  return info == before ? std::nullopt : info.writeTo(object, finderInfoAttribute);
}

}  // namespace vantrell
