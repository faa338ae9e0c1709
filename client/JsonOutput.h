// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Value.h"

namespace vantrell {

using Json = nlohmann::ordered_json;

/// Text as text, numbers as they are (true and false for booleans; null for reals that are no numbers), data in base
/// 64, dates in ISO 8601, errors as {"domain", "code", "userInfo"}.
Json jsonFromValue(const Value& value);
Json jsonFromDictionary(const Dictionary& dictionary);
Json jsonFromError(const Error& error);

/// {"result": null}, or {"result": {"domain", "code", "userInfo", "description", "recoverySuggestion"}}: the error as
/// it came, and its texts for people (null when there are none).
Json jsonFromResult(const ErrorOrNil& result);

/// In one line, without the final newline.
std::string jsonLine(const Json& json);

}  // namespace vantrell
