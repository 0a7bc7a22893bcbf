#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_options.sh SOURCE: every option of the build is explained, and every one that is explained exists.
set -euo pipefail
cd "$1"

there=$(find . -path ./build -prune -o \( -name CMakeLists.txt -o -name '*.cmake' \) -exec cat {} + |
  sed -nE 's/^ *(option|set)\((NORIX_[A-Z_]+).*(CACHE|"|OFF|ON).*/\2/p' | sort -u)
# shellcheck disable=SC2016 # The page's backticks.
explained=$(sed -nE 's/^\| `(NORIX_[A-Z_]+)` \|.*/\1/p' docs/building.md | sort -u)
if ! diff <(echo "$there") <(echo "$explained") >&2; then
  echo "left: the build's options; right: those of docs/building.md" >&2
  exit 1
fi
[ -n "$there" ]
