#!/usr/bin/env bash
# Installs what is missing, builds the host, sanitizer, thread-sanitizer and PowerPC
# configurations, and runs every test of each (the thread-sanitizer one: the threaded
# intrinsics and asynchronous I/O; the PowerPC ones under qemu); on the host also builds
# the Debian packages and tries them, and builds the libFuzzer harnesses with clang and
# runs each a few seconds from its seeds, so that a harness that no longer builds or a
# known crash fails here.
# Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
start=$SECONDS
status=0
passed=0
failed=0
# Counts one stage's outcome; a failed stage fails the run without stopping the others.
stage() {
  if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)); status=1; fi
}
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
  stage ctest --preset "$preset"
  if [ "$preset" = host ]; then
    echo "== host: Debian packages"
    stage scripts/package-test.sh build/host
  fi
done
echo "== fuzz: build the harnesses and run each from its seeds"
stage scripts/fuzz.sh 5
echo "== all builds and tests took $((SECONDS - start)) s"
echo "stages: $passed passed, $failed failed"
exit $status
