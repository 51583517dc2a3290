#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang and runs each for the given seconds (default 120),
# starting from its committed seeds (tests/fuzz/corpus/<harness>); what a run learns goes to
# build/fuzz/corpus/<harness>. Further arguments name the harnesses to run (default: all).
# Exits non-zero when a harness does not build or finds a fault; a crashing input is left
# in build/fuzz/ as crash-<hash>.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-120}
shift || true
fuzzers=("$@")
[ ${#fuzzers[@]} -gt 0 ] || fuzzers=(option_fuzzer message_fuzzer atof_fuzzer format_fuzzer format_write_fuzzer
                                     format_read_fuzzer list_read_fuzzer ufmt_read_fuzzer cfi_fuzzer namelist_fuzzer
                                     symbol_name_fuzzer line_table_fuzzer)
cmake --preset fuzz >/dev/null
cmake --build build/fuzz
status=0
for fuzzer in "${fuzzers[@]}"; do
  corpus=build/fuzz/corpus/$fuzzer
  mkdir -p "$corpus"
  echo "== $fuzzer for ${seconds}s"
  if ! (cd build/fuzz && "tests/fuzz/$fuzzer" -max_total_time="$seconds" -max_len=512 -print_final_stats=1 \
          "corpus/$fuzzer" "../../tests/fuzz/corpus/$fuzzer" >"$fuzzer.log" 2>&1); then
    echo "FAILED: $fuzzer (build/fuzz/$fuzzer.log)"
    grep -m 5 -E 'ERROR|SUMMARY|runtime error|Test unit written' "build/fuzz/$fuzzer.log" || tail -n 20 "build/fuzz/$fuzzer.log"
    status=1
  else
    grep -E '^stat::number_of_executed_units|^stat::new_units_added' "build/fuzz/$fuzzer.log" | tr '\n' ' '
    echo
  fi
done
exit $status
