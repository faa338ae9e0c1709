// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/NettleCryptography.h"

#include <nettle/arcfour.h>
#include <nettle/sha1.h>
#include <string.h>
#include <sys/random.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

class NettleSha1 final : public Sha1Context {
 public:
  NettleSha1() { sha1_init(&context_); }
  void update(DataView bytes) override { sha1_update(&context_, bytes.size(), bytes.data()); }
  Sha1Digest finish() override {
    Sha1Digest digest;
    sha1_digest(&context_, digest.size(), digest.data());  // also resets the context
    return digest;
  }

 private:
  sha1_ctx context_;
};

}  // namespace

Result<std::unique_ptr<Sha1Context>> NettleCryptography::makeSha1() {
  return std::make_unique<NettleSha1>();
}

Result<Sha1Digest> NettleCryptography::sha1(DataView bytes) {
  NettleSha1 context;
  context.update(bytes);
  return context.finish();
}

ErrorOrNil NettleCryptography::rc4(DataView key, DataView input, std::span<std::uint8_t> output) {
  if (key.size() < ARCFOUR_MIN_KEY_SIZE || key.size() > ARCFOUR_MAX_KEY_SIZE || input.size() != output.size()) {
    return Error::posix(posix::kInvalidArgument);
  }
  arcfour_ctx context;
  arcfour_set_key(&context, key.size(), key.data());
  arcfour_crypt(&context, input.size(), output.data(), input.data());
  explicit_bzero(&context, sizeof context);
  return std::nullopt;
}

ErrorOrNil NettleCryptography::randomBytes(std::span<std::uint8_t> output) {
  while (!output.empty()) {
    const ssize_t count = getrandom(output.data(), output.size(), 0);
    if (count < 0) {
      if (errno == EINTR) continue;
      return errorFromErrno();
    }
    output = output.subspan(static_cast<std::size_t>(count));
  }
  return std::nullopt;
}

}  // namespace vantrell::host
