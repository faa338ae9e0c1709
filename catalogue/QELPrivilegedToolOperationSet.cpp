// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/QELPrivilegedToolOperationSet.h"

#include <algorithm>
#include <utility>

#include "catalogue/ErrorModel.h"
#include "foundation/PropertyList.h"

namespace vantrell {

std::string QELPrivilegedToolOperationSet::errorDomain() {
  return privilegedOperationErrorDomain();
}
std::string QELPrivilegedToolOperationSet::nameOfAuthorizationRightLocalizationTable() {
  return "PrivilegedOperations";
}
std::string QELPrivilegedToolOperationSet::nameOfErrorMessageLocalizationTable() {
  return "PrivilegedOperationErrors";
}

std::string QELPrivilegedToolOperationSet::serviceIdentifierForHelper() const {
  return vendorDomainPrefix() + ".system.privilegedtool-" + implementationCode_;
}

std::string QELPrivilegedToolOperationSet::fileNameForHelper() const {
  return serviceIdentifierForHelper();
}

std::string QELPrivilegedToolOperationSet::nameOfImplementationClass() const {
  return "QELPrivilegedOperationSetImplementor" + capitalized(implementationCode_);
}

std::optional<std::string> QELPrivilegedToolOperationSet::authorizationRightNameForOperationWithIdentifier(
    std::string_view identifier) const {
  const auto found = implementedOperations_.find(identifier);
  if (found == implementedOperations_.end()) return std::nullopt;
  return found->second->authorizationRightNameForImplementationIdentifier(implementationCode_);
}

std::shared_ptr<const QELPrivilegedOperation> QELPrivilegedToolOperationSet::operationWithCode(
    std::uint64_t code) const {
  const auto identifier = opIdentifiersByCode_.find(code);
  if (identifier == opIdentifiersByCode_.end()) return nullptr;
  const auto operation = implementedOperations_.find(identifier->second);
  return operation == implementedOperations_.end() ? nullptr : operation->second;
}

std::optional<std::string> QELPrivilegedToolOperationSet::selectorForExecutionOfPrivilegedOperationWithCode(
    std::uint64_t code, bool feedbackOption) const {
  const auto operation = operationWithCode(code);
  if (!operation) return std::nullopt;
  return "performOperation" + operation->operationIdentifierForExecutionSelector() +
         "WithArguments:" + (feedbackOption ? "feedbackConnection:" : "");
}

std::uint64_t QELPrivilegedToolOperationSet::opCodeForOperation(const QELPrivilegedOperation* operation) const {
  if (!operation) return kUnknownOperationCode;
  const auto found =
      std::ranges::find(opIdentifiersByCode_, operation->identifier(), &IdentifiersByCode::value_type::second);
  return found == opIdentifiersByCode_.end() ? kUnknownOperationCode : found->first;
}

std::optional<Data> QELPrivilegedToolOperationSet::standaloneDataForConcretePrivilegedOperation(
    std::uint64_t code, const std::optional<Array>& parameters, host::Host& host) const {
  if (!parameters || !opIdentifiersByCode_.contains(code)) return std::nullopt;
  Uuid::Bytes random;
  if (host.cryptography->randomBytes(random)) return std::nullopt;
  const auto uuid = Uuid::fromRandomBytes(random);

  Dictionary envelope{{envelope_key::kVersion, kEnvelopeVersion},
                      {envelope_key::kOperationCode, code},
                      {envelope_key::kSetIdentifier, implementationCode_},
                      {envelope_key::kParameters, *parameters},
                      {envelope_key::kProcessIdentifier, host.currentProcess->identifier()},
                      {envelope_key::kTime, Date::now()},
                      {envelope_key::kOperationUUID, Data(uuid.bytes().begin(), uuid.bytes().end())}};
  auto data = binaryPropertyListFromValue(std::move(envelope));
  if (!data) return std::nullopt;
  return std::move(*data);
}

std::optional<RequestEnvelope> QELPrivilegedToolOperationSet::operationDescriptionFromStandaloneData(
    DataView data) const {
  return RequestEnvelope::fromData(data, implementationCode_);
}

QELPrivilegedToolOperationSet::CheckResult QELPrivilegedToolOperationSet::checkPresentRequestFromPID(
    std::uint64_t pid, std::uint64_t code, const std::optional<Array>& parameters,
    const std::optional<RequestEnvelope>& description, Date now) const {
  if (!parameters || !description) return {.code = 1};
  if (!description->processIdentifier || description->processIdentifier->unsignedValue() != pid) return {.code = 2};
  if (!description->operationCode || description->operationCode->unsignedValue() != code) return {.code = 3};
  if (description->parameterCount != parameters->size()) return {.code = 4};
  if (!description->time) return {.code = 5};
  const double age = now.secondsSince(*description->time);
  if (age < 0.0 || age > kLongestTokenLife) return {.code = 6};
  if (!description->operationUUID) return {.code = 7};
  auto uuid = uuidWithBytes(*description->operationUUID);
  if (!uuid) return {.code = 8};
  return {.code = 0, .uuid = uuid};
}

void QELPrivilegedToolOperationSet::enterOperations(const StaticOperationDescription* rows,
                                                    host::SystemLog& systemLog) {
  const Log log(systemLog);
  const auto* row = rows;
  do {
    enterOperation(row->operationCode, QELPrivilegedOperation::initWithStaticDescription(*row, log));
    ++row;
  } while (row->operationCode != kEndOfCatalogueCode);
}

void QELPrivilegedToolOperationSet::enterOperation(std::uint64_t code,
                                                   std::shared_ptr<const QELPrivilegedOperation> operation) {
  if (!operation) return;
  opIdentifiersByCode_[code] = operation->identifier();
  implementedOperations_[operation->identifier()] = std::move(operation);
}

}  // namespace vantrell
