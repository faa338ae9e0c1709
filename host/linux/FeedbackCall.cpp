// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FeedbackCall.h"

#include "host/linux/MessageHeader.h"
#include "host/linux/ValueWriter.h"
#include "host/linux/WireNames.h"

namespace vantrell::host {

FeedbackCall::FeedbackCall() {
  MarshalledMessage header;
  beginHeader(header, MessageType::MethodCall, kNoReplyExpected);
  addField(header, HeaderField::Path, 'o', kFeedbackPath.text);
  addField(header, HeaderField::Interface, 's', kFeedbackInterface);
  addField(header, HeaderField::Member, 's', kFeedbackMethod);
  addField(header, HeaderField::Signature, 'g', kDictionarySignature);
  endHeader(header);
  header_ = header.bytes();
}

bool FeedbackCall::write(const Dictionary& message, std::uint32_t serial, MarshalledMessage& bytes) const {
  bytes.begin(header_);
  ValueWriter(bytes, Unsendable::Omit).dictionary(message);
  if (bytes.failed()) return false;
  endBody(bytes, header_.size(), serial);
  return true;
}

}  // namespace vantrell::host
