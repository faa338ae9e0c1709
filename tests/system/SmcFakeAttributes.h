// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/PosixCodes.h"
#include "host/linux/AppleSmcAttributes.h"

namespace vantrell::tests {

/// A key behind the kernel's driver. A type of three characters is printed as one that ends in a zero byte.
struct FakeSmcKey {
  std::string name;
  std::string type;
  std::string value;
  bool isReadable = true;
};

/// The controller behind a FakeSmcAttributes; outlives the driver under test, so that a test can look into it.
struct FakeAppleSmc {
  std::vector<FakeSmcKey> keys;  // "#KEY" is one of them, as on every controller
  unsigned fans = 2;
  bool exists = true;
  bool isRoot = true;
  std::size_t selected = 0;
  std::optional<std::string> keyCount;            // what "key_count" says instead of the truth
  std::map<std::string, std::int64_t> failures;   // attribute -> POSIX error of reading or writing it
  std::function<void(const std::string&)> after;  // called after each access, with the attribute's name
  std::vector<std::string> writes;                // "attribute=text"
  std::mutex lock;

  FakeSmcKey* find(const std::string& name) {
    for (auto& key : keys) {
      if (key.name == name) return &key;
    }
    return nullptr;
  }
};

/// Attribute files that behave as the `applesmc` driver's do: which key they show depends on the index that was stored
/// last, and what is stored in a fan's file ends up in that fan's key.
class FakeSmcAttributes final : public host::AppleSmcAttributes {
 public:
  explicit FakeSmcAttributes(FakeAppleSmc& smc) : smc_(smc) {}

  bool exist() const override { return smc_.exists; }

  Result<std::string> read(const std::string& name) const override {
    const std::lock_guard guard(smc_.lock);
    auto content = contentOf(name);
    if (smc_.after) smc_.after(name);
    return content;
  }

  ErrorOrNil write(const std::string& name, std::string_view text) const override {
    const std::lock_guard guard(smc_.lock);
    smc_.writes.push_back(name + "=" + std::string(text));
    auto error = store(name, std::stoul(std::string(text)));
    if (smc_.after) smc_.after(name);
    return error;
  }

 private:
  Result<std::string> contentOf(const std::string& name) const {
    if (const auto failure = smc_.failures.find(name); failure != smc_.failures.end()) {
      return posixFailure(failure->second);
    }
    const auto& key = smc_.keys.at(smc_.selected);
    if (name == "key_count") return smc_.keyCount.value_or(std::to_string(smc_.keys.size()) + "\n");
    if (name == "key_at_index") return std::to_string(smc_.selected) + "\n";
    if (name == "key_at_index_name") return key.name + "\n";
    if (name == "key_at_index_type") return key.type + "\n";
    if (name == "key_at_index_data_length") return std::to_string(key.value.size()) + "\n";
    if (name == "key_at_index_data") {
      if (!key.isReadable) return posixFailure(posix::kInputOutput);
      return key.value;
    }
    if (const auto fan = fanOf(name, "_manual")) {
      return std::string((bitsOfFans() >> *fan & 1) != 0 ? "1\n" : "0\n");
    }
    return posixFailure(posix::kNoEntry);
  }

  ErrorOrNil store(const std::string& name, unsigned long number) const {
    if (const auto failure = smc_.failures.find(name); failure != smc_.failures.end()) {
      return Error::posix(failure->second);
    }
    if (name == "key_at_index") {
      if (!smc_.isRoot) return Error::posix(posix::kAccessDenied);
      if (number >= smc_.keys.size()) return Error::posix(posix::kInvalidArgument);
      smc_.selected = number;
      return std::nullopt;
    }
    if (const auto fan = fanOf(name, "_min")) return storeSpeed("F" + std::to_string(*fan) + "Mn", number);
    if (const auto fan = fanOf(name, "_output")) return storeSpeed("F" + std::to_string(*fan) + "Tg", number);
    if (const auto fan = fanOf(name, "_manual")) {
      const unsigned mask = 1U << *fan;
      return storeShort("FS! ", number != 0 ? bitsOfFans() | mask : bitsOfFans() & ~mask);
    }
    return Error::posix(posix::kNoEntry);
  }

  ErrorOrNil storeSpeed(const std::string& key, unsigned long speed) const {
    if (speed >= 0x4000) return Error::posix(posix::kInvalidArgument);
    return storeShort(key, static_cast<unsigned>(speed << 2));
  }
  ErrorOrNil storeShort(const std::string& name, unsigned number) const {
    auto* key = smc_.find(name);
    if (!key) return Error::posix(posix::kInputOutput);
    key->value = {static_cast<char>(number >> 8), static_cast<char>(number)};
    return std::nullopt;
  }
  unsigned bitsOfFans() const {
    const auto* key = smc_.find("FS! ");
    if (!key || key->value.size() != 2) return 0;
    return static_cast<unsigned>(static_cast<unsigned char>(key->value[0])) << 8 |
           static_cast<unsigned char>(key->value[1]);
  }
  /// The fan, counted from 0, whose attribute `name` is; the files count from 1.
  std::optional<unsigned> fanOf(const std::string& name, const std::string& what) const {
    for (unsigned fan = 0; fan < smc_.fans; ++fan) {
      if (name == "fan" + std::to_string(fan + 1) + what) return fan;
    }
    return std::nullopt;
  }

  FakeAppleSmc& smc_;
};

}  // namespace vantrell::tests
