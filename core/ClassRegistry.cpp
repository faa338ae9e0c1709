// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/ClassRegistry.h"

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "core/QELPrivilegedOperationSetImplementorLm4.h"

namespace vantrell {

ClassRegistry ClassRegistry::standard() {
  ClassRegistry registry;
  registry.addPrincipalClass(QELPrivilegedToolOperationSetLM4::kClassName,
                             QELPrivilegedToolOperationSetLM4::privilegedOperationSet);
  registry.addImplementorClass(
      QELPrivilegedOperationSetImplementorLm4::kClassName,
      QELPrivilegedOperationSetImplementor::initToImplementOperationSet<QELPrivilegedOperationSetImplementorLm4>);
  return registry;
}

const ClassRegistry::PrincipalClass* ClassRegistry::principalClass(std::string_view name) const {
  const auto found = principalClasses_.find(name);
  return found == principalClasses_.end() ? nullptr : &found->second;
}

const ClassRegistry::ImplementorClass* ClassRegistry::implementorClass(std::string_view name) const {
  const auto found = implementors_.find(name);
  return found == implementors_.end() ? nullptr : &found->second;
}

}  // namespace vantrell
