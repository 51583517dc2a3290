#!/usr/bin/env bash
# Builds the benchmarks and prints our figures beside the limits and peers in one run:
# medians of five runs. VRN_BENCH_MB sets the size of the file benchmark (default 100).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset host -DCMAKE_BUILD_TYPE=Release -DVRN_BUILD_BENCH=ON >/dev/null
cmake --build --preset host --target record_bench file_bench convert_bench list_bench reduction_bench random_bench format_bench fmt_write_bench fmt_read_bench list_read_bench ufmt_bench array_bench inquire_bench location_bench movement_bench cfi_bench namelist_bench async_bench >/dev/null
# The MATMUL benchmark exists when OpenBLAS, its peer, is installed.
cmake --build --preset host --target matmul_bench >/dev/null 2>&1 || true
export TMPDIR=${TMPDIR:-/tmp}
records=$(mktemp)
files=$(mktemp)
# Standard error on a pipe, as under a terminal: unit 6 on a file is then block buffered.
# (With both on files, unit 6 is flushed after every record, as the run-time intends.)
build/host/bench/record_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$records" --benchmark_out_format=json 2>&1 | cat >/dev/null
lists=$(mktemp)
build/host/bench/list_bench --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_out="$lists" --benchmark_out_format=json >/dev/null 2>&1
conversions=$(mktemp)
build/host/bench/convert_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
  --benchmark_out="$conversions" --benchmark_out_format=json >/dev/null 2>&1
build/host/bench/file_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$files" --benchmark_out_format=json 2>&1 | cat >/dev/null

# The peers copy the same input file: cat, dd with its default blocks, and, when gfortran
# is there, a program that reads and writes each record with '(A)'.
input="$TMPDIR/vrn_bench_input.txt"
peer_dir=$(mktemp -d)
peer=""
list_peer=""
reduction_peer=""
location_peer=""
movement_peer=""
random_peer=""
matmul_peer=""
if command -v gfortran >/dev/null; then
  gfortran -O2 bench/peers/records.f90 -o "$peer_dir/records" && peer="$peer_dir/records"
  gfortran -O2 bench/peers/list_write.f90 -o "$peer_dir/list_write" && list_peer="$peer_dir/list_write"
  gfortran -O2 bench/peers/reductions.f90 -o "$peer_dir/reductions" 2>/dev/null && reduction_peer="$peer_dir/reductions"
  gfortran -O2 bench/peers/locations.f90 -o "$peer_dir/locations" 2>/dev/null && location_peer="$peer_dir/locations"
  gfortran -O2 bench/peers/movement.f90 -o "$peer_dir/movement" 2>/dev/null && movement_peer="$peer_dir/movement"
  gfortran -O2 bench/peers/random.f90 -o "$peer_dir/random" && random_peer="$peer_dir/random"
  gfortran -O2 bench/peers/matmul.f90 -o "$peer_dir/matmul" && matmul_peer="$peer_dir/matmul"
fi
randoms=$(mktemp)
build/host/bench/random_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$randoms" --benchmark_out_format=json >/dev/null 2>&1
reductions=$(mktemp)
build/host/bench/reduction_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$reductions" --benchmark_out_format=json >/dev/null 2>&1
locations=$(mktemp)
build/host/bench/location_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$locations" --benchmark_out_format=json >/dev/null 2>&1
movements=$(mktemp)
build/host/bench/movement_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$movements" --benchmark_out_format=json >/dev/null 2>&1
python3 - "$records" "$files" "$input" "$peer" "$peer_dir" "$conversions" "$lists" "$list_peer" <<'PY'
import json, os, subprocess, sys, time, statistics
records_json, files_json, input_path, peer, peer_dir, conversions_json, lists_json, list_peer = sys.argv[1:9]
def medians(path):
    return {b["run_name"]: b for b in json.load(open(path))["benchmarks"] if b.get("aggregate_name") == "median"}
r, f = medians(records_json), medians(files_json)
rate = lambda runs, name: runs[name]["items_per_second"]
print(f"{'records':34} {'records/s':>14} {'limit: write(2) in 4 KiB':>25} {'ratio':>7}")
for label, ours, limit in [("empty PRINT to a file (2 bytes)", "EmptyPrint", "Write2Limit/2"),
                           ("80-byte records to a file", "Write80ByteRecords", "Write2Limit/82"),
                           ("80-byte records, write(2) each", "Write2PerRecord", "Write2Limit/82")]:
    print(f"{label:34} {rate(r, ours):14,.0f} {rate(r, limit):25,.0f} {rate(r, ours) / rate(r, limit):7.2f}")

c = medians(conversions_json)
ns = lambda name: c[name]["real_time"]
print()
print(f"{'conversion, ns each':34} {'ours':>8} {'to/from_chars':>14} {'glibc':>8} {'ours/chars':>11} {'ours/glibc':>11}")
for label, ours, chars, glibc in [("REAL(8) to 17 significant digits", "Ours17Digits", "ToChars17Digits", "Snprintf17Digits"),
                                  ("REAL(8) to 6 digits behind point", "OursFixed6", "ToCharsFixed6", "SnprintfFixed6"),
                                  ("decimal text to REAL(8)", "OursAtof", "FromChars", "Strtod"),
                                  ("the same, UP, DOWN and ZERO", "OursAtofDirected", "FromChars", "Strtod"),
                                  ("exact decimals, near-halfway texts", "OursAtofHard", "FromCharsHard", "StrtodHard")]:
    print(f"{label:34} {ns(ours):8.1f} {ns(chars):14.1f} {ns(glibc):8.1f} {ns(ours) / ns(chars):11.2f} {ns(ours) / ns(glibc):11.2f}")
print(f"{'decimal text to REAL(4), 9 digits':34} {ns('OursStrtof'):8.1f} {ns('FromCharsFloat'):14.1f} {'-':>8} {ns('OursStrtof') / ns('FromCharsFloat'):11.2f}")

l = medians(lists_json)
ours_real = 1e9 / l["WriteReals/2000000/real_time"]["items_per_second"]
ours_int = 1e9 / l["WriteIntegers/5000000/real_time"]["items_per_second"]
peer_real = peer_int = float("nan")
if list_peer:
    runs = []
    for _ in range(3):
        out = subprocess.run([list_peer, os.path.join(peer_dir, "list.txt")], check=True, capture_output=True, text=True).stdout
        runs.append({line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()})
    peer_real = statistics.median(r["reals"] for r in runs)
    peer_int = statistics.median(r["integers"] for r in runs)
print()
print(f"{'WRITE (u, *), 10 a statement':34} {'ours ns':>8} {'gfortran ns':>12} {'speed-up':>9}")
print(f"{'2,000,000 REAL(8) values':34} {ours_real:8.1f} {peer_real:12.1f} {peer_real / ours_real:9.2f}")
print(f"{'5,000,000 INTEGER(4) values':34} {ours_int:8.1f} {peer_int:12.1f} {peer_int / ours_int:9.2f}")

size = os.path.getsize(input_path)
def timed(command, **kw):
    runs = []
    for _ in range(5):
        start = time.perf_counter()
        subprocess.run(command, check=True, **kw)
        runs.append(time.perf_counter() - start)
    return size / statistics.median(runs) / 1e6
out = os.path.join(peer_dir, "copy.txt")
mb = lambda name: f[name + "/real_time"]["bytes_per_second"] / 1e6
rows = [("ours: read each record (IORead)", mb("ReadRecords")),
        ("ours: write each record (IOWrite)", mb("WriteRecords")),
        ("ours: copy record by record", mb("CopyRecords")),
        ("read(2) in 64 KiB blocks", mb("ReadBlocksLimit")),
        ("write(2) in 64 KiB blocks", mb("WriteBlocksLimit")),
        ("cat in > out", timed(["sh", "-c", f"cat '{input_path}' > '{out}'"])),
        ("dd if=in of=out (512-byte blocks)", timed(["dd", f"if={input_path}", f"of={out}", "status=none"]))]
if peer:
    rows.append(("gfortran: copy with '(A)'", timed([peer, input_path, out])))
else:
    rows.append(("gfortran: skipped, not installed", float("nan")))
print()
print(f"{f'file of {size / 1e6:.0f} MB':34} {'MB/s':>14}")
for label, value in rows:
    print(f"{label:34} {value:14,.0f}")
PY

# Reductions, location searches and data movement: GB/s beside a plain loop over the same
# memory (or a memcpy of the same bytes) and gfortran's intrinsics.
python3 bench/gbs_table.py "$reductions" "$reduction_peer" "reduction, GB/s (limit: plain loop)" \
  "SUM, 50M REAL(8)|SumReal8|PlainSumReal8|sum_real8" \
  "MAXVAL, 50M REAL(8)|MaxvalReal8|PlainMaxReal8|maxval_real8" \
  "SUM, 50M INTEGER(4)|SumInteger4|PlainSumInteger4|sum_integer4" \
  "SUM(A, DIM=1), 5000 x 5000 REAL(8)|SumAlong/1|PlainSumAlong/1|sum_dim1" \
  "SUM(A, DIM=2), 5000 x 5000 REAL(8)|SumAlong/2|PlainSumAlong/2|sum_dim2"
python3 bench/gbs_table.py "$locations" "$location_peer" "location search, GB/s (limit: plain loop)" \
  "MAXLOC, 50M REAL(8)|MaxlocReal8/0|PlainMaxlocReal8/0|maxloc_real8" \
  "MAXLOC, 50M REAL(8), half MASK|MaxlocReal8/1|PlainMaxlocReal8/1|maxloc_real8_mask" \
  "MAXLOC, 50M INTEGER(4)|MaxlocInteger4|PlainMaxlocInteger4|maxloc_integer4" \
  "FINDLOC, 50M REAL(8), absent|FindlocReal8/0|PlainFindlocReal8/0|findloc_real8" \
  "FINDLOC, 50M REAL(8), half MASK|FindlocReal8/1|PlainFindlocReal8/1|findloc_real8_mask" \
  "FINDLOC, 50M INTEGER(4), absent|FindlocInteger4|PlainFindlocInteger4|findloc_integer4" \
  "MAXLOC(A, DIM=1), 5000 x 5000 REAL(8)|MaxlocAlong/1|PlainMaxlocAlong/1|maxloc_dim1" \
  "MAXLOC(A, DIM=2), 5000 x 5000 REAL(8)|MaxlocAlong/2|PlainMaxlocAlong/2|maxloc_dim2"
python3 bench/gbs_table.py "$movements" "$movement_peer" "data movement, REAL(8), GB/s (limit: memcpy)" \
  "TRANSPOSE 4000 x 4000|Transpose|MemoryCopy|transpose" \
  "CSHIFT DIM=1, 5000 x 5000|Cshift/1|MemoryCopy|cshift_dim1" \
  "CSHIFT DIM=2, 5000 x 5000|Cshift/2|MemoryCopy|cshift_dim2" \
  "EOSHIFT DIM=1, 5000 x 5000|Eoshift/1|MemoryCopy|eoshift_dim1" \
  "EOSHIFT DIM=2, 5000 x 5000|Eoshift/2|MemoryCopy|eoshift_dim2" \
  "RESHAPE 25M to 5000 x 5000|Reshape|MemoryCopy|reshape" \
  "SPREAD 5000 along DIM=1|Spread/1|MemoryCopy|spread_dim1" \
  "SPREAD 5000 along DIM=2|Spread/2|MemoryCopy|spread_dim2"
python3 bench/gbs_table.py "$movements" "$movement_peer" "masked data movement, GB/s (limit: plain loop)" \
  "MERGE 5000 x 5000, half MASK|Merge|PlainMerge|merge" \
  "PACK 50M, half MASK|Pack|PlainPack|pack" \
  "UNPACK 50M, half MASK|Unpack|PlainUnpack|unpack"

# RANDOM_NUMBER: ns per element beside the memory limit and gfortran.
python3 - "$randoms" "$random_peer" <<'PY'
import json, subprocess, sys
randoms_json, peer = sys.argv[1:3]
runs = {b["run_name"]: b for b in json.load(open(randoms_json))["benchmarks"] if b.get("aggregate_name") == "median"}
ns = lambda name: 1e9 / runs[name + "/real_time"]["items_per_second"]
theirs = float("nan")
if peer:
    theirs = float(subprocess.run([peer], check=True, capture_output=True, text=True).stdout.split()[1])
limit = ns("PlainWrite")
print()
print(f"{'RANDOM_NUMBER, 50M REAL(8)':34} {'ns each':>8} {'x limit':>8} {'gfortran/ours':>14}")
for label, name in [("ours, one thread", "OneThread"), ("ours, threaded fill", "Threaded")]:
    print(f"{label:34} {ns(name):8.2f} {ns(name) / limit:8.2f} {theirs / ns(name):14.2f}")
print(f"{'plain loop writing the array':34} {limit:8.2f} {1.0:8.2f}")
print(f"{'gfortran RANDOM_NUMBER':34} {theirs:8.2f} {theirs / limit:8.2f}")
PY

# MATMUL: GFLOP/s beside OpenBLAS dgemm and gfortran's intrinsic (one thread).
if [ -x build/host/bench/matmul_bench ]; then
  products=$(mktemp)
  build/host/bench/matmul_bench --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
    --benchmark_out="$products" --benchmark_out_format=json >/dev/null 2>&1
  python3 - "$products" "$matmul_peer" <<'PY'
import json, subprocess, sys
products_json, peer = sys.argv[1:3]
runs = {b["run_name"]: b for b in json.load(open(products_json))["benchmarks"] if b.get("aggregate_name") == "median"}
gf = lambda name: runs[name + "/real_time"]["GFLOPS"]
theirs = {}
if peer:
    theirs = {line.split()[0]: float(line.split()[1]) for line in subprocess.run([peer], check=True, capture_output=True, text=True).stdout.splitlines() if line.strip()}
print()
print(f"{'REAL(8) MATMUL, GFLOP/s':24} {'ours 1T':>8} {'ours 2T':>8} {'Strassen 1T':>12} {'Strassen 2T':>12} {'OpenBLAS 1T':>12} {'OpenBLAS 2T':>12} {'gfortran':>9} {'1T/OpenBLAS':>12}")
for n in (500, 1000, 2000):
    ours1, ours2 = gf(f"Ours/{n}/1/0"), gf(f"Ours/{n}/2/0")
    s1 = gf(f"Ours/{n}/1/1") if n == 2000 else float("nan")
    s2 = gf(f"Ours/{n}/2/1") if n == 2000 else float("nan")
    blas1, blas2 = gf(f"OpenBlas/{n}/1/0"), gf(f"OpenBlas/{n}/2/0")
    g = theirs.get(f"matmul_{n}", float("nan"))
    print(f"{f'n = {n}':24} {ours1:8.1f} {ours2:8.1f} {s1:12.1f} {s2:12.1f} {blas1:12.1f} {blas2:12.1f} {g:9.1f} {ours1 / blas1:12.2f}")
PY
  rm -f "$products"
fi
# The format encoder: strlen of the same text is the floor.
formats=$(mktemp)
build/host/bench/format_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$formats" --benchmark_out_format=json >/dev/null 2>&1
python3 - "$formats" <<'PY'
import json, sys
runs = {b["run_name"]: b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("aggregate_name") == "median"}
floor = runs["StrlenFloor"]["real_time"]
print()
print(f"{'encode (1X,I5,2(F10.3,1X),A,ES24.16)':40} {'ns':>8} {'x strlen':>9} {'mallocs':>8}")
for label, name in [("run time, the context's buffer", "EncodeRuntime"),
                    ("compile time, 32-bit words", "EncodeCompileTime"),
                    ("compile time, 64-bit slots", "EncodeCompileTime64")]:
    run = runs[name]
    print(f"{label:40} {run['real_time']:8.1f} {run['real_time'] / floor:9.1f} {run['mallocs_per_encoding']:8.2f}")
print(f"{'strlen of the text (floor)':40} {floor:8.1f} {1.0:9.1f}")
PY
rm -rf "$formats"

# A formatted-I/O benchmark beside a gfortran program doing the same: the benchmark, the
# peer's source, the table's title and its rows (label, benchmark name, target, the key
# the peer prints), as a Python list.
formatted_table() {
  local bench=$1 source=$2 title=$3 rows=$4 results peer=""
  results=$(mktemp)
  "build/host/bench/$bench" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_out="$results" --benchmark_out_format=json >/dev/null 2>&1
  if command -v gfortran >/dev/null; then
    gfortran -O2 "$source" -o "$peer_dir/$bench.peer" && peer="$peer_dir/$bench.peer"
  fi
  python3 - "$results" "$peer" "$peer_dir" "$title" "$rows" <<'PY'
import ast, json, os, statistics, subprocess, sys
results, peer, peer_dir, title, rows = sys.argv[1:6]
runs = {b["run_name"]: b for b in json.load(open(results))["benchmarks"] if b.get("aggregate_name") == "median"}
ns = lambda name: 1e9 / runs[name + "/real_time"]["items_per_second"]
theirs = {}
if peer:
    samples = []
    for _ in range(3):
        out = subprocess.run([peer, os.path.join(peer_dir, "fmt.txt")], check=True, capture_output=True, text=True).stdout
        samples.append({line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()})
    theirs = {key: statistics.median(s[key] for s in samples) for key in samples[0]}
print()
print(f"{title:40} {'ours':>8} {'target':>7} {'gfortran':>9} {'speed-up':>9}")
for label, name, target, key in ast.literal_eval(rows):
    g = theirs.get(key, float("nan"))
    print(f"{label:40} {ns(name):8.1f} {target:>7} {g:9.1f} {g / ns(name):9.2f}")
PY
  rm -f "$results"
}

formatted_table fmt_write_bench bench/peers/format_write.f90 "formatted WRITE to a file, ns" '[
  ("(5ES24.16), 2,000,000 REAL(8)", "WriteES24/2000000", "200", "es24"),
  ("(10F12.4), 2,000,000 REAL(8)", "WriteF12/2000000", "130", "f12"),
  ("(10I12), 5,000,000 INTEGER(4)", "WriteI12/5000000", "30", "i12"),
  ("(I5) a statement, pre-encoded", "OneItemStatements/2000000/0", "50", "i5"),
  ("(I5) a statement, text at run time", "OneItemStatements/2000000/1", "-", "i5text")]'
formatted_table fmt_read_bench bench/peers/format_read.f90 "formatted READ from a file, ns" '[
  ("(5ES24.16), 2,000,000 REAL(8)", "ReadES24/2000000", "3x", "es24"),
  ("(10F12.4), 2,000,000 REAL(8)", "ReadF12/2000000", "3x", "f12"),
  ("(10I12), 5,000,000 INTEGER(4)", "ReadI12/5000000", "3x", "i12")]'
formatted_table list_read_bench bench/peers/list_read.f90 "list-directed READ from a file, ns" '[
  ("READ *, 2,000,000 REAL(8)", "ReadReal8/2000000", "3x", "r8"),
  ("READ *, 5,000,000 INTEGER(4)", "ReadInteger4/5000000", "3x", "i4")]'
formatted_table namelist_bench bench/peers/namelist.f90 "NAMELIST of 1,000 members on a file, ns a value" '[
  ("WRITE (u, NML=big), 50,000 values", "WriteGroup", "3x", "write"),
  ("READ (u, NML=big), 50,000 values", "ReadGroup", "3x", "read")]'

# Unformatted arrays: GB/s beside gfortran and dd, on the ordinary file system (the file
# in the page cache, its write-back in the figures) and on tmpfs (the page cache alone,
# where the copy of a record that does not start on a 64-byte boundary shows).
ufmt_peer=""
if command -v gfortran >/dev/null; then
  gfortran -O2 bench/peers/unformatted.f90 -o "$peer_dir/unformatted" && ufmt_peer="$peer_dir/unformatted"
fi
ufmt_dirs=("$TMPDIR")
if [ -w /dev/shm ] && [ "$TMPDIR" != /dev/shm ]; then ufmt_dirs+=(/dev/shm); fi
for ufmt_dir in "${ufmt_dirs[@]}"; do
  ufmt_results=$(mktemp)
  TMPDIR=$ufmt_dir build/host/bench/ufmt_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_out="$ufmt_results" --benchmark_out_format=json >/dev/null 2>&1
  python3 - "$ufmt_results" "$ufmt_peer" "$ufmt_dir" <<'PY'
import json, os, re, statistics, subprocess, sys
results, peer, directory = sys.argv[1:4]
runs = {b["run_name"]: b for b in json.load(open(results))["benchmarks"] if b.get("aggregate_name") == "median"}
def ours(prefix):
    name = next(n for n in runs if n.startswith(prefix))
    return runs[name]["bytes_per_second"] / 2**30
theirs = {}
path = os.path.join(directory, "vrn_bench_ufmt_peer")
if peer:
    samples = []
    for _ in range(5):
        out = subprocess.run([peer, path], check=True, capture_output=True, text=True).stdout
        samples.append({line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()})
    theirs = {key: statistics.median(s[key] for s in samples) for key in samples[0]}
def dd(*arguments):
    # dd's own clock, which leaves out its start-up.
    rates = []
    for _ in range(5):
        err = subprocess.run(["dd", *arguments, "bs=1M"], check=True, capture_output=True, text=True).stderr
        seconds = float(re.search(r"copied, ([0-9.e+-]+) s", err).group(1))
        rates.append(100 * 2**20 / seconds / 2**30)
    return statistics.median(rates)
dd_file = os.path.join(directory, "vrn_bench_ufmt_dd")
dd_write = dd("if=/dev/zero", f"of={dd_file}", "count=100")
dd_read = dd(f"if={dd_file}", "of=/dev/null")
os.unlink(dd_file)
nan = float("nan")
print()
print(f"unformatted arrays in {directory}")
print(f"{'100 MB of REAL(8), 1 MB records, GB/s':40} {'ours':>7} {'gfortran':>9} {'dd bs=1M':>9} {'ours/gf':>8} {'ours/dd':>8}")
for label, mine, key, limit in [("WRITE (u) x", "WriteArrays/30", "write", dd_write),
                                ("READ (u) x", "ReadArrays/30", "read", dd_read),
                                ("WRITE (u) x, swapped", "WriteArrays/31", "swapped_write", dd_write),
                                ("READ (u) x, swapped", "ReadArrays/31", "swapped_read", dd_read)]:
    g = theirs.get(key, nan)
    print(f"{label:40} {ours(mine):7.2f} {g:9.2f} {limit:9.2f} {ours(mine) / g:8.2f} {ours(mine) / limit:8.2f}")
print(f"{'swapped / unswapped, write and read':40} {ours('WriteArrays/31') / ours('WriteArrays/30'):7.2f} "
      f"{ours('ReadArrays/31') / ours('ReadArrays/30'):9.2f}")
PY
  rm -f "$ufmt_results"
done

# Whole arrays of 10,000,000 REAL(8) as one item: text forms in ns per value, unformatted
# in GB/s beside dd of the same bytes, and the section x(1:2n:2) beside the whole array.
array_results=$(mktemp)
build/host/bench/array_bench --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  --benchmark_out="$array_results" --benchmark_out_format=json >/dev/null 2>&1
array_peer=""
if command -v gfortran >/dev/null; then
  gfortran -O2 bench/peers/arrays.f90 -o "$peer_dir/arrays" && array_peer="$peer_dir/arrays"
fi
python3 - "$array_results" "$array_peer" "$TMPDIR" <<'PY'
import json, os, statistics, subprocess, sys, time
results, peer, directory = sys.argv[1:4]
runs = {b["run_name"]: b for b in json.load(open(results))["benchmarks"] if b.get("aggregate_name") == "median"}
def ours(name, field):
    key = next(k for k in runs if k.startswith(name + "/"))
    return runs[key][field]
theirs = {}
if peer:
    samples = []
    for _ in range(3):
        out = subprocess.run([peer, os.path.join(directory, "vrn_bench_array_peer")], check=True,
                             capture_output=True, text=True).stdout
        samples.append({line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()})
    theirs = {key: statistics.median(s[key] for s in samples) for key in samples[0]}
nan = float("nan")
print()
print(f"{'10,000,000 REAL(8) as one item, ns':40} {'ours':>8} {'gfortran':>9} {'speed-up':>9}")
for label, name, key in [("WRITE '(5ES24.16)' x", "WriteES24", "es24w"), ("READ '(5ES24.16)' x", "ReadES24", "es24r"),
                         ("WRITE *, x", "WriteList", "ldw"), ("READ *, x", "ReadList", "ldr")]:
    ns = 1e9 / ours(name, "items_per_second")
    g = theirs.get(key, nan)
    print(f"{label:40} {ns:8.1f} {g:9.1f} {g / ns:9.2f}")
dd_file = os.path.join(directory, "vrn_bench_array_dd")
def dd(args):
    best = []
    for _ in range(3):
        start = time.perf_counter()
        subprocess.run(["dd"] + args + ["bs=1M", "count=76", "status=none"], check=True)
        best.append(time.perf_counter() - start)
    return 80e6 / statistics.median(best) / 2**30
dd_write = dd(["if=/dev/zero", f"of={dd_file}"])
dd_read = dd([f"if={dd_file}", "of=/dev/null"])
os.unlink(dd_file)
gb = lambda name, arg: ours(f"{name}/{arg}", "bytes_per_second") / 2**30
print(f"{'unformatted, GB/s':40} {'ours':>8} {'gfortran':>9} {'dd bs=1M':>9} {'ours/dd':>8} {'strided/whole':>14}")
for label, name, key, ddr in [("WRITE (u) x", "WriteUfmt", "write", dd_write), ("READ (u) x", "ReadUfmt", "read", dd_read)]:
    whole, strided = gb(name, 0), gb(name, 1)
    print(f"{label:40} {whole:8.2f} {theirs.get('whole_' + key, nan):9.2f} {ddr:9.2f} {whole / ddr:8.2f}")
    print(f"{label + ', x(1:2n:2)':40} {strided:8.2f} {theirs.get('strided_' + key, nan):9.2f} {'':9} {'':8} {whole / strided:14.2f}")
PY
rm -f "$array_results"

# INQUIRE: ns per statement beside gfortran's.
inquire_results=$(mktemp)
build/host/bench/inquire_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$inquire_results" --benchmark_out_format=json >/dev/null 2>&1
inquire_peer=""
if command -v gfortran >/dev/null; then
  gfortran -O2 bench/peers/inquire.f90 -o "$peer_dir/inquire" && inquire_peer="$peer_dir/inquire"
fi
python3 - "$inquire_results" "$inquire_peer" "$TMPDIR" <<'PY'
import json, statistics, subprocess, sys
results, peer, directory = sys.argv[1:4]
runs = {b["run_name"]: b for b in json.load(open(results))["benchmarks"] if b.get("aggregate_name") == "median"}
theirs = {}
if peer:
    samples = []
    for _ in range(5):
        out = subprocess.run([peer, directory], check=True, capture_output=True, text=True).stdout
        samples.append({line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()})
    theirs = {key: statistics.median(s[key] for s in samples) for key in samples[0]}
nan = float("nan")
print()
print(f"{'INQUIRE, ns per statement':40} {'ours':>8} {'gfortran':>9} {'speed-up':>9}")
for label, name, key in [("INQUIRE (u, nine specifiers)", "InquireUnit", "unit"),
                         ("INQUIRE (FILE=f, EXIST=e)", "InquireFileExist", "file"),
                         ("INQUIRE (IOLENGTH=n) five items", "IOLength", "iolength")]:
    ns = 1e9 / runs[name]["items_per_second"]
    g = theirs.get(key, nan)
    print(f"{label:40} {ns:8.1f} {g:9.1f} {g / ns:9.2f}")
PY
rm -f "$inquire_results"

# C descriptors: a section walked through CFI_address beside the stride loop written by
# hand, and the conversions of a rank-3 RTD.
cfi_results=$(mktemp)
build/host/bench/cfi_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$cfi_results" --benchmark_out_format=json >/dev/null 2>&1
python3 - "$cfi_results" <<'PY'
import json, sys
runs = {b["run_name"]: b for b in json.load(open(sys.argv[1]))["benchmarks"] if b.get("aggregate_name") == "median"}
ns = lambda name: runs[name]["real_time"]
print()
hand = ns("WalkByHandWithStrides")
print(f"{'C descriptors: 10,000,000 elements, ms':40} {'ours':>8} {'by hand':>9} {'ratio':>7}")
for label, name in [("walk through CFI_address (inline)", "WalkThroughCFIAddress"),
                    ("walk through CFI_address (function)", "WalkThroughCFIAddressFunction")]:
    print(f"{label:40} {ns(name):8.1f} {hand:9.1f} {ns(name) / hand:7.2f}")
print(f"{'conversion of a rank-3 section, ns':40} {'ours':>8} {'goal':>9}")
for label, name in [("RTD to C descriptor", "ConvertRank3RTDToCDescriptor"),
                    ("C descriptor to RTD", "ConvertRank3CDescriptorToRTD")]:
    print(f"{label:40} {ns(name):8.1f} {50:9.1f}")
PY
rm -f "$cfi_results"
# Asynchronous WRITE: 1 GB of REAL(8) in 64 MB pieces with as much arithmetic between
# them, in seconds, beside a thread of pwrite(2) calls of the program's own (the machine's
# limit) and gfortran with the work async_bench calibrated. On tmpfs where there is one,
# so that the device does not decide.
async_dir=$TMPDIR
if [ -w /dev/shm ]; then async_dir=/dev/shm; fi
async_results=$(mktemp)
TMPDIR=$async_dir build/host/bench/async_bench --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true \
  --benchmark_report_aggregates_only=true --benchmark_out="$async_results" --benchmark_out_format=json >/dev/null 2>&1
async_peer=""
if command -v gfortran >/dev/null; then
  gfortran -O2 bench/peers/async.f90 -o "$peer_dir/async" && async_peer="$peer_dir/async"
fi
python3 - "$async_results" "$async_peer" "$async_dir" <<'PY'
import json, os, statistics, subprocess, sys
results, peer, directory = sys.argv[1:4]
runs = {b["run_name"]: b for b in json.load(open(results))["benchmarks"] if b.get("aggregate_name") == "median"}
seconds = lambda name, mode: runs[f"{name}/{mode}/iterations:1/real_time"]["real_time"] / 1e3
work = lambda mode: int(runs[f"ComputeOnly/{mode}/iterations:1/real_time"]["work"])
theirs = {}
if peer:
    samples = []
    for _ in range(3):
        out = subprocess.run([peer, os.path.join(directory, "vrn_bench_async_peer"), str(work(0)), str(work(1))],
                             check=True, capture_output=True, text=True).stdout
        samples.append({line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()})
    theirs = {key: statistics.median(s[key] for s in samples) for key in samples[0]}
nan = float("nan")
print()
print(f"asynchronous WRITE in {directory}")
print(f"{'1 GB in 64 MB pieces, s':46} {'compute':>8} {'write':>7} {'one by one':>11} {'overlapped':>11} {'/ longer':>9}")
for mode, title, prefix in [(0, "sequential, new file", "new_"), (1, "direct access, rewritten", "rewrite_")]:
    compute, write = seconds("ComputeOnly", mode), seconds("WriteOnly", mode)
    for label, one_by_one, overlapped in [
            (f"ours, {title}", seconds("Synchronous", mode), seconds("Overlapped", mode)),
            (f"thread of pwrite(2), {title}", nan, seconds("ThreadLimit", mode))]:
        print(f"{label:46} {compute:8.3f} {write:7.3f} {one_by_one:11.3f} {overlapped:11.3f} {overlapped / max(compute, write):9.2f}")
    g = lambda key: theirs.get(prefix + key, nan)
    print(f"{f'gfortran, {title}':46} {g('compute'):8.3f} {g('write'):7.3f} {g('synchronous'):11.3f} "
          f"{g('overlapped'):11.3f} {g('overlapped') / max(g('compute'), g('write')):9.2f}")
PY
rm -f "$async_results"
rm -rf "$records" "$files" "$peer_dir" "$conversions" "$lists" "$reductions" "$randoms"
