#!/bin/sh
# SPDX-License-Identifier: MIT
# Build the Debian packages twice, in folders of other names; they must have equal bytes and no fault
# that lintian finds. Then install them on this system, compile and run a program in every documented
# way, and purge them, which must leave nothing. For root on an amd64 Debian with i386 packages.
set -eu
cd "$(dirname "$0")/.."
fail() {
  echo "deb-test: $*" >&2
  exit 1
}
[ "$(id -u)" = 0 ] || fail "only root can install packages"

say() { printf '\n== %s\n' "$*"; }
source=$PWD
first=$source/build/deb
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

say "built twice"
tools/deb.sh "$first" >"$work/first.log" 2>&1 || { tail -50 "$work/first.log"; fail "does not build"; }
tools/deb.sh "$work/another-folder" >"$work/second.log" 2>&1 || { tail -50 "$work/second.log"; fail "does not build again"; }
for package in "$first"/*.deb; do
  cmp "$package" "$work/another-folder/${package##*/}"
  echo "$(stat -c %s "$package") bytes twice: ${package##*/}"
done

say "lintian"
lintian --allow-root --fail-on error,warning "$first"/*.changes
echo "no errors, no warnings"

say "installed"
installed() { dpkg-query -W -f '${db:Status-Abbrev} ${Package}:${Architecture}\n' | sed -n 's/^i.  *//p' | sort; }
installed >"$work/before"
DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "$first"/*.deb >"$work/apt.log" ||
  { cat "$work/apt.log"; fail "apt-get could not install them"; }
installed | comm -13 "$work/before" - >"$work/added"
cat "$work/added"
purge() { DEBIAN_FRONTEND=noninteractive xargs apt-get purge -q -y <"$work/added" >"$work/apt.log"; }
trap 'purge; rm -rf "$work"' EXIT
ours="libluxcore5.2:i386 libluxvmk3-5.2:i386 libluxvmk3-wide-5.2:i386 libluxvm-dev:i386 luxvm-tools:i386"
# shellcheck disable=SC2086  # a list of packages
dpkg -L $ours | while read -r path; do [ -d "$path" ] || echo "$path"; done >"$work/files"
echo "$(wc -l <"$work/files") files"

say "used"
cd "$work"
cp "$source/examples/first.c" .
export PKG_CONFIG_LIBDIR=/usr/lib/i386-linux-gnu/pkgconfig
# shellcheck disable=SC2046  # flags
gcc -m32 first.c $(pkg-config --cflags --libs luxvm) -o first
./first
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.16)
project(stranger C)
find_package(luxvm 5.2 REQUIRED)
add_executable(by_cmake first.c)
target_link_libraries(by_cmake PRIVATE luxvm::luxvm)
END
cmake -S . -B cmake -DCMAKE_C_FLAGS=-m32 >cmake.log
cmake --build cmake >>cmake.log
cmake/by_cmake | tail -1
luxvm --version
luxvm env | head -5
luxvm check | tail -1
MANPAGER="cat" man luxvm | head -5
MANPAGER="cat" man luxsErfc_64f_A50 | head -5

say "purged"
trap 'rm -rf "$work"' EXIT
purge
while read -r path; do [ ! -e "$path" ] || fail "left behind: $path"; done <"$work/files"
installed | cmp - "$work/before"
echo "nothing left"
