#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# answers.sh NORIX-ASSISTANT APPLICATION TEXT COMMAND …
#
# Starts the application in a folder, and expects the command to print that text.
set -euo pipefail

assistant=$1 folder=$2 expected=$3
shift 3
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR HOME=$XDG_RUNTIME_DIR
application=$(sed -n 's/.*appid="\([^"]*\)".*/\1/p' "$folder/tizen-manifest.xml")
trap '"$assistant" launch --stop "$application" || true; rm -rf "$XDG_RUNTIME_DIR"' EXIT

"$assistant" launch "$folder" --wait
printed=$("$@")
if [ "$printed" != "$expected" ]; then
  echo "$* printed '$printed' instead of '$expected'"
  exit 1
fi
