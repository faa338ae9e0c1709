// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "core/QELPrivilegedOperationSetImplementor.h"

namespace vantrell {

/// The classes that are found by name: principal classes (operation sets), named by the executable's information list,
/// and implementors, named by the operation set.
class ClassRegistry {
 public:
  using PrincipalClass = std::function<const QELPrivilegedToolOperationSet&(host::SystemLog&)>;
  using ImplementorClass = std::function<std::unique_ptr<QELPrivilegedOperationSetImplementor>(
      const QELPrivilegedToolOperationSet* operationSet, QELPrivilegedTool* forTool)>;

  /// The classes of this system.
  static ClassRegistry standard();

  void addPrincipalClass(std::string name, PrincipalClass make) {
    principalClasses_[std::move(name)] = std::move(make);
  }
  void addImplementorClass(std::string name, ImplementorClass make) {
    implementors_[std::move(name)] = std::move(make);
  }

  /// Null for an unknown name.
  const PrincipalClass* principalClass(std::string_view name) const;
  const ImplementorClass* implementorClass(std::string_view name) const;

 private:
  std::map<std::string, PrincipalClass, std::less<>> principalClasses_;
  std::map<std::string, ImplementorClass, std::less<>> implementors_;
};

}  // namespace vantrell
