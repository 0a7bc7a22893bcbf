#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_errors.sh SOURCE CC [compiler option …]
#
# Holds the numbers of docs/errors.md against the headers, and that no error of norix.h is missing there.
set -euo pipefail

source=$1 cc=$2
shift 2
page=$source/docs/errors.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

{
  printf '#include <%s>\n' norix.h bundle.h rpc-port.h app_manager.h
  # A row "| number | `CONSTANT`, `CONSTANT` | …" becomes an assertion for each constant.
  awk -F'|' '/^\| -?[0-9]+ \| `/ {
    n = split($3, names, ",")
    for (i = 1; i <= n; ++i) { gsub(/[` ]/, "", names[i])
      print "_Static_assert(" names[i] " ==" $2 ", \"" names[i] "\");" } }' "$page"
} >"$work/errors.c"
"$cc" -std=gnu11 -fsyntax-only "$@" "$work/errors.c"

failed=0
while IFS= read -r constant; do
  if ! grep -q "_Static_assert($constant " "$work/errors.c"; then
    echo "docs/errors.md does not have $constant"
    failed=1
  fi
done < <(grep -oE '^  NORIX_ERROR_[A-Z_]+' "$source/include/norix.h" | tr -d ' ')
grep -c _Static_assert "$work/errors.c"
[ "$failed" -eq 0 ]
