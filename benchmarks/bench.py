#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks of a build folder; scripts/bench builds that folder and calls this."""

import argparse
import json
import os
import subprocess
import sys

_HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(_HERE, "report"))
sys.dont_write_bytecode = True  # The source folder stays as it is.

import counted  # pylint: disable=wrong-import-position
import figures  # pylint: disable=wrong-import-position
import publish  # pylint: disable=wrong-import-position

_EXPECTED = os.path.join(_HERE, "expected.json")
_TOLERANCE = 0.03

_QUICK = {
    "counted": 200,
    "roundtrip": ["--rounds=3", "--exchanges=100"],
    "scale": ["--rounds=3", "--exchanges=50", "--requests=5000"],
    "size": ["--starts=3"],
    "tools": ["--rounds=3", "--exchanges=50", "--starts=3"],
    "bundle": ["--rounds=3"],
    "library": ["--benchmark_min_time=0.01"],
}
_FULL = {
    "counted": 1000,
    "roundtrip": ["--rounds=21", "--exchanges=1000"],
    "scale": ["--rounds=21", "--exchanges=500", "--requests=1000000"],
    "size": ["--starts=20"],
    "tools": ["--rounds=21", "--exchanges=200", "--starts=5"],
    "bundle": ["--rounds=21"],
    "library": ["--benchmark_min_time=0.5"],
}


def _write_json(path, content):
    with open(path, "w", encoding="utf-8") as file:
        json.dump(content, file, indent=2, sort_keys=True)
        file.write("\n")


def _measure(programs, folder, counts):
    results = {}
    for operation in ("size", "tools", "roundtrip", "scale", "bundle"):
        print(f"Running benchmark_{operation} …", flush=True)
        output = subprocess.run([os.path.join(programs, "benchmark_" + operation),
                                 *counts[operation]], check=True, stdout=subprocess.PIPE).stdout
        results[operation] = json.loads(output)
        _write_json(os.path.join(folder, f"{operation}.json"), results[operation])
    print("Running benchmark_library …", flush=True)
    subprocess.run([os.path.join(programs, "benchmark_library"), *counts["library"]], check=True)
    print("Counting under callgrind …", flush=True)
    results["counted"] = counted.count(programs, folder, counts["counted"])
    return results


def _compare(results):
    with open(_EXPECTED, encoding="utf-8") as file:
        expected = json.load(file)
    rows, grown = counted.compare(expected, results["counted"], _TOLERANCE)
    if not rows:
        print("\nThe counted instructions and allocations are as they were.")
        return True
    print(f"\nPer request, and not within {_TOLERANCE:.0%} of benchmarks/expected.json:")
    print(publish.table(["What", "Expected", "Counted", ""], rows))
    print("\nIf that is meant to be so: scripts/bench --accept")
    return not grown


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", help="the build folder")
    parser.add_argument("--quick", action="store_true",
                        help="small counts; compares what is counted, and publishes nothing")
    parser.add_argument("--accept", action="store_true",
                        help="stores what is counted as what is expected from now on")
    arguments = parser.parse_args()

    folder = os.path.join(arguments.build, "benchmarks", "results")
    os.makedirs(folder, exist_ok=True)
    results = _measure(os.path.join(arguments.build, "bin"), folder,
                       _QUICK if arguments.quick else _FULL)
    _write_json(os.path.join(folder, "results.json"), results)
    for row in figures.budget_rows(results):
        verdict = "holds " if row.holds else "MISSES"
        print(f"{verdict}  {row.what}: {row.measured}; budget {row.budget}")
    if arguments.accept:
        _write_json(_EXPECTED, results["counted"])
    if not arguments.quick:
        publish.publish(results, os.path.dirname(_HERE))
    return 0 if _compare(results) else 1


if __name__ == "__main__":
    sys.exit(main())
