#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# check_exports.sh NM LIBRARY LIST
#
# Holds what a library exports against a list of "<kind> <symbol>" lines, both ways. The kinds are
# nm's: T a function, D a variable, R a constant.
set -eu

nm=$1
library=$2
list=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$nm" -D --defined-only --format=posix "$library" | awk '{ print $2, $1 }' | LC_ALL=C sort >"$work/exported"
LC_ALL=C sort "$list" >"$work/listed"

LC_ALL=C comm -13 "$work/listed" "$work/exported" >"$work/new"
LC_ALL=C comm -23 "$work/listed" "$work/exported" >"$work/missing"

if [ -s "$work/new" ]; then
  echo "exported and not listed (if that is meant, add to $list):"
  cat "$work/new"
fi
if [ -s "$work/missing" ]; then
  echo "listed and not exported (applications that are linked to it break):"
  cat "$work/missing"
fi
[ ! -s "$work/new" ] && [ ! -s "$work/missing" ]
