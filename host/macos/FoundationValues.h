// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#import <Foundation/Foundation.h>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Value.h"

namespace vantrell::host {

/// Foundation's objects and this system's values, each as the other. CoreFoundation's property-list types are the same
/// objects (toll-free bridging). For Objective-C++ sources only.
///
/// A moment is a double there, in seconds since 2001: near the present it keeps about a tenth of a microsecond.

/// Text that is not UTF-8 has replacement characters. Never nil.
NSString* stringFrom(std::string_view text);
/// A surrogate without its other half becomes a replacement character; nil gives empty text.
std::string textFrom(NSString* string);

NSData* dataFrom(DataView bytes);
/// Nil gives no bytes.
Data bytesFrom(NSData* data);

/// What becomes of a value that has no object (the null placeholder, and collections and errors nested deeper than a
/// message may be) inside another one.
enum class WithoutObject : std::uint8_t {
  Omit,    // left out: the rest arrives
  Refuse,  // the whole has no object either: nothing is changed on its way
};

/// A value's object; an error's is an NSError. Nil for what has no object.
id objectFrom(const Value& value, WithoutObject treatment = WithoutObject::Refuse);
/// The collection itself is no level of nesting here. Nil only with `Refuse`.
NSArray* arrayFrom(const Array& array, WithoutObject treatment);
NSDictionary* dictionaryFrom(const Dictionary& dictionary, WithoutObject treatment);
/// What has no object is left out of the user info.
NSError* errorFrom(const Error& error);

/// An object's value; NSNull's is the placeholder. Nothing for an object of any other class, alone or in a collection,
/// for a dictionary with a key that is no text, and for what is nested deeper than a message may be, or would hold more
/// values or bytes (an object may stand in a thousand places and be small all the same).
std::optional<Value> valueFrom(id object);
/// Nothing for nil, too. The collection itself is no level of nesting here.
std::optional<Array> arrayFrom(NSArray* array);
std::optional<Dictionary> dictionaryFrom(NSDictionary* dictionary);
/// User info that has no value is left out; none at all reads as none given.
Error errorFrom(NSError* error);

}  // namespace vantrell::host
