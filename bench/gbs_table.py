#!/usr/bin/env python3
"""Prints one table of GB/s medians from a Google Benchmark JSON file beside the limit each
row is measured against (a memcpy or a plain loop in the same run) and a gfortran peer.

  gbs_table.py RESULTS.json PEER TITLE "label|ours|limit|peer name" ...

PEER is a program printing "name GB/s" lines, or "" when gfortran is missing. The column
"time / limit" is our time over the limit's for the same bytes."""
import json
import subprocess
import sys


def main(results_json, peer, title, *rows):
    runs = {b["run_name"]: b for b in json.load(open(results_json))["benchmarks"] if b.get("aggregate_name") == "median"}
    gbs = lambda name: runs[name]["bytes_per_second"] / 1e9
    theirs = {}
    if peer:
        output = subprocess.run([peer], check=True, capture_output=True, text=True).stdout
        theirs = {line.split()[0]: float(line.split()[1]) for line in output.splitlines() if line.strip()}
    print()
    print(f"{title:42} {'ours':>8} {'limit':>8} {'time / limit':>13} {'gfortran':>9} {'ours / gfortran':>16}")
    for row in rows:
        label, ours, limit, peer_name = row.split("|")
        g = theirs.get(peer_name, float("nan"))
        print(f"{label:42} {gbs(ours):8.2f} {gbs(limit):8.2f} {gbs(limit) / gbs(ours):13.2f} {g:9.2f} {gbs(ours) / g:16.2f}")


if __name__ == "__main__":
    main(*sys.argv[1:])
