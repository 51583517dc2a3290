#!/usr/bin/env bash
# Installs what is missing, builds the host, sanitizer and PowerPC configurations, and
# runs every test of each (the PowerPC ones under qemu). Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
start=$SECONDS
status=0
for preset in host sanitize ppc; do
  echo "== $preset: configure and build"
  cmake --preset "$preset" -DVRN_BUILD_TESTS=ON >/dev/null
  cmake --build --preset "$preset"
  echo "== $preset: test"
  ctest --preset "$preset" || status=1
done
echo "== all builds and tests took $((SECONDS - start)) s"
exit $status
