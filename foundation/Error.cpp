// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Error.h"

#include "foundation/Value.h"

namespace vantrell {

struct Error::Contents {
  std::string domain;
  std::int64_t code;
  std::optional<Dictionary> userInfo;
};

Error::Error(std::string domain, std::int64_t code)
    : contents_(std::make_shared<const Contents>(Contents{std::move(domain), code, std::nullopt})) {}

Error::Error(std::string domain, std::int64_t code, Dictionary userInfo)
    : contents_(std::make_shared<const Contents>(Contents{std::move(domain), code, std::move(userInfo)})) {}

Error Error::posix(std::int64_t code) {
  return {std::string(kPosixErrorDomain), code};
}

const std::string& Error::domain() const noexcept {
  return contents_->domain;
}
std::int64_t Error::code() const noexcept {
  return contents_->code;
}
bool Error::hasUserInfo() const noexcept {
  return contents_->userInfo.has_value();
}
bool Error::isPosix() const noexcept {
  return contents_->domain == kPosixErrorDomain;
}

const Dictionary& Error::userInfo() const noexcept {
  static const Dictionary kEmpty;
  return contents_->userInfo ? *contents_->userInfo : kEmpty;
}

bool Error::operator==(const Error& other) const {
  return contents_ == other.contents_ || (code() == other.code() && domain() == other.domain() &&
                                          hasUserInfo() == other.hasUserInfo() && userInfo() == other.userInfo());
}

}  // namespace vantrell
