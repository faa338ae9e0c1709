// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/CaseInsensitiveOrder.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "foundation/Unicode.h"

namespace vantrell {
namespace {

/// Capitals from `first` to `last`, each so far before its small letter; with a step of 2, capitals and small letters
/// take turns.
struct CapitalRange {
  char32_t first;
  char32_t last;
  char32_t toSmall;
  char32_t step = 1;
};

// From the Unicode character database's simple case foldings (CaseFolding.txt, statuses C and S).
constexpr std::array kCapitals = {
    CapitalRange{0x0041, 0x005A, 32},                                        // Latin
    CapitalRange{0x00C0, 0x00D6, 32},                                        // Latin-1, without the multiplication sign
    CapitalRange{0x00D8, 0x00DE, 32},   CapitalRange{0x0100, 0x012E, 1, 2},  // Latin Extended-A
    CapitalRange{0x0132, 0x0136, 1, 2}, CapitalRange{0x0139, 0x0147, 1, 2},
    CapitalRange{0x014A, 0x0176, 1, 2}, CapitalRange{0x0179, 0x017D, 1, 2},
    CapitalRange{0x0388, 0x038A, 37},                                      // Greek with tonos
    CapitalRange{0x0391, 0x03A1, 32},                                      // Greek
    CapitalRange{0x03A3, 0x03AB, 32},   CapitalRange{0x0400, 0x040F, 80},  // Cyrillic
    CapitalRange{0x0410, 0x042F, 32},   CapitalRange{0x0460, 0x0480, 1, 2},
    CapitalRange{0x048A, 0x04BE, 1, 2}, CapitalRange{0x04C1, 0x04CD, 1, 2},
    CapitalRange{0x04D0, 0x052E, 1, 2}, CapitalRange{0x0531, 0x0556, 48},  // Armenian
    CapitalRange{0x1E00, 0x1E94, 1, 2},                                    // Latin Extended Additional
    CapitalRange{0x1EA0, 0x1EFE, 1, 2}, CapitalRange{0xFF21, 0xFF3A, 32},  // full-width Latin
};

char32_t folded(char32_t character) {
  switch (character) {
    case 0x00B5:  // micro sign
      return 0x03BC;
    case 0x0178:  // y with diaeresis
      return 0x00FF;
    case 0x017F:  // long s
      return 's';
    case 0x0386:  // alpha with tonos
      return 0x03AC;
    case 0x038C:  // omicron with tonos
      return 0x03CC;
    case 0x038E:  // upsilon with tonos
    case 0x038F:  // omega with tonos
      return character + 63;
    case 0x03C2:  // sigma at the end of a word
      return 0x03C3;
    case 0x04C0:  // palochka
      return 0x04CF;
    case 0x1E9E:  // sharp s
      return 0x00DF;
    default:
      break;
  }
  const auto* after = std::ranges::upper_bound(kCapitals, character, {}, &CapitalRange::first);
  if (after == kCapitals.begin()) return character;
  const auto& range = *std::prev(after);
  const bool isCapital = character <= range.last && (character - range.first) % range.step == 0;
  return isCapital ? character + range.toSmall : character;
}

char32_t takeFolded(std::string_view& text) {
  const auto character = decodeUtf8(text);
  text.remove_prefix(character.length);
  return folded(character.codePoint);
}

}  // namespace

std::weak_ordering caseInsensitiveOrder(std::string_view one, std::string_view other) {
  while (!one.empty() && !other.empty()) {
    const auto order = takeFolded(one) <=> takeFolded(other);
    if (order != std::weak_ordering::equivalent) return order;
  }
  return other.empty() <=> one.empty();
}

}  // namespace vantrell
