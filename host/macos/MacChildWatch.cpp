// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacChildWatch.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/event.h>
#include <sys/types.h>
#include <sys/wait.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

using Event = struct kevent;

constexpr std::int32_t kUnknownStatus = -1;
constexpr uintptr_t kInterruption = 1;  // the user event's name within the queue

Event eventOf(uintptr_t identifier, std::int16_t filter, std::uint16_t flags, std::uint32_t filterFlags = 0) noexcept {
  return {.ident = identifier, .filter = filter, .flags = flags, .fflags = filterFlags, .data = 0, .udata = nullptr};
}

int submit(int queue, const Event& change) noexcept {
  return kevent(queue, &change, 1, nullptr, 0, nullptr) == 0 ? 0 : errno;
}

timespec durationOf(int milliseconds) noexcept {
  return {.tv_sec = milliseconds / 1000, .tv_nsec = milliseconds % 1000 * 1'000'000L};
}

std::int32_t statusFrom(int status) noexcept {
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

MacChildWatch::MacChildWatch(FileDescriptor queue) noexcept : queue_(std::move(queue)) {}

int MacChildWatch::prepare(int queue) noexcept {
  if (fcntl(queue, F_SETFD, FD_CLOEXEC) != 0) return errno;
  return submit(queue, eventOf(kInterruption, EVFILT_USER, EV_ADD | EV_CLEAR));
}

int MacChildWatch::begin(pid_t child) noexcept {
  {
    const std::lock_guard lock(mutex_);
    child_ = child;
  }
  const int problem =
      submit(queue_.get(), eventOf(static_cast<uintptr_t>(child), EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT));
  // A process that has already ended can't be watched any more; as our own child it can still be waited for.
  hasExited_ = problem == ESRCH;
  return hasExited_ ? 0 : problem;
}

// Streams are asked for anew each time, for one event: one that is not wanted can't wake anybody more than once.
std::optional<ChildEvents> MacChildWatch::wait(const ChildEvents& wanted, int output, int error,
                                               int milliseconds) noexcept {
  std::array<Event, 2> changes;
  int changeCount = 0;
  for (const auto& [isWanted, stream] : {std::pair(wanted.output, output), std::pair(wanted.error, error)}) {
    if (isWanted)
      changes[static_cast<std::size_t>(changeCount++)] =
          eventOf(static_cast<uintptr_t>(stream), EVFILT_READ, EV_ADD | EV_ONESHOT);
  }
  const bool isKnown = (wanted.exit && hasExited_) || (wanted.interruption && isInterrupted_);
  const timespec limit = durationOf(isKnown ? 0 : milliseconds);
  std::array<Event, 4> events;
  const int count = kevent(queue_.get(), changes.data(), changeCount, events.data(), static_cast<int>(events.size()),
                           isKnown || milliseconds >= 0 ? &limit : nullptr);
  ChildEvents happened;
  for (int i = 0; i < count; ++i) {
    // An event that reports an error counts as well: reading the stream then tells.
    const Event& event = events[static_cast<std::size_t>(i)];
    if (event.filter == EVFILT_PROC) hasExited_ = true;
    if (event.filter != EVFILT_READ) continue;
    happened.output |= wanted.output && event.ident == static_cast<uintptr_t>(output);
    happened.error |= wanted.error && event.ident == static_cast<uintptr_t>(error);
  }
  happened.exit = wanted.exit && hasExited_;
  happened.interruption = wanted.interruption && isInterrupted_;
  if (count == 0 && !isKnown) return std::nullopt;
  return happened;
}

void MacChildWatch::interrupt() noexcept {
  isInterrupted_ = true;
  submit(queue_.get(), eventOf(kInterruption, EVFILT_USER, 0, NOTE_TRIGGER));
}

void MacChildWatch::send(int signal) noexcept {
  const std::lock_guard lock(mutex_);
  if (!isWaitedFor_) kill(child_, signal);
}

// With the lock held, but only once the child's end was announced, or when there is nobody left to send signals.
std::optional<std::int32_t> MacChildWatch::takeStatus(Patience patience) noexcept {
  const std::lock_guard lock(mutex_);
  int status = 0;
  pid_t found = -1;
  do {
    found = waitpid(child_, &status, patience == Patience::None ? WNOHANG : 0);
  } while (found < 0 && errno == EINTR);
  if (found == 0) return std::nullopt;
  isWaitedFor_ = true;
  return found < 0 ? kUnknownStatus : statusFrom(status);
}

Result<std::unique_ptr<ChildWatch>> makeChildWatch() {
  FileDescriptor queue(kqueue());
  if (!queue) return errnoFailure();
  if (const int problem = MacChildWatch::prepare(queue.get())) return errnoFailure(problem);
  return std::make_unique<MacChildWatch>(std::move(queue));
}

}  // namespace vantrell::host
