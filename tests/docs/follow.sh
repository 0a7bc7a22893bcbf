#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# follow.sh INSTALLATION EXAMPLES PAGE
#
# Does what a page says, in a folder that holds the built examples alone, with what is installed: a block of code after "as `name`"
# is saved as that file, the lines "$ command" of a console block are run, and what they print is
# compared with the lines below them, where … stands for anything.
set -uo pipefail

installation=$1 examples=$2 page=$3
work=$(mktemp -d)
trap 'stop_all; rm -rf "$work"' EXIT

# The applications that a page left running, also when it went wrong.
stop_all() {
  for application in "$work"/run/app-running/*; do
    [ ! -e "$application" ] || norix-assistant launch --stop "${application##*/}" >"$work/stopped" 2>&1
  done
}

mkdir -m 700 "$work/run"
mkdir -p "$work/blocks" "$work/folder/build/release"
ln -s "$examples" "$work/folder/build/release/examples"
export PATH=$installation/bin:$PATH XDG_RUNTIME_DIR=$work/run HOME=$work
PKG_CONFIG_PATH=$(dirname "$(find "$installation" -name norix.pc)")
LD_LIBRARY_PATH=$(dirname "$(find "$installation" -name libnorix.so)")
export PKG_CONFIG_PATH LD_LIBRARY_PATH

# One file per block, numbered; its first line is the file's name, or "console".
awk -v prefix="$work/blocks/" '
  !inside && /^```[a-z]/ {
    name = ""
    if (match(said, /.*as `[^`]+`/)) { name = substr(said, 1, RLENGTH - 1); sub(/.*`/, "", name) }
    if ($0 == "```console") name = "console"
    inside = 1; file = sprintf("%s%03d", prefix, ++count); print name > file; said = ""; next }
  inside && /^```$/ { inside = 0; next }
  inside { print > file; next }
  /^```/ { inside = 1; file = "/dev/null"; next }
  /^$/ { if (said !~ /:$/) said = ""; next }
  { said = said " " $0 }' "$page"

failed=0 steps=0
# compare COMMAND EXPECTED PRINTED
compare() {
  local pattern
  pattern=$(sed 's/[][*?\\]/\\&/g; s/…/*/g' <<<"$2")
  # shellcheck disable=SC2053 # a pattern
  if [[ $3 != $pattern ]]; then
    printf '%s: "%s" prints\n%s\nand not\n%s\n' "${page##*/}" "$1" "$3" "$2"
    failed=1
  fi
}

# console FILE: runs the commands of a block.
console() {
  local line command='' expected=''
  while IFS= read -r line || [ -n "$command" ]; do
    case $line in
      '$ '* | '')
        if [ -n "$command" ]; then
          compare "$command" "${expected#$'\n'}" "$(eval "$command" 2>&1)"
          steps=$((steps + 1))
        fi
        command=${line#'$ '} expected=''
        ;;
      *) expected=$expected$'\n'$line ;;
    esac
  done <"$1"
}

cd "$work/folder" || exit 1
for block in "$work"/blocks/*; do
  name=$(head -1 "$block")
  tail -n +2 "$block" >"$work/block"
  case $name in
    console) console "$work/block" ;;
    '') ;;
    *) mkdir -p "$(dirname "$name")" && cp "$work/block" "$name" && steps=$((steps + 1)) ;;
  esac
done
echo "$steps steps"
[ "$failed" -eq 0 ] && [ "$steps" -gt 0 ]
