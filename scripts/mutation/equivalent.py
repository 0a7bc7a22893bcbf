# SPDX-License-Identifier: Apache-2.0
"""The list of mutants that nobody could tell from the original: equivalent.txt.

An entry is a comment that says why, and the mutant as scripts/mutate prints it:

    # The map is empty here in any case.
    src/a/b.cpp @@ void b::clear() {
      the two lines
      before the change
    - the line as it is
    + the line as it becomes
"""

import re
from itertools import takewhile


def read_list(text):
    """Mutant key → reason."""
    found = {}
    for paragraph in re.split(r"\n\s*\n", text):
        lines = [line for line in paragraph.splitlines() if line.strip()]
        comment = list(takewhile(lambda line: line.startswith("#"), lines))
        if len(lines) > len(comment):
            reason = " ".join(line.lstrip("# ") for line in comment)
            found[_key(lines[len(comment) :])] = reason
    return found


def _key(lines):
    file, _, function = lines[0].partition("@@")
    parts = {mark: tuple(line[1:].strip() for line in lines[1:] if line[0] == mark)
             for mark in " -+"}
    return (file.strip(), function.strip(), parts[" "], parts["-"], parts["+"])
