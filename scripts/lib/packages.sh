# shellcheck shell=bash
# Copyright (c) 2026 Vantrell. All rights reserved.
# SPDX-License-Identifier: LicenseRef-Vantrell
#
# To be sourced: what Debian 12 must have installed, by purpose.
#
#   ensure_packages build test     installs what is missing; calls apt-get only when something is

packages_for() {
  case $1 in
    build)
      echo g++ cmake ninja-build pkg-config ccache \
        libsystemd-dev nettle-dev libexpat1-dev libfmt-dev libcli11-dev nlohmann-json3-dev libelf-dev libacl1-dev libssl-dev
      ;;
    test)
      echo libgtest-dev libgmock-dev libbenchmark-dev librapidcheck-dev libplist-dev \
        clang-19 libclang-rt-19-dev lld-19 llvm-19 \
        dbus dbus-daemon acl attr e2fsprogs strace python3 openssl
      ;;
    demo) echo systemd e2fsprogs ;;
    macos)
      # npm comes with the system's Node.js package, or with one that is installed from elsewhere.
      echo cmake ninja-build ccache llvm-19 libfmt-dev libcli11-dev nlohmann-json3-dev libexpat1-dev googletest \
        $(command -v npm >/dev/null || echo npm)
      ;;
    format) echo clang-format ;;
    *)
      echo "no package list named '$1'" >&2
      return 1
      ;;
  esac
}

is_installed() {
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

as_root() {
  if [[ $(id -u) -eq 0 ]]; then "$@"; else sudo "$@"; fi
}

apt_get() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o Dpkg::Use-Pty=0 "$@"
}

package_lists_are_fresh=no

ensure_packages() {
  local purpose names name
  local missing=()
  for purpose in "$@"; do
    names=$(packages_for "$purpose") || return 1
    for name in $names; do
      is_installed "$name" || missing+=("$name")
    done
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  if ! command -v apt-get >/dev/null; then
    echo "this system has no apt-get; needed are the counterparts of: ${missing[*]}" >&2
    return 1
  fi
  echo "installing ${missing[*]}"
  if [[ $package_lists_are_fresh == no ]]; then
    apt_get update || return 1
    package_lists_are_fresh=yes
  fi
  apt_get install --no-install-recommends "${missing[@]}"
}
