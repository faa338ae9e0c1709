// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The privileged helper. Started on demand as root by the service manager; serves one message protocol to registered
// clients and ends when the last one leaves. A map of the rooms, from the bottom up:
//
//   foundation/   values, errors, property lists, the operation queue, the file manager, the log handle
//   host/         what the operating system supplies, one interface a role; host/linux/ and host/macos/ implement them
//   macho/        executables read down to their sections; the digest that request keys derive from
//   platform/     the operating system's version, running processes
//   catalogue/    every operation described once; names, checks and refusals that derive from that; request envelopes
//   bundles/      software packages inspected without loading them
//   fileops/      single objects: removal, protection, metadata, moves, system files replaced
//   treewalk/     the directory enumerator, searches, rights handed down
//   process/      child programs with relayed output, the utilities that may be run
//   system/       settings, disk blocks, the management controller, install media
//   core/         this process: entry, service object, client registry, token check, dispatch, feedback, implementor
//   client/       the requesting side: library and vantrellctl (not part of this executable)
//   resources/    the two property lists embedded in this executable
//
// One request, file by file: host/ transport -> QELPrivilegedTool (OperationDispatch.cpp) -> TokenCheck ->
// ArgumentValidation -> FeedbackConnection -> QELPrivilegedOperationSetImplementorLm4 -> OperationQueue -> the room
// that does the work -> completion -> reply.

#include <cstdio>

#include "core/ClassRegistry.h"
#include "core/ProcessEntry.h"
#include "host/Host.h"

int main(int argumentCount, char** arguments) {
  const auto writeTo = [](std::FILE* stream) {
    return [stream](std::string_view text) {
      std::fwrite(text.data(), 1, text.size(), stream);
      std::fflush(stream);
    };
  };
  auto host = vantrell::host::makeHost();
  const auto classes = vantrell::ClassRegistry::standard();
  return vantrell::runPrivilegedTool(argumentCount, arguments, host, classes, {writeTo(stdout), writeTo(stderr)});
}
