// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/RunCommand.h"

#include <chrono>
#include <memory>
#include <ostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "client/ArgumentReader.h"
#include "client/FeedbackPrinter.h"
#include "client/InterruptReaction.h"
#include "client/JsonOutput.h"
#include "client/PrivilegedToolClient.h"
#include "client/ResultPrinter.h"
#include "foundation/PosixCodes.h"
#include "host/InterruptWatcher.h"

namespace vantrell {

namespace {

constexpr std::uint64_t kPerformUninstall = 9995;
constexpr std::chrono::seconds kPatienceForHelperExit{5};

Result<std::unique_ptr<PrivilegedToolClient>> connectedClient(const CommandContext& context,
                                                              const ConnectionOptions& options) {
  auto location = locateHelper(options, context.operations, context.host);
  if (!location) return failure(location.error());
  return PrivilegedToolClient::connect(std::move(*location), context.operations, context.host);
}

/// Unregisters, and gives a helper of this command's own the time to end by itself.
void leave(PrivilegedToolClient& client) {
  static_cast<void>(client.unregisterClient());
  static_cast<void>(client.waitForHelperExit(kPatienceForHelperExit));
}

/// An uninstalled service ends without an answer, once the two files are gone.
bool isUninstalled(const CommandContext& context, std::uint64_t code, const Array& arguments, const Error& error) {
  if (code != kPerformUninstall || !error.isPosix() || arguments.size() != 3) return false;
  for (const auto index : {1, 2}) {
    const auto* path = arguments[index].asString();
    if (!path) return false;
    const auto status = context.host.fileSystem->status(*path, host::FollowLinks::No);
    if (status || !status.error().isPosix(posix::kNoEntry)) return false;
  }
  return true;
}

ExitStatus performOperation(const CommandContext& context, PrivilegedToolClient& client, std::uint64_t code,
                            const Array& arguments, OperationCancellation& cancellation) {
  if (const auto error = client.registerClient()) {
    context.complain(*error);
    return ExitStatus::NoConnection;
  }
  FeedbackPrinter printer(context.out, context.err, context.terminal,
                          {.json = context.json, .progress = context.progress});
  const auto answer = client.perform(
      code, arguments,
      [&](const Dictionary& message) {
        printer.print(message);
        // Nobody reads on: what is found from now on would be lost.
        if (printer.hasFailed()) cancellation.request();
      },
      &cancellation);
  printer.finish();
  if (!answer && !isUninstalled(context, code, arguments, answer.error())) {
    context.complain(answer.error());
    return ExitStatus::NoConnection;
  }
  const auto status = printResult(context, answer ? *answer : std::nullopt);
  return status == ExitStatus::Success && !context.out ? ExitStatus::Failure : status;
}

}  // namespace

ExitStatus runOperation(const CommandContext& context, const ConnectionOptions& connection,
                        const std::string& identifier, std::span<const std::string> words) {
  const auto found = context.operations.implementedOperations().find(identifier);
  if (found == context.operations.implementedOperations().end()) {
    context.complain("There is no operation \"" + identifier + "\". The command \"list\" shows those that there are.");
    return ExitStatus::Usage;
  }
  const auto& operation = *found->second;
  const auto arguments = readArguments(operation, words, *context.host.fileSystem);
  if (!arguments) {
    context.complain(arguments.error());
    return ExitStatus::Usage;
  }

  InterruptReaction reaction(context);
  const auto watcher = host::makeInterruptWatcher([&] { reaction.interrupt(); });
  auto connected = connectedClient(context, connection);
  if (!connected) {
    context.complain(connected.error());
    return ExitStatus::NoConnection;
  }
  const std::shared_ptr<PrivilegedToolClient> client = std::move(*connected);
  reaction.setClient(client);
  const auto status = performOperation(context, *client, context.operations.opCodeForOperation(&operation), *arguments,
                                       reaction.cancellation());
  leave(*client);
  reaction.setClient(nullptr);
  return status;
}

ExitStatus printServiceVersion(const CommandContext& context, const ConnectionOptions& connection) {
  auto client = connectedClient(context, connection);
  if (!client) {
    context.complain(client.error());
    return ExitStatus::NoConnection;
  }
  const auto version = (*client)->versionString();
  if (!version) {
    context.complain(version.error());
    return ExitStatus::NoConnection;
  }
  if (context.json) {
    context.out << jsonLine(Json{{"version", *version}}) << std::endl;
  } else {
    context.out << *version << std::endl;
  }
  // The question needs no registration, but a service that was started for it ends with its last client.
  if (!(*client)->registerClient()) leave(**client);
  return context.out ? ExitStatus::Success : ExitStatus::Failure;
}

}  // namespace vantrell
