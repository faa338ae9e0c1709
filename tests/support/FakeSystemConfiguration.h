// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/SystemConfiguration.h"

namespace vantrell::tests {

/// A configuration database in memory that notes what it is asked, and fails where it is told to.
class FakeSystemConfiguration final : public host::SystemConfiguration {
 public:
  /// What `failing` may hold, and what `calls` shows, in the order of the calls (those that fail included).
  enum class Call { Open, Lock, Unlock, Set, Remove, FindService, FindProtocol, Enable, Disable, Apply, Commit };

  std::unique_ptr<host::SystemConfigurationSession> open(std::string_view clientName,
                                                         std::string_view identifier) override {
    {
      const std::lock_guard lock(mutex_);
      clientNames.emplace_back(clientName);
    }
    if (!note(Call::Open) || identifier == "." || identifier == ".." ||
        identifier.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
      return nullptr;
    return std::make_unique<Session>(*this, std::string(identifier));
  }

  /// What was committed, "" being the default configuration.
  Dictionary contents(const std::string& identifier = {}) {
    const std::lock_guard lock(mutex_);
    return files_[identifier].contents;
  }
  void setContents(Dictionary contents, const std::string& identifier = {}) {
    const std::lock_guard lock(mutex_);
    files_[identifier].contents = std::move(contents);
    ++files_[identifier].version;
  }

  std::set<Call> failing;
  std::vector<Call> calls;
  std::vector<std::string> clientNames;

 private:
  struct File {
    Dictionary contents;
    int version = 0;
    bool isLocked = false;
  };

  bool note(Call call) {
    const std::lock_guard lock(mutex_);
    calls.push_back(call);
    return !failing.contains(call);
  }

  class Session final : public host::SystemConfigurationSession {
   public:
    Session(FakeSystemConfiguration& database, std::string identifier)
        : database_(database), identifier_(std::move(identifier)) {}
    ~Session() override {
      if (holdsLock_) static_cast<void>(release());
    }

    bool lock(bool wait) override {
      if (!database_.note(Call::Lock) || holdsLock_) return false;
      std::unique_lock lock(database_.mutex_);
      auto& file = database_.files_[identifier_];
      if (!wait && file.isLocked) return false;
      database_.unlocked_.wait(lock, [&] { return !file.isLocked; });
      if (version_ && *version_ != file.version) return false;
      return file.isLocked = holdsLock_ = true;
    }
    bool unlock() override {
      const bool isAllowed = database_.note(Call::Unlock);
      return release() && isAllowed;
    }
    bool setValue(std::string key, Value value) override {
      if (!database_.note(Call::Set)) return false;
      access().set(std::move(key), std::move(value));
      return true;
    }
    bool removeValue(std::string_view key) override { return database_.note(Call::Remove) && access().remove(key); }
    std::unique_ptr<host::NetworkService> networkService(std::string_view identifier) override {
      if (!database_.note(Call::FindService) || !service(identifier)) return nullptr;
      return std::make_unique<Service>(*this, std::string(identifier));
    }
    bool applyChanges() override { return database_.note(Call::Apply); }
    bool commitChanges() override {
      if (!database_.note(Call::Commit) || !holdsLock_) return false;
      const std::lock_guard lock(database_.mutex_);
      auto& file = database_.files_[identifier_];
      if (!version_) return true;
      if (*version_ != file.version) return false;
      file.contents = contents_;
      version_ = ++file.version;
      return true;
    }

   private:
    class Protocol final : public host::NetworkProtocol {
     public:
      Protocol(Session& session, std::string service) : session_(session), service_(std::move(service)) {}
      bool setEnabled(bool enabled) override {
        if (!session_.database_.note(enabled ? Call::Enable : Call::Disable)) return false;
        auto* protocol = session_.protocol(service_);
        if (enabled) protocol->remove("__INACTIVE__");
        if (!enabled) protocol->set("__INACTIVE__", true);
        return true;
      }

     private:
      Session& session_;
      std::string service_;
    };
    class Service final : public host::NetworkService {
     public:
      Service(Session& session, std::string identifier) : session_(session), identifier_(std::move(identifier)) {}
      std::unique_ptr<host::NetworkProtocol> ipv6Protocol() override {
        if (!session_.database_.note(Call::FindProtocol) || !session_.protocol(identifier_)) return nullptr;
        return std::make_unique<Protocol>(session_, identifier_);
      }

     private:
      Session& session_;
      std::string identifier_;
    };

    bool release() {
      const std::lock_guard lock(database_.mutex_);
      if (!std::exchange(holdsLock_, false)) return false;
      database_.files_[identifier_].isLocked = false;
      database_.unlocked_.notify_all();
      return true;
    }
    Dictionary& access() {
      const std::lock_guard lock(database_.mutex_);
      const auto& file = database_.files_[identifier_];
      if (!version_) contents_ = file.contents;
      if (!version_) version_ = file.version;
      return contents_;
    }
    static Dictionary* dictionaryIn(Dictionary* dictionary, std::string_view key) {
      auto* value = dictionary ? dictionary->find(key) : nullptr;
      return value ? value->asDictionary() : nullptr;
    }
    Dictionary* service(std::string_view identifier) {
      return dictionaryIn(dictionaryIn(&access(), "NetworkServices"), identifier);
    }
    Dictionary* protocol(std::string_view service) { return dictionaryIn(this->service(service), "IPv6"); }

    FakeSystemConfiguration& database_;
    std::string identifier_;
    bool holdsLock_ = false;
    std::optional<int> version_;
    Dictionary contents_;
  };

  std::mutex mutex_;
  std::condition_variable unlocked_;
  std::map<std::string, File, std::less<>> files_;
};

}  // namespace vantrell::tests
