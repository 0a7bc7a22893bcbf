# SPDX-License-Identifier: Apache-2.0
"""Says what gcovr found not covered, with the reasons that are known, and judges the figures.

usage: coverage_report.py GCOVR_JSON REASONS

The file of reasons has entries of the form

    file: source line
      why no test can reach it
"""

import json
import math
import sys
from pathlib import Path

NEEDED_LINES = 100
NEEDED_BRANCHES = 95


def main(report, reasons_file):
    reasons = read_reasons(Path(reasons_file))
    lines, branches = Count(), Count()
    for file in json.loads(Path(report).read_text())["files"]:
        source = Path(file["file"]).read_text().splitlines()
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            taken = [branch["count"] > 0 for branch in line["branches"]]
            lines.add([line["count"] > 0])
            branches.add(taken)
            if line["count"] == 0 or not all(taken):
                number = line["line_number"]
                text = source[number - 1].strip()
                what = f"{taken.count(False)} of {len(taken)} branches not taken"
                print(f"{file['file']}:{number}: {what if line['count'] else 'not run'}: {text}")
                reason = reasons.pop((file["file"], text), "no reason is known: write a test")
                print(f"    {reason}")
    for file, text in reasons:
        print(f"{reasons_file}: covered by now, or gone: {file}: {text}")

    print(f"{lines} lines, {branches} branches")
    print(f"coverage: lines {lines.percent()}% branches {branches.percent()}%")
    enough = lines.share() >= NEEDED_LINES and branches.share() >= NEEDED_BRANCHES
    return 0 if enough else 1


class Count:
    def __init__(self):
        self._covered = 0
        self._all = 0

    def add(self, covered):
        self._covered += sum(covered)
        self._all += len(covered)

    def share(self):
        return 100 * self._covered / self._all if self._all else 0

    def percent(self):
        """Rounded down: 100.0 means all of them."""
        return math.floor(self.share() * 10) / 10

    def __str__(self):
        return f"{self._covered} of {self._all}"


def read_reasons(file):
    """(file, source line) → reason."""
    found = {}
    for line in file.read_text().splitlines():
        if line.startswith(" "):
            found[entry] = f"{found[entry]} {line.strip()}".strip()
        elif line and not line.startswith("#"):
            entry = tuple(line.split(": ", 1))
            found[entry] = ""
    return found


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
