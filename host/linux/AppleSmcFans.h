// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Data.h"
#include "host/linux/AppleSmcAttributes.h"
#include "host/linux/AppleSmcKeys.h"

namespace vantrell::host {

/// The only values that the `applesmc` driver writes, which it offers per fan, counted from 1:
///
///     fanN_min     minimum speed   "F0Mn", "F1Mn" …   type "fpe2", of which the file takes whole revolutions
///     fanN_output  target speed    "F0Tg", "F1Tg" …   the same
///     fanN_manual  under control   "FS! "             type "ui16", one bit for each fan, the lowest for the first
///
/// Every other key, and a value that a file can't take exactly, is refused as not writable before anything is changed.
class AppleSmcFans {
 public:
  AppleSmcFans(const AppleSmcAttributes& attributes, AppleSmcKeys& keys) : attributes_(attributes), keys_(keys) {}

  /// `key` is what is known of the key, `value` of its size. The bits of "FS! " are written one after the other, only
  /// those that change; when one fails, the earlier ones stay written.
  SmcRefusal write(std::uint32_t code, const AppleSmcKeys::Key& key, DataView value);

 private:
  SmcRefusal writeSpeed(const std::string& attribute, DataView value) const;
  SmcRefusal writeManualBits(DataView value);
  SmcRefusal store(const std::string& attribute, unsigned number) const;

  const AppleSmcAttributes& attributes_;
  AppleSmcKeys& keys_;
};

}  // namespace vantrell::host
