// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacSystemConfiguration.h"

#include <utility>

#include <SystemConfiguration/SystemConfiguration.h>

#include "foundation/PropertyList.h"
#include "host/macos/CoreFoundationRef.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/PropertyListObjects.h"

namespace vantrell::host {
namespace {

/// Identifiers of services are parts of paths in the configuration.
bool canBeService(std::string_view identifier) {
  return !identifier.empty() && identifier.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

class Ipv6Protocol final : public NetworkProtocol {
 public:
  explicit Ipv6Protocol(CoreFoundationRef<SCNetworkProtocolRef> protocol) : protocol_(std::move(protocol)) {}

  bool setEnabled(bool enabled) override { return SCNetworkProtocolSetEnabled(protocol_.get(), enabled); }

 private:
  const CoreFoundationRef<SCNetworkProtocolRef> protocol_;
};

class ConfiguredService final : public NetworkService {
 public:
  explicit ConfiguredService(CoreFoundationRef<SCNetworkServiceRef> service) : service_(std::move(service)) {}

  std::unique_ptr<NetworkProtocol> ipv6Protocol() override {
    CoreFoundationRef protocol(SCNetworkServiceCopyProtocol(service_.get(), kSCNetworkProtocolTypeIPv6));
    if (!protocol) return nullptr;
    return std::make_unique<Ipv6Protocol>(std::move(protocol));
  }

 private:
  const CoreFoundationRef<SCNetworkServiceRef> service_;
};

class PreferencesSession final : public SystemConfigurationSession {
 public:
  explicit PreferencesSession(CoreFoundationRef<SCPreferencesRef> session) : session_(std::move(session)) {}

  bool lock(bool wait) override {
    if (isLocked_) return false;
    isLocked_ = SCPreferencesLock(session_.get(), wait);
    return isLocked_;
  }

  bool unlock() override {
    if (!isLocked_ || !SCPreferencesUnlock(session_.get())) return false;
    isLocked_ = false;
    return true;
  }

  bool setValue(std::string key, Value value) override {
    @autoreleasepool {
      // By way of XML, which the platform writes: texts that it has no way to hold would be stored all the same.
      const auto object = objectFromPropertyList(xmlPropertyListFromValue(value));
      const auto name = bridgedRef<CFStringRef>(stringFrom(key));
      return name && object && SCPreferencesSetValue(session_.get(), name.get(), object.get());
    }
  }

  bool removeValue(std::string_view key) override {
    @autoreleasepool {
      const auto name = bridgedRef<CFStringRef>(stringFrom(key));
      return name && SCPreferencesRemoveValue(session_.get(), name.get());
    }
  }

  std::unique_ptr<NetworkService> networkService(std::string_view identifier) override {
    @autoreleasepool {
      if (!canBeService(identifier)) return nullptr;
      const auto name = bridgedRef<CFStringRef>(stringFrom(identifier));
      CoreFoundationRef service(SCNetworkServiceCopy(session_.get(), name.get()));
      if (!service) return nullptr;
      return std::make_unique<ConfiguredService>(std::move(service));
    }
  }

  bool applyChanges() override { return SCPreferencesApplyChanges(session_.get()); }

  // The platform would take the lock by itself.
  bool commitChanges() override { return isLocked_ && SCPreferencesCommitChanges(session_.get()); }

 private:
  const CoreFoundationRef<SCPreferencesRef> session_;
  bool isLocked_ = false;
};

}  // namespace

std::unique_ptr<SystemConfigurationSession> MacSystemConfiguration::open(std::string_view clientName,
                                                                         std::string_view identifier) {
  @autoreleasepool {
    if (identifier.find('\0') != std::string_view::npos) return nullptr;
    const auto name = bridgedRef<CFStringRef>(stringFrom(clientName));
    const auto file = bridgedRef<CFStringRef>(identifier.empty() ? nil : stringFrom(identifier));
    CoreFoundationRef session(SCPreferencesCreate(kCFAllocatorDefault, name.get(), file.get()));
    if (!session) return nullptr;
    return std::make_unique<PreferencesSession>(std::move(session));
  }
}

}  // namespace vantrell::host
