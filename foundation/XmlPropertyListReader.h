// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Data.h"
#include "foundation/PropertyList.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {

/// Reads the XML form: one "plist" element with one value. The encodings are those of XML itself (UTF-8, UTF-16) and
/// ISO-8859-1 and US-ASCII. A document type may be named, but nothing is fetched, and what it defines beyond elements
/// is refused: entities because they could grow without bound, attributes because their defaults would be paid for at
/// every element. Attributes are not looked at. Contract and errors are propertyListFromData's.
Result<Value> valueFromXmlPropertyList(DataView data, const PropertyListLimits& limits);

}  // namespace vantrell
