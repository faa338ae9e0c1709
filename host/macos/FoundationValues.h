// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Value.h"

namespace vantrell::host {

/// Foundation's objects and this system's values, each as the other. CoreFoundation's property-list types are the same
/// objects (toll-free bridging). For Objective-C++ sources only.

/// Text that is not UTF-8 has replacement characters.
NSString* stringFrom(std::string_view text);
std::string textFrom(NSString* string);

NSData* dataFrom(DataView bytes);
Data bytesFrom(NSData* data);

/// A value's object; an error's is an NSError. Nil for what has no object.
id objectFrom(const Value& value);
/// An object's value. Nothing for an object of any other class, alone or in a collection, for a dictionary with a key
/// that is no text, and for collections nested deeper than a message may be.
std::optional<Value> valueFrom(id object);

NSError* errorFrom(const Error& error);
/// User info that has no value is left out.
Error errorFrom(NSError* error);

}  // namespace vantrell::host
