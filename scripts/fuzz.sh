#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang and runs each for the given seconds (default 120).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-120}
cmake --preset fuzz >/dev/null
cmake --build build/fuzz
for fuzzer in option_fuzzer message_fuzzer atof_fuzzer format_fuzzer format_write_fuzzer format_read_fuzzer list_read_fuzzer ufmt_read_fuzzer; do
  corpus=build/fuzz/corpus/$fuzzer
  mkdir -p "$corpus"
  echo "== $fuzzer for ${seconds}s"
  build/fuzz/tests/fuzz/$fuzzer -max_total_time="$seconds" -max_len=512 "$corpus" 2>&1 | tail -3
done
