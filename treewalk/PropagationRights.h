// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

namespace vantrell {

/// The option bits of a propagation, as clients send them.
namespace propagation_option {
inline constexpr std::uint8_t kAccessControlList = 0x01;
inline constexpr std::uint8_t kOthersMode = 0x02;
inline constexpr std::uint8_t kGroupMode = 0x04;
inline constexpr std::uint8_t kOwnerMode = 0x08;
inline constexpr std::uint8_t kGroup = 0x10;
inline constexpr std::uint8_t kOwner = 0x20;
inline constexpr std::uint8_t kSkipLocked = 0x40;
/// Counts only where kAccessControlList is not set.
inline constexpr std::uint8_t kReinheritance = 0x80;
}  // namespace propagation_option

/// What every object of a tree is given beside an access control list.
struct PropagationRights {
  std::optional<std::uint32_t> owner;
  std::optional<std::uint32_t> group;
  bool ownerMode = false;
  bool groupMode = false;
  bool othersMode = false;
  std::uint16_t mode = 0;  // which these three classes are copied from
  bool skipsLocked = false;

  bool changesOwner() const noexcept { return owner || group; }
  bool changesMode() const noexcept { return ownerMode || groupMode || othersMode; }
};

}  // namespace vantrell
