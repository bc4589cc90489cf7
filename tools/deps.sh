#!/bin/sh
# SPDX-License-Identifier: MIT
# deps.sh [deb | docs]: install what the build, the tests and the examples need, on Debian 12, or what Debian
# packages are made and tested with, or what the site of the documents is made and looked at with. Does
# nothing when all is there.
set -eu

packages="cmake make g++-multilib gfortran-multilib binutils python3 python3-mpmath gnuplot-nox
  clang-format codespell shellcheck mandoc libcli11-dev nlohmann-json3-dev
  libfmt-dev:i386 libgtest-dev:i386 libgmock-dev:i386 libmpfr-dev:i386 libmpc-dev:i386
  meson pkgconf"
[ "${1-}" != deb ] || packages="cmake g++-multilib binutils-i686-linux-gnu python3 libcli11-dev
  nlohmann-json3-dev libfmt-dev:i386 libgomp1:i386 libmpfr-dev:i386 libmpc-dev:i386 pkgconf
  debhelper dpkg-dev lintian man-db"
[ "${1-}" != docs ] || packages="python3 python3-sphinx python3-myst-parser python3-sphinx-rtd-theme
  chromium chromium-driver python3-selenium"

fail() {
  echo "deps: $*" >&2
  exit 1
}

# The packages of the list that are not installed. Those without an architecture may be of any.
missing() {
  installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n${db:Status-Abbrev} ${Package}:${Architecture}\n' |
    sed -n 's/^[ih]i  *//p')
  for package in $packages; do
    printf '%s\n' "$installed" | grep -qxF "$package" || printf '%s ' "$package"
  done
}

if ! { command -v apt-get && command -v dpkg-query; } >/dev/null; then
  fail "this is no Debian system.
Install by its own means: CMake 3.25, a g++ that builds with -m32 (and a gfortran, for the
Fortran module), Python 3 with mpmath, CLI11,
nlohmann-json, gnuplot, Meson, pkgconf, clang-format 14, codespell, shellcheck, mandoc, and the 32-bit x86 libraries fmt,
GoogleTest with GoogleMock, MPFR and MPC."
fi

wanted=$(missing)
[ -n "$wanted" ] || exit 0

case $(dpkg --print-architecture) in
  amd64) ;;
  *) fail "set up for amd64 machines, which run 32-bit x86 programs; this one is $(dpkg --print-architecture)" ;;
esac

if [ "$(id -u)" = 0 ]; then
  as_root() { env "$@"; }
elif command -v sudo >/dev/null; then
  as_root() { sudo env "$@"; }
else
  fail "these packages are missing, and without sudo only root can install them:
$wanted"
fi

echo "deps: installing $wanted"
dpkg --print-foreign-architectures | grep -qx i386 || as_root dpkg --add-architecture i386
as_root apt-get update -q ||
  echo "deps: apt-get update failed; going on with the package index as it is" >&2
# shellcheck disable=SC2086  # a list of packages
as_root DEBIAN_FRONTEND=noninteractive \
  apt-get install -q -y --no-install-recommends $wanted ||
  fail "apt-get could not install them; if its index is old, run apt-get update"

wanted=$(missing)
[ -z "$wanted" ] || fail "still missing: $wanted"
