// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/RequestEnvelope.h"

#include <algorithm>

#include "foundation/BinaryPropertyListView.h"
#include "foundation/PropertyList.h"

namespace vantrell {

namespace {

// A token travels in one message, so no envelope is longer than the longest message of any transport.
constexpr PropertyListLimits kEnvelopeLimits = {.maximumSize = std::size_t{128} << 20};

std::optional<Uuid::Bytes> uuidBytes(DataView data) {
  if (data.size() != Uuid::kSize) return std::nullopt;
  Uuid::Bytes bytes;
  std::ranges::copy(data, bytes.begin());
  return bytes;
}

std::optional<RequestEnvelope> fromBinary(DataView data, std::string_view setIdentifier) {
  const auto list = BinaryPropertyListView::fromData(data, kEnvelopeLimits);
  if (!list) return std::nullopt;
  using Node = BinaryPropertyListView::Node;
  const Node root = list->root();
  if (root.kind() != Node::Kind::Dictionary) return std::nullopt;

  const auto version = root.find(envelope_key::kVersion);
  if (!version || !(version->isTextEqualTo(kEnvelopeVersion) || version->isTextEqualTo(kOlderEnvelopeVersion))) {
    return std::nullopt;
  }
  const auto set = root.find(envelope_key::kSetIdentifier);
  if (!set || !set->isTextEqualTo(setIdentifier)) return std::nullopt;

  RequestEnvelope envelope;
  if (const auto node = root.find(envelope_key::kProcessIdentifier)) envelope.processIdentifier = node->asNumber();
  if (const auto node = root.find(envelope_key::kOperationCode)) envelope.operationCode = node->asNumber();
  if (const auto node = root.find(envelope_key::kParameters); node && node->kind() == Node::Kind::Array) {
    envelope.parameterCount = node->count();
  }
  if (const auto node = root.find(envelope_key::kTime)) envelope.time = node->asDate();
  if (const auto node = root.find(envelope_key::kOperationUUID)) {
    if (const auto bytes = node->asData()) envelope.operationUUID = uuidBytes(*bytes);
  }
  return envelope;
}

std::optional<RequestEnvelope> fromOtherFormat(DataView data, std::string_view setIdentifier) {
  const auto list = propertyListFromData(data);
  if (!list) return std::nullopt;
  const auto* root = list->root.asDictionary();
  if (!root) return std::nullopt;

  const auto text = [&](const char* key) -> const std::string* {
    const auto* value = root->find(key);
    return value ? value->asString() : nullptr;
  };
  const auto* version = text(envelope_key::kVersion);
  if (!version || (*version != kEnvelopeVersion && *version != kOlderEnvelopeVersion)) return std::nullopt;
  const auto* set = text(envelope_key::kSetIdentifier);
  if (!set || *set != setIdentifier) return std::nullopt;

  RequestEnvelope envelope;
  const auto number = [&](const char* key) -> std::optional<Number> {
    const auto* value = root->find(key);
    const auto* content = value ? value->asNumber() : nullptr;
    return content ? std::optional(*content) : std::nullopt;
  };
  envelope.processIdentifier = number(envelope_key::kProcessIdentifier);
  envelope.operationCode = number(envelope_key::kOperationCode);
  if (const auto* value = root->find(envelope_key::kParameters); value && value->asArray()) {
    envelope.parameterCount = value->asArray()->size();
  }
  if (const auto* value = root->find(envelope_key::kTime); value && value->asDate()) envelope.time = *value->asDate();
  if (const auto* value = root->find(envelope_key::kOperationUUID); value && value->asData()) {
    envelope.operationUUID = uuidBytes(*value->asData());
  }
  return envelope;
}

}  // namespace

std::optional<RequestEnvelope> RequestEnvelope::fromData(DataView data, std::string_view setIdentifier) {
  return textOf(data).starts_with("bplist") ? fromBinary(data, setIdentifier) : fromOtherFormat(data, setIdentifier);
}

}  // namespace vantrell
