#!/usr/bin/env bash
# Installs what is missing, builds the host, sanitizer, thread-sanitizer and PowerPC
# configurations, and runs every test of each (the thread-sanitizer one: the threaded
# intrinsics; the PowerPC ones under qemu); on the host also builds the Debian packages
# and tries them, and builds the libFuzzer harnesses with clang and runs each a few seconds
# from its seeds, so that a harness that no longer builds or a known crash fails here.
# Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
start=$SECONDS
status=0
for preset in host sanitize tsan ppc; do
  echo "== $preset: configure and build"
  cmake --preset "$preset" -DVRN_BUILD_TESTS=ON >/dev/null
  cmake --build --preset "$preset"
  if [ "$preset" = host ]; then
    # Installed, the catalogue is found with no variable set; a test checks that.
    if [ "$(id -u)" -eq 0 ]; then
      cmake --install build/host >/dev/null
    elif sudo -n true 2>/dev/null; then
      sudo cmake --install build/host >/dev/null
    else
      echo "(not root: the installed-catalogue test will be skipped)"
    fi
  fi
  echo "== $preset: test"
  ctest --preset "$preset" || status=1
  if [ "$preset" = host ]; then
    echo "== host: Debian packages"
    scripts/package-test.sh build/host || status=1
  fi
done
echo "== fuzz: build the harnesses and run each from its seeds"
scripts/fuzz.sh 5 || status=1
echo "== all builds and tests took $((SECONDS - start)) s"
exit $status
