#!/usr/bin/env bash
# Makes the Debian packages of a build with cpack and checks them with dpkg-deb: names,
# files, soname, dependencies. Where the machine allows (root, or sudo without a
# password) it installs them with apt-get, builds examples/files.c against the installed
# package through pkg-config, runs it with no NLSPATH (the catalogue is found at its
# fixed path), and removes them again, putting back a catalogue that was there before.
#   scripts/package-test.sh BUILD_DIR
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/.." && pwd)
build_dir=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "package test: $*"; failures=$((failures + 1)); }

(cd "$build_dir" && cpack -G DEB -B "$work/packages" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build_dir/CMakeCache.txt")
runtime=$(ls "$work"/packages/libvrn90-t1_*.deb)
development=$(ls "$work"/packages/libvrn90-t-dev_*.deb)
dpkg-deb -c "$runtime" | awk '{print $6, $7, $8}' | sed 's/ *$//' >"$work/runtime.txt"
dpkg-deb -c "$development" | awk '{print $6, $7, $8}' | sed 's/ *$//' >"$work/development.txt"

# The run-time package is named after the soname and holds the library, its soname link,
# the catalogue in both places and the manual page; the development package the rest.
[ "$(dpkg-deb -f "$runtime" Section)" = libs ] || fail "runtime section"
# No grep -q after a pipe: a writer whose reader has left dies of SIGPIPE, which pipefail
# then reports as a failure now and then.
dpkg-deb -f "$runtime" Depends | grep 'libc6' >/dev/null || fail "runtime does not depend on libc6"
dpkg-deb -f "$runtime" Depends | grep 'libstdc++6' >/dev/null || fail "runtime does not depend on libstdc++6"
[ "$(dpkg-deb -f "$development" Depends)" = "libvrn90-t1 (= $version)" ] || fail "development depends on $(dpkg-deb -f "$development" Depends)"
for file in "./usr/lib/libvrn90_t.so.1 -> libvrn90_t.so.1.0.0" ./usr/lib/libvrn90_t.so.1.0.0 \
            ./opt/vrcmp/msg/en_US/vrqmsg90.cat ./usr/share/vrn90/nls/vrqmsg90.cat ./usr/share/man/man7/vrnrteopts.7; do
  grep -qxF "$file" "$work/runtime.txt" || fail "runtime lacks $file"
done
for file in "./usr/lib/libvrn90_t.so -> libvrn90_t.so.1" ./usr/include/ISO_Fortran_binding.h ./usr/include/vrn90.h ./usr/include/vrn90_keywords.h \
            ./usr/lib/cmake/vrn90/vrn90Config.cmake ./usr/lib/cmake/vrn90/vrn90Targets.cmake ./usr/lib/pkgconfig/vrn90.pc; do
  grep -qxF "$file" "$work/development.txt" || fail "development lacks $file"
done
grep -q 'include\|libvrn90_t.so ->' "$work/runtime.txt" && fail "runtime holds development files"
dpkg-deb --ctrl-tarfile "$runtime" | tar -xO ./shlibs | grep -x "libvrn90_t 1 libvrn90-t1 (>= $version)" >/dev/null ||
  fail "no shlibs entry"
dpkg-deb -x "$runtime" "$work/runtime"
readelf -d "$work/runtime/usr/lib/libvrn90_t.so.1.0.0" | grep 'SONAME.*\[libvrn90_t.so.1\]' >/dev/null || fail "soname"
echo "packages: $(basename "$runtime") $(basename "$development"): $failures problems"

sudo_cmd=""
if [ "$(id -u)" -ne 0 ]; then
  if sudo -n true 2>/dev/null; then sudo_cmd="sudo"; else
    echo "(not root: the packages are not installed)"; exit $failures
  fi
fi
catalogue=/opt/vrcmp/msg/en_US/vrqmsg90.cat
if [ -f "$catalogue" ] && ! dpkg -S "$catalogue" >/dev/null 2>&1; then cp "$catalogue" "$work/catalogue"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo_cmd apt-get install -y -qq "$runtime" "$development" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; exit 1; }
# Only the package's pkg-config file, and the library it names, even beside an earlier
# installation under /usr/local.
export PKG_CONFIG_LIBDIR=/usr/lib/pkgconfig
libdir=$(pkg-config --variable=libdir vrn90)
# shellcheck disable=SC2046
cc "$source_dir/examples/files.c" $(pkg-config --cflags --libs vrn90) -Wl,-rpath,"$libdir" -o "$work/files"
mkdir "$work/run"
out=$(cd "$work/run" && env -u NLSPATH "$work/files") || true
expected=$(printf " \nunit -3, IOSTAT 16, IOMSG '\"files.f\", line 5: 3714-016 The record number 0 of a direct-access statement is not 1 or more.', file of 16 bytes")
[ "$out" = "$expected" ] || fail "the installed package's program printed: $out"
ldd "$work/files" | grep "libvrn90_t.so.1 => $libdir/libvrn90_t.so.1" >/dev/null || fail "not linked to the package's library"
$sudo_cmd apt-get remove -y -qq --purge libvrn90-t-dev libvrn90-t1 >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; exit 1; }
[ -f "$work/catalogue" ] && $sudo_cmd install -D -m 644 "$work/catalogue" "$catalogue"
echo "installed, used and removed: $failures problems"
exit $failures
