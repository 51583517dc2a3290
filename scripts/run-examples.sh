#!/usr/bin/env bash
# Builds the library for this machine and runs the examples.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset host -DVRN_BUILD_TESTS=OFF -DVRN_BUILD_BENCH=OFF >/dev/null
cmake --build --preset host
for example in print_empty files list_output formatted_report matmul unformatted arrays_and_types c_descriptors namelist_config; do
  echo "== examples/$example"
  (cd build/host/examples && ./"$example")
done
line="7 2.5D0 (1.0,-0.5) .true. 'It''s' 2*4 ,, 9"
echo "== examples/list_input, given: $line"
(cd build/host/examples && echo "$line" | ./list_input)
echo "== examples/failing_program, with VRNRTEOPTS=errtrace=yes (it ends with status 1)"
(cd build/host/examples && VRNRTEOPTS=errtrace=yes ./failing_program) || true
