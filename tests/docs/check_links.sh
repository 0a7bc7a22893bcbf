#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_links.sh SOURCE
#
# Says which links of the project's pages lead nowhere: to no file, or to no heading of a page.
set -euo pipefail

cd "$1"

# prose PAGE: without its blocks of code.
prose() {
  awk '/^```/ { inside = !inside; next } !inside' "$1"
}

# anchors PAGE: what its headings are called in links.
anchors() {
  prose "$1" | sed -n 's/^##* *//p' | tr '[:upper:]' '[:lower:]' \
    | sed -E "s/[^[:alnum:] _-]//g; s/ /-/g"
}

count=0 failed=0
broken() {
  echo "$1: nothing is at $2"
  failed=1
}

# check PAGE LINK
check() {
  local file=${2%%#*} anchor=''
  [[ $2 != *'#'* ]] || anchor=${2#*#}
  local target=${1%/*}/$file
  [ -n "$file" ] || target=$1
  if [ ! -e "$target" ]; then
    broken "$1" "$2"
  elif [ -n "$anchor" ] && ! anchors "$target" | grep -qxF -- "$anchor"; then
    broken "$1" "$2"
  fi
}

while IFS= read -r page; do
  while IFS= read -r link; do
    count=$((count + 1))
    check "$page" "$link"
  done < <(prose "$page" | grep -oE '\]\([^)]+\)' | sed 's/^](//; s/)$//' | grep -vE '^(https?|mailto):')
done < <(find . -name '*.md' -not -path './build/*')
echo "$count links"
[ "$failed" -eq 0 ] && [ "$count" -gt 0 ]
