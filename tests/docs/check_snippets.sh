#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_snippets.sh SOURCE CC CXX [compiler option …]
#
# Compiles every block of C and C++ on the project's pages, each by itself.
set -euo pipefail

source=$1 cc=$2 cxx=$3
shift 3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# One file per block, named for its page and line: README.md:9.c
find "$source" -name '*.md' -not -path "$source/build/*" -printf '%P\n' | sort | while read -r page; do
  awk -v prefix="$work/${page//\//+}" '
    /^```(c|cpp)$/ { file = prefix ":" NR "." substr($0, 4); printf "" > file; next }
    /^```$/ { file = "" }
    file != "" { print > file }' "$source/$page"
done

count=0
failed=0
for snippet in "$work"/*; do
  [ -e "$snippet" ] || break
  # EFL's headers take the C library's extensions for granted.
  compiler=("$cc" -std=gnu99)
  [ "${snippet##*.}" = c ] || compiler=("$cxx" -std=c++17)
  count=$((count + 1))
  if ! "${compiler[@]}" -Wall -Wextra -Werror -Wno-unused -Wno-unused-parameter \
    -fsyntax-only "$@" "$snippet"; then
    echo "does not compile: $(basename "${snippet%.*}" | tr + /)"
    failed=1
  fi
done
echo "$count snippets"
[ "$failed" -eq 0 ] && [ "$count" -gt 0 ]
