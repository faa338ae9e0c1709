// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/Log.h"
#include "foundation/Value.h"
#include "host/SmcDriver.h"
#include "system/SmcCodes.h"
#include "system/SmcFixedPoint.h"
#include "system/SmcValueDecoder.h"

namespace vantrell {

/// The System Management Controller of the computer: its keys, their values decoded by type, and writing of raw values.
/// The instance that a whole process shares comes from system/SmcSharedController.h.
///
/// Every call of the driver has its own connection. Safe from any thread as long as nobody changes `propertyCache`.
class QELSystemManagementController {
 public:
  static constexpr char kClassName[] = "QELSystemManagementController";

  /// More keys than any controller has (a few thousand at most); a greater count is taken for nonsense.
  static constexpr std::uint32_t kMaximumKeyCount = 1 << 16;

  static constexpr std::uint64_t kNoFractionDigits = std::numeric_limits<std::uint64_t>::max();

  static std::uint32_t smcKeyFromString(std::string_view text) { return vantrell::smcKeyFromString(text); }
  static std::string stringFromSMCKey(std::uint32_t code) { return vantrell::stringFromSMCKey(code); }
  static std::string valueDecodingNotImplementedMarker() { return kSmcDecodingNotImplemented; }
  static double divisorForFloatingPointCode(std::uint32_t code) { return divisorForSmcType(code); }
  /// Nothing where no value can be given: system/SmcFixedPoint.h.
  static std::optional<std::uint16_t> getSMCShort(double forDouble, std::string_view usingTypeCode) {
    return smcShortForDouble(forDouble, usingTypeCode);
  }

  /// Asks the controller for its keys; null, with an entry in the default log, when it doesn't answer. `driver` and
  /// `systemLog` must outlive the result.
  static std::unique_ptr<QELSystemManagementController> init(host::SmcDriver& driver, host::SystemLog& systemLog);

  const std::set<std::string>& availableKeys() const noexcept { return availableKeys_; }

  /// Entries by key, as `updateCacheForProperty` makes them. Stays empty: nothing here ever stores one, so every query
  /// reads the controller. Whoever puts entries in gets them back from the queries below.
  Dictionary& propertyCache() noexcept { return propertyCache_; }
  const Dictionary& propertyCache() const noexcept { return propertyCache_; }

  /// Reads a property: {"Type": text, "IsWriteOnly": boolean, "Value": any, "LastAccess": date}, which is not put into
  /// the cache. Nothing for a key that there is not, and, with an entry in the log, when it can't be read.
  ///
  /// The value of a property that can only be written is "<write-only property>"; where its type is known and takes any
  /// size, or is not known, it is what the decoder makes of 255 zero bytes. A value that doesn't fit its type is
  /// "<received N bytes for type 'TYPE': mismatch detected>".
  std::optional<Dictionary> updateCacheForProperty(const std::string& withKey) const;

  /// From a cached entry that is no older than a second, else read afresh. Nothing when there is no such property.
  std::optional<Value> valueForProperty(const std::string& withKey) const;
  /// From a cached entry of any age, else read afresh.
  std::optional<std::string> typeCodeOfProperty(const std::string& withKey) const;
  bool isWriteOnlyProperty(const std::string& withKey) const;

  /// The smallest step of a fixed-point property; -1 for every other one.
  double precisionDeltaOfNumericProperty(const std::string& withKey) const;
  /// Of types "fp…" and "sf…" the low four bits of the last character, so that "fp88" gives 8 but "fp6a" 1; of others,
  /// "sp…" among them, 0. kNoFractionDigits when there is no such property.
  std::uint64_t maximumFractionDigitsOfNumericProperty(const std::string& withKey) const;

  /// The text of "REV "; "<?>" when that is none.
  std::string softwareVersion() const;
  /// "BRANCH (GENERATION)" from "RBr " and "RSvn"; "<?>" when either is missing or of another kind.
  std::string softwareBranchAndBuildGeneration() const;

  /// Writes a value as it stands. False without bytes, for a key that is not four characters long (nothing is asked of
  /// the controller then), when the size is not the key's, and when the controller refuses. Only the low byte of the
  /// length counts: 258 bytes pass for 2, and the first 2 are written.
  bool writeRawBytes(DataView bytes, std::string_view toSMCKey) const;

 private:
  QELSystemManagementController(host::SmcDriver& driver, Log log) : driver_(driver), log_(std::move(log)) {}

  bool readAvailableKeys();
  std::optional<std::uint32_t> keyCount() const;
  const Dictionary* cachedEntry(const std::string& key) const;
  std::optional<Dictionary> entryForProperty(const std::string& key) const;
  bool write(const host::SmcRecord& request) const;

  host::SmcDriver& driver_;
  Log log_;
  std::set<std::string> availableKeys_;
  Dictionary propertyCache_;
};

}  // namespace vantrell
