#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_refused.sh SPENT_TEXT FILE COMPILER [option…]
#
# Compiles FILE twice: without the lines that are refused it compiles, without a warning; with them,
# the compiler names each of these lines and gives the text in its comment, as often as it stands
# there. SPENT in a comment stands for SPENT_TEXT, which differs between the compilers.
set -euo pipefail

spent=$1
file=$2
shift 2
compile=("$@")

"${compile[@]}" -Werror -DNOTHING_REFUSED "$file"

messages=$(mktemp)
trap 'rm -f "$messages"' EXIT
if LC_ALL=C "${compile[@]}" "$file" 2>"$messages"; then
  echo "$file compiles, with everything that should be refused"
  exit 1
fi

failures=0
lines=$(grep -n '// refused: ' "$file")
while IFS= read -r line; do
  number=${line%%:*}
  text=${line##*// refused: }
  text=${text/SPENT/$spent}
  wanted=$(grep -c "// refused: ${text//\*/\\*}" "$file" || true)
  [ "$wanted" -gt 0 ] || wanted=$(grep -c '// refused: SPENT' "$file")
  found=$(grep -F "error: " "$messages" | grep -c -F "$text" || true)
  if [ "$found" -lt "$wanted" ] || ! grep -q -F "$(basename "$file"):$number:" "$messages"; then
    echo "$file:$number: not refused with \"$text\" ($found of $wanted)"
    failures=1
  fi
done <<<"$lines"
if [ "$failures" -ne 0 ]; then
  cat "$messages"
fi
exit "$failures"
