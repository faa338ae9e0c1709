// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "catalogue/QELPrivilegedOperation.h"
#include "catalogue/RequestEnvelope.h"
#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/Uuid.h"
#include "foundation/Value.h"
#include "host/Host.h"

namespace vantrell {

/// Translates a text of the client's tables; the English text is the key and what comes back when there is no entry.
using StringTable = std::function<std::string(const std::string& english)>;

/// The abstract set of operations: the catalogue, and every name and check that derives from it. Shared by the helper
/// and the requesting side. Read-only once made, safe from any thread.
class QELPrivilegedToolOperationSet {
 public:
  using OperationsByIdentifier = std::map<std::string, std::shared_ptr<const QELPrivilegedOperation>, std::less<>>;
  using IdentifiersByCode = std::map<std::uint64_t, std::string>;

  static constexpr std::size_t kKeyPrefixSize = 20;
  static constexpr std::size_t kSaltSize = 4;
  static constexpr double kLongestTokenLife = 30.0;  // seconds
  static constexpr std::uint64_t kUnknownOperationCode = 0x7FFFFFFFFFFFFFFF;

  virtual ~QELPrivilegedToolOperationSet() = default;

  static std::string errorDomain();
  static std::string nameOfAuthorizationRightLocalizationTable();
  static std::string nameOfErrorMessageLocalizationTable();

  /// Looks the template up and puts parameter n in place of each "$n$", n ascending, over the text as it stands by
  /// then: a parameter that itself contains "$2$" is replaced in its turn. Placeholders without a parameter stay.
  static std::string localizedStringForTemplate(const std::string& text, const Array& parameters,
                                                const StringTable& table = {});

  /// A copy whose description and recovery suggestion (and those of the errors beneath it) are in the client's
  /// language, templates filled in. A template without parameters gives no text. An error without user info is returned
  /// as it is.
  static ErrorOrNil localizedErrorForPrivilegedOperationError(const ErrorOrNil& error, const StringTable& table = {});

  const std::string& implementationCode() const noexcept { return implementationCode_; }
  const std::string& implementationVersion() const noexcept { return implementationVersion_; }
  const OperationsByIdentifier& implementedOperations() const noexcept { return implementedOperations_; }
  const IdentifiersByCode& opIdentifiersByCode() const noexcept { return opIdentifiersByCode_; }

  /// The service's name, which is also the bundle identifier.
  std::string serviceIdentifierForHelper() const;
  virtual std::string fileNameForHelper() const;
  std::string nameOfImplementationClass() const;
  std::optional<std::string> authorizationRightNameForOperationWithIdentifier(std::string_view identifier) const;
  /// Nothing for an unknown code.
  std::optional<std::string> selectorForExecutionOfPrivilegedOperationWithCode(std::uint64_t code,
                                                                               bool feedbackOption) const;
  /// kUnknownOperationCode for null or a descriptor that is not of this set.
  std::uint64_t opCodeForOperation(const QELPrivilegedOperation* operation) const;
  /// The descriptor of a code; null when there is none.
  std::shared_ptr<const QELPrivilegedOperation> operationWithCode(std::uint64_t code) const;

  /// 20 bytes that stand for the content of an executable: the SHA-1 over the sections of its first part. Nothing when
  /// the file can't be read as an executable.
  std::optional<Data> keyPrefixBasedOnPath(const std::string& path, host::Host& host) const;
  /// 40 hexadecimal digits as 20 bytes; letters must be lower case. Nothing for another length.
  static std::optional<Data> keyPrefixFromDescriptor(std::string_view descriptor);
  /// Prefix followed by salt; nothing unless they have 20 and 4 bytes.
  std::optional<Data> keyForPrefix(DataView prefix, DataView salt) const;

  /// The requesting side's envelope, made now by this process, with a new operation UUID. Nothing when there are no
  /// parameters, the code is unknown, or a parameter can't stand in a property list.
  std::optional<Data> standaloneDataForConcretePrivilegedOperation(std::uint64_t code,
                                                                   const std::optional<Array>& parameters,
                                                                   host::Host& host) const;

  std::optional<RequestEnvelope> operationDescriptionFromStandaloneData(DataView data) const;

  struct CheckResult {
    unsigned code = 0;         // 0 success, 1 to 8 the first check that failed
    std::optional<Uuid> uuid;  // on success
  };
  /// Whether the envelope describes a request of `pid` for the operation `code` with as many parameters, made within
  /// the last 30 seconds before `now`. The checks in order: 1 parameters or envelope missing, 2 process identifier,
  /// 3 operation code, 4 parameter count, 5 no time, 6 too old or in the future, 7 no operation UUID of 16 bytes, 8 no
  /// UUID can be made of them.
  CheckResult checkPresentRequestFromPID(std::uint64_t pid, std::uint64_t code, const std::optional<Array>& parameters,
                                         const std::optional<RequestEnvelope>& description, Date now) const;

 protected:
  QELPrivilegedToolOperationSet() = default;

  /// Enters one table's rows into both dictionaries; the walk stops before the row with the end code, but always
  /// processes the first row. Rows that yield no descriptor are left out.
  void enterOperations(const StaticOperationDescription* rows, host::SystemLog& systemLog);
  void enterOperation(std::uint64_t code, std::shared_ptr<const QELPrivilegedOperation> operation);

  /// How 16 bytes become an identifier.
  virtual std::optional<Uuid> uuidWithBytes(const Uuid::Bytes& bytes) const { return Uuid(bytes); }

  std::string implementationCode_;
  std::string implementationVersion_;

 private:
  OperationsByIdentifier implementedOperations_;
  IdentifiersByCode opIdentifiersByCode_;
};

}  // namespace vantrell
