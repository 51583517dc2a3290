#!/usr/bin/env bash
# Builds the benchmarks and prints our figures beside the limits in one table:
# records per second, medians of five runs.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset host -DCMAKE_BUILD_TYPE=Release -DVRN_BUILD_BENCH=ON >/dev/null
cmake --build --preset host --target record_bench >/dev/null
json=$(mktemp)
# Standard error on a pipe, as under a terminal: unit 6 on a file is then block buffered.
# (With both on files, unit 6 is flushed after every record, as the run-time intends.)
build/host/bench/record_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$json" --benchmark_out_format=json 2>&1 | cat >/dev/null
python3 - "$json" <<'PY'
import json, sys
runs = {b["run_name"]: b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("aggregate_name") == "median"}
rate = lambda name: runs[name]["items_per_second"]
rows = [
    ("empty PRINT to a file (2 bytes)", "EmptyPrint", "Write2Limit/2"),
    ("80-byte records to a file", "Write80ByteRecords", "Write2Limit/82"),
    ("80-byte records, write(2) each", "Write2PerRecord", "Write2Limit/82"),
]
print(f"{'what':34} {'records/s':>14} {'limit: write(2) in 4 KiB':>25} {'ratio':>7}")
for label, ours, limit in rows:
    print(f"{label:34} {rate(ours):14,.0f} {rate(limit):25,.0f} {rate(ours) / rate(limit):7.2f}")
PY
rm -f "$json"
