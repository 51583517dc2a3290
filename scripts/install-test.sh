#!/usr/bin/env bash
# Installs a build into a staging directory (DESTDIR) and builds examples/files.c against
# the installed files three ways: CMake's find_package, pkg-config, and a plain
# `cc -lvrn90_t`; examples/c_descriptors.c the plain way. Each program runs with the installed library and the installed
# catalogue, and must print the message text that only the catalogue holds.
#   scripts/install-test.sh BUILD_DIR
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/.." && pwd)
build_dir=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

DESTDIR="$work/stage" cmake --install "$build_dir" --prefix /usr/local >/dev/null
prefix="$work/stage/usr/local"
libdir=$(dirname "$(find "$prefix" -name 'libvrn90_t.so.1' | head -1)")

expected=$(printf " \nunit -3, IOSTAT 16, IOMSG '\"files.f\", line 5: 3714-016 The record number 0 of a direct-access statement is not 1 or more.', file of 16 bytes")
failures=0
check() {  # check WAY PROGRAM NLS_DIR
  local out
  # The library would fall back on the fixed path of an earlier installation: the
  # catalogue must be where the package says.
  [ -f "$3/vrqmsg90.cat" ] || { echo "$1: no catalogue in $3"; failures=$((failures + 1)); return; }
  mkdir -p "$work/run-$1"
  out=$(cd "$work/run-$1" && LD_LIBRARY_PATH="$libdir" NLSPATH="$3/%N" "$2") || true
  if [ "$out" = "$expected" ]; then
    echo "$1: ok"
  else
    echo "$1: FAILED"; echo "$out"; failures=$((failures + 1))
  fi
}

# 1. CMake: find_package(vrn90 CONFIG) and the imported target vrn90::vrn90_t.
cmake -S "$source_dir/tests/install" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
check cmake "$work/cmake/files" "$(cat "$work/cmake/nls_dir.txt")"

# 2. pkg-config: flags, libraries and the catalogue's directory from vrn90.pc.
export PKG_CONFIG_PATH="$libdir/pkgconfig"
# shellcheck disable=SC2046
cc "$source_dir/examples/files.c" $(pkg-config --cflags --libs vrn90) -o "$work/files-pkgconfig"
check pkg-config "$work/files-pkgconfig" "$(pkg-config --variable=nlsdir vrn90)"

# 3. Plain: the include directory and -lvrn90_t, as a compiler driver would add them.
cc "$source_dir/examples/files.c" -I"$prefix/include" -L"$libdir" -lvrn90_t -o "$work/files-plain"
check plain "$work/files-plain" "$prefix/share/vrn90/nls"

# ISO_Fortran_binding.h is installed beside vrn90.h and finds the installed CFI_ procedures.
cc "$source_dir/examples/c_descriptors.c" -I"$prefix/include" -L"$libdir" -lvrn90_t -o "$work/c_descriptors"
if [ "$(LD_LIBRARY_PATH="$libdir" "$work/c_descriptors")" = "allocated 1, lower bound 1: 16 20 24" ]; then
  echo "ISO_Fortran_binding.h: ok"
else
  echo "ISO_Fortran_binding.h: FAILED"; failures=$((failures + 1))
fi

# The installed shared object carries its soname, and the link-time name points at it.
[ "$(readlink "$libdir/libvrn90_t.so")" = libvrn90_t.so.1 ] || { echo "libvrn90_t.so: wrong link"; failures=$((failures + 1)); }
readelf -d "$libdir/libvrn90_t.so.1" | grep 'SONAME.*libvrn90_t.so.1' >/dev/null || { echo "no soname"; failures=$((failures + 1)); }
exit $failures
