#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_log_lines.sh SOURCE
#
# Compares the log texts of the library's sources with those of docs/log-lines.md, both ways, and looks
# for what the page says of the C++ interface in its headers.
set -euo pipefail

source=$1
page=$source/docs/log-lines.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The calls that log, up to their text.
call='(NORIX|STUB)_LOG(_FORMAT)?\( *|dlog_print\( *[A-Z_]+, *[A-Za-z_:"-]+, *'
# Their texts, one a line, adjacent string literals joined; empty for a call with another argument.
texts_of_sources() {
  find "$source/src" -regex '.*\.\(cpp\|h\|hpp\)' -exec cat {} + \
    | sed -z 's/\\\n//g' | sed -E '/^ *(\/\/| \*|#)/d' | tr '\n' ' ' \
    | grep -oE "($call)(\"([^\"\\\\]|\\\\.)*\" *)*" \
    | sed -E "s/^($call)//; s/\" +\"//g; s/^\"//; s/\" *\$//"
}

# The first cells of the tables that are about texts, of the C++ interface or of the library.
texts_of_page() { # cpp|c
  awk -v part="$1" '
       /^## / { found = /C\+\+/ ? "cpp" : "c" }
       /^\| Text \|/ { inside = 1; getline; next }
       !/^\|/ { inside = 0 }
       inside && found == part { sub(/^\| `/, ""); sub(/` \|.*/, ""); print }' "$page"
}

# All string literals of the headers, adjacent ones joined.
literals_of_headers() {
  find "$source/include" -name '*.hpp' -exec cat {} + | tr '\n' ' ' | sed -E 's/" +"//g'
}

texts_of_sources | sort -u >"$work/sources"
texts_of_page c | sort -u >"$work/page"
literals_of_headers >"$work/headers"

failed=0
# complain SENTENCE: prints the lines of standard input after the sentence, and fails if there are any.
complain() {
  while IFS= read -r text; do
    echo "$1: $text"
    failed=1
  done
}
complain "docs/log-lines.md does not explain" < <(comm -23 <(grep . "$work/sources") "$work/page")
complain "nothing logs what docs/log-lines.md explains" < <(comm -13 "$work/sources" "$work/page")
complain "a call whose text is no literal, which this test cannot read" < <(grep -n '^$' "$work/sources")

# The name of the action, which stands before most of them, is put there elsewhere.
while IFS= read -r text; do
  grep -qF -- "\"${text#"'%s': "}\"" "$work/headers" || grep -qF -- "\"$text\"" "$work/headers" || echo "$text"
done < <(texts_of_page cpp) >"$work/unknown"
complain "norix.hpp does not log" <"$work/unknown"

echo "$(wc -l <"$work/page") texts"
[ "$failed" -eq 0 ] && [ -s "$work/page" ]
