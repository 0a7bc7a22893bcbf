# SPDX-License-Identifier: Apache-2.0
"""scripts/mutate: see there."""

import argparse
import hashlib
import os
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from queue import Empty, SimpleQueue

from equivalent import read_list
from mutants import mutants_of
from workspace import BuildError, Workspace

PROJECT = Path(__file__).resolve().parents[2]
LIST = Path(__file__).with_name("equivalent.txt")
NEEDED_PERCENT = 95


def main():
    options = parse_options()
    equivalent = read_list(LIST.read_text())
    files = options.files or sorted(
        str(path.relative_to(PROJECT)) for path in PROJECT.glob("src/**/*")
        if path.suffix in (".h", ".cpp"))
    mutants = [mutant for file in files
               for mutant in mutants_of(file, (PROJECT / file).read_text())]
    warn_of_stale_entries(equivalent, files, mutants)
    if options.sample and options.sample < len(mutants):
        mutants = sample_of(mutants, options.sample, options.seed)
    if options.list:
        for mutant in mutants:
            print(f"{mutant.file}:{mutant.line}\n{mutant.describe()}\n")
        return 0

    try:
        results = run(mutants, options.jobs)
    except BuildError as error:
        print(f"scripts/mutate: the unmutated sources: {error}", file=sys.stderr)
        return 2
    return report(results, equivalent)


def parse_options():
    parser = argparse.ArgumentParser(
        prog="scripts/mutate",
        description="Breaks the library on purpose, one small change at a time, and says which "
                    "changes its unit tests do not notice.")
    parser.add_argument("--sample", type=int, metavar="N", help="try N mutants drawn at random")
    parser.add_argument("--seed", type=int, default=1, metavar="S", help="of the draw (default: 1)")
    parser.add_argument("--jobs", type=int, default=1, metavar="J",
                        help="try J at the same time, each in a build folder of its own")
    parser.add_argument("--list", action="store_true", help="only print the mutants")
    parser.add_argument("files", nargs="*", metavar="FILE", help="default: all of src/")
    options = parser.parse_args()
    for file in options.files:
        if not (PROJECT / file).is_file():
            parser.error(f"no such file: {file} (give it relative to the project's folder)")
    return options


def sample_of(mutants, size, seed):
    """Draws by the mutants' own hashes: other mutants may come and go, and the sample stays."""
    def rank(mutant):
        return hashlib.sha256(repr((seed, mutant.key)).encode()).digest()

    chosen = {id(mutant) for mutant in sorted(mutants, key=rank)[:size]}
    return [mutant for mutant in mutants if id(mutant) in chosen]


def warn_of_stale_entries(equivalent, files, mutants):
    keys = {mutant.key for mutant in mutants}
    for key in equivalent:
        if key[0] in files and key not in keys:
            print(f"{LIST.name}: there is no such mutant any more: {key[0]} @@ {key[1]}: "
                  f"- {' '.join(key[3])} + {' '.join(key[4])}", file=sys.stderr)


def run(mutants, jobs):
    """Tries every mutant, file by file, and returns (mutant, outcome) in their order."""
    by_file = defaultdict(list)
    for mutant in mutants:
        by_file[mutant.file].append(mutant)
    waiting = SimpleQueue()
    for file_mutants in by_file.values():
        # In parts, so that one long file does not keep one job busy at the end.
        for start in range(0, len(file_mutants), 20):
            waiting.put(file_mutants[start : start + 20])
    outcomes = {}

    def work(number):
        folder = PROJECT / "build" / "mutation" / str(number)
        workspace = Workspace(PROJECT, folder, max(1, (os.cpu_count() or 1) // jobs))
        workspace.prepare()
        while True:
            try:
                part = waiting.get_nowait()
            except Empty:
                return
            for mutant in part:
                outcomes[id(mutant)] = workspace.try_mutant(mutant)
                show_progress(mutant, outcomes, len(mutants))
            workspace.restore(part[0].file)

    with ThreadPoolExecutor(jobs) as pool:
        for finished in [pool.submit(work, number) for number in range(1, jobs + 1)]:
            finished.result()
    return [(mutant, outcomes[id(mutant)]) for mutant in mutants]


def show_progress(mutant, outcomes, total):
    outcome = outcomes[id(mutant)]
    if outcome == "survived" or len(outcomes) % 50 == 0 or sys.stderr.isatty():
        print(f"[{len(outcomes)}/{total}] {mutant.file}:{mutant.line} {outcome}",
              file=sys.stderr, flush=True)


def report(results, equivalent):
    counted = [(mutant, outcome) for mutant, outcome in results if outcome != "not compiled"]
    listed = [(mutant, outcome) for mutant, outcome in counted if mutant.key in equivalent]
    judged = [(mutant, outcome) for mutant, outcome in counted if mutant.key not in equivalent]
    survivors = [mutant for mutant, outcome in judged if outcome == "survived"]
    wrongly_listed = [mutant for mutant, outcome in listed if outcome != "survived"]

    for mutant, outcome in listed:
        if outcome == "survived":
            print(f"equivalent: {mutant.file}:{mutant.line}: {equivalent[mutant.key]}")
    for mutant in wrongly_listed:
        print(f"{LIST.name} lists a mutant that a test kills; take it out:\n{mutant.describe()}\n")
    for mutant in survivors:
        print(f"survived: {mutant.file}:{mutant.line}\n{mutant.describe()}\n")

    timeouts = sum(outcome == "timeout" for _, outcome in judged)
    print(f"{len(results)} mutants: {len(results) - len(counted)} do not compile, "
          f"{len(listed)} are listed as equivalent, {timeouts} of the killed ran out of time")
    killed = len(judged) - len(survivors)
    print(f"mutation: {killed} of {len(judged)} killed", flush=True)
    enough = 100 * killed >= NEEDED_PERCENT * len(judged)
    return 0 if enough and not wrongly_listed else 1


if __name__ == "__main__":
    sys.exit(main())
