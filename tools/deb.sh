#!/bin/sh
# SPDX-License-Identifier: MIT
# deb.sh DIRECTORY: build the Debian packages for i386 there, on an amd64 Debian, from a copy of the
# sources, whose folder dpkg-buildpackage wants to write beside.
set -eu
[ $# -eq 1 ] || { sed -n '3,4s/^# //p' "$0" >&2; exit 2; }
cd "$(dirname "$0")/.."
version=$(dpkg-parsechangelog -S Version)
tree=$1/luxvm-${version%-*}
rm -rf "$1"
mkdir -p "$tree"
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$tree"
cd "$tree"
dpkg-buildpackage --host-arch=i386 --build=binary --unsigned-changes --jobs="$(nproc)"
