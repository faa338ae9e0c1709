// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/OutputRelay.h"

#include <algorithm>
#include <cerrno>

#include <sys/ioctl.h>
#include <unistd.h>

namespace vantrell::host {
namespace {

constexpr std::size_t kChunk = 64 << 10;
constexpr int kForEver = -1;

// A process that exits closes its descriptors one after the other, in no certain order. For so many milliseconds the
// end of error waits for that of output.
constexpr int kGrace = 100;

std::size_t bytesWaitingIn(int pipe) {
  int count = 0;
  return ioctl(pipe, FIONREAD, &count) == 0 && count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace

OutputRelay::OutputRelay(const PosixChildPipes& pipes, const ChildProcess::OutputHandler& handler)
    : output_{ChildStream::Output, pipes.output.reading.get()},
      error_{ChildStream::Error, pipes.error.reading.get()},
      watch_(*pipes.watch),
      handler_(handler),
      buffer_(std::make_unique_for_overwrite<std::uint8_t[]>(kChunk)) {}

void OutputRelay::relayUntilExit() {
  for (;;) {
    const bool errorsEndWaits = error_.isAtEnd && !error_.isHandedOver;
    const auto happened = readWhatComes({.exit = true}, errorsEndWaits ? kGrace : kForEver);
    if (!happened) handOverEnd(error_);
    if (happened && happened->exit) return;
  }
}

void OutputRelay::relayToEnd() {
  while (!output_.isAtEnd || !error_.isAtEnd) {
    const auto happened = readWhatComes({.interruption = true}, kForEver);
    if (happened && happened->interruption) return relayWhatIsThere();
  }
}

std::optional<ChildEvents> OutputRelay::readWhatComes(ChildEvents others, int milliseconds) {
  others.output = !output_.isAtEnd;
  others.error = !error_.isAtEnd;
  const auto happened = watch_.wait(others, output_.descriptor, error_.descriptor, milliseconds);
  if (!happened || happened->interruption) return happened;
  if (happened->output) readSome(output_, kChunk);
  if (happened->error) readSome(error_, kChunk);
  return happened;
}

std::size_t OutputRelay::readSome(Stream& stream, std::size_t limit) {
  const ssize_t count = read(stream.descriptor, buffer_.get(), limit);
  if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) end(stream);
  if (count <= 0) return 0;
  handler_(stream.kind, {buffer_.get(), static_cast<std::size_t>(count)});
  return static_cast<std::size_t>(count);
}

void OutputRelay::end(Stream& stream) {
  stream.isAtEnd = true;
  if (output_.isAtEnd) handOverEnd(output_);
  if (output_.isAtEnd && error_.isAtEnd) handOverEnd(error_);
}

void OutputRelay::handOverEnd(Stream& stream) {
  if (stream.isHandedOver) return;
  stream.isHandedOver = true;
  handler_(stream.kind, {});
}

void OutputRelay::relayWhatIsThere() {
  const auto output = output_.isAtEnd ? 0 : bytesWaitingIn(output_.descriptor);
  const auto error = error_.isAtEnd ? 0 : bytesWaitingIn(error_.descriptor);
  relayAtMost(output_, output);
  relayAtMost(error_, error);
  end(output_);
  end(error_);
}

// What was there can't have gone: nobody else reads from the pipe.
void OutputRelay::relayAtMost(Stream& stream, std::size_t count) {
  while (count > 0) {
    const auto part = readSome(stream, std::min(count, kChunk));
    if (part == 0) return;
    count -= part;
  }
}

}  // namespace vantrell::host
