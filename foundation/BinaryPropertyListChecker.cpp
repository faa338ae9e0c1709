// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BinaryPropertyListChecker.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/PropertyList.h"
#include "foundation/Unicode.h"

namespace vantrell {

namespace {

constexpr std::size_t kSmall = 256;

// Of an object: not seen, in work (met again, it contains itself), or checked, with its height: 0 for what is no
// container, else one more than that of its highest element.
using State = std::uint16_t;
constexpr State kUnseen = 0;
constexpr State kInWork = 0xFFFF;
constexpr State checked(std::size_t height) noexcept {
  return static_cast<State>(height + 1);
}
constexpr std::size_t heightOf(State state) noexcept {
  return state - 1u;
}
static_assert(kDeepestPropertyList < kInWork - 1, "heights must fit the state of an object");

// A container in work.
struct Frame {
  std::uint64_t object;
  std::uint64_t references;  // position
  std::uint64_t next;        // the reference to look at
  std::uint64_t keys;        // references below this one are keys
  std::uint64_t count;       // references
  std::size_t height;        // of the highest element yet
};

/// A depth-first walk with a stack of its own. Every step answers nullptr or what is wrong.
class BinaryPropertyListChecker {
 public:
  BinaryPropertyListChecker(const BinaryPropertyListLayout& layout, std::size_t size, std::size_t maximumDepth,
                            std::span<State> states, std::span<Frame> frames) noexcept
      : layout_(layout), extentLeft_(size), maximumDepth_(maximumDepth), states_(states), frames_(frames) {}

  const char* run() noexcept {
    if (const char* problem = visit(layout_.topObject, false)) return problem;
    while (depth_ > 0) {
      Frame& frame = frames_[depth_ - 1];
      if (frame.next < frame.count) {
        const bool isKey = frame.next < frame.keys;
        const std::uint64_t object = layout_.referenceAt(frame.references, frame.next++);
        if (const char* problem = visit(object, isKey)) return problem;
      } else {
        const std::size_t height = frame.height + 1;
        states_[frame.object] = checked(height);
        --depth_;
        if (const char* problem = noteHeight(height)) return problem;
      }
    }
    return nullptr;
  }

 private:
  const char* visit(std::uint64_t object, bool asKey) noexcept {
    if (object >= layout_.objectCount) return "a reference to no object";
    return states_[object] == kUnseen ? visitFirst(object, asKey) : visitAgain(object, asKey);
  }

  const char* visitFirst(std::uint64_t number, bool asKey) noexcept {
    const std::uint64_t offset = layout_.offsetOf(number);
    BinaryPropertyListObject object;
    if (!layout_.objectAt(offset, object)) return "an object that is malformed or lies outside the list";
    const std::uint64_t extent = object.end - offset;
    if (extent > extentLeft_) return "objects that overlap";
    extentLeft_ -= extent;
    if (asKey && !object.isText()) return "a key that is no text";
    if (object.isContainer()) return open(number, object);
    states_[number] = checked(0);
    const auto contents = layout_.contentsOf(object);
    if (object.kind == BinaryPropertyListKind::AsciiText && !isAscii(contents)) return "a text that is not ASCII";
    if (object.kind == BinaryPropertyListKind::Number && contents.size() == 16) return problemOfWideInteger(contents);
    if (object.kind == BinaryPropertyListKind::Uid) return problemOfUid(contents);
    return nullptr;
  }

  const char* open(std::uint64_t number, const BinaryPropertyListObject& object) noexcept {
    if (depth_ == maximumDepth_) return "nested too deeply";
    states_[number] = kInWork;
    const bool isDictionary = object.kind == BinaryPropertyListKind::Dictionary;
    frames_[depth_++] = {.object = number,
                         .references = object.contents,
                         .next = 0,
                         .keys = isDictionary ? object.count : 0,
                         .count = isDictionary ? 2 * object.count : object.count,
                         .height = 0};
    return nullptr;
  }

  const char* visitAgain(std::uint64_t number, bool asKey) noexcept {
    if (states_[number] == kInWork) return "a container that contains itself";
    BinaryPropertyListObject object;
    if (asKey && !(layout_.objectAt(layout_.offsetOf(number), object) && object.isText())) {
      return "a key that is no text";
    }
    return noteHeight(heightOf(states_[number]));
  }

  // An element of the container in work has this height.
  const char* noteHeight(std::size_t height) noexcept {
    if (depth_ + height > maximumDepth_) return "nested too deeply";
    if (depth_ > 0) frames_[depth_ - 1].height = std::max(frames_[depth_ - 1].height, height);
    return nullptr;
  }

  static const char* problemOfWideInteger(DataView contents) noexcept {
    const auto high = BinaryPropertyListLayout::bigEndian(contents.data(), 8);
    const bool negative = contents[8] >= 0x80;
    return high == 0 || (high == ~std::uint64_t{0} && negative) ? nullptr : "an integer of more than 64 bits";
  }

  static const char* problemOfUid(DataView contents) noexcept {
    const auto uid = BinaryPropertyListLayout::bigEndian(contents.data(), static_cast<unsigned>(contents.size()));
    return uid <= 0xFFFFFFFF ? nullptr : "a UID of more than 32 bits";
  }

  const BinaryPropertyListLayout layout_;
  std::uint64_t extentLeft_;
  std::size_t maximumDepth_;
  std::span<State> states_;
  std::span<Frame> frames_;
  std::size_t depth_ = 0;
};

}  // namespace

const char* problemOfBinaryPropertyList(const BinaryPropertyListLayout& layout, std::size_t size,
                                        std::size_t maximumDepth) {
  maximumDepth = std::min(maximumDepth, kDeepestPropertyList);
  if (layout.objectCount <= kSmall) {
    std::array<State, kSmall> states;
    std::array<Frame, kSmall> frames;  // as deep as it gets: no object is in work twice
    const std::span used(states.data(), static_cast<std::size_t>(layout.objectCount));
    std::ranges::fill(used, kUnseen);
    return BinaryPropertyListChecker(layout, size, maximumDepth, used, frames).run();
  }
  std::vector<State> states(static_cast<std::size_t>(layout.objectCount), kUnseen);
  std::vector<Frame> frames(maximumDepth);
  return BinaryPropertyListChecker(layout, size, maximumDepth, states, frames).run();
}

}  // namespace vantrell
