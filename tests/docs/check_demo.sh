#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_demo.sh SOURCE BUILD
#
# Holds what README.md says that scripts/demo prints, up to the …, against what the demo prints.
set -euo pipefail

source=$1 build=$2
shown=$(sed -n '/^Building (preset release/,/^…$/p' "$source/README.md" | sed '1d; $d')
printed=$(PATH=$build/bin:$PATH "$source/examples/norix-demo" "$build/examples/music")
if [ -z "$shown" ] || [[ $printed != "$shown"* ]]; then
  printf 'README.md shows\n%s\nand the demo prints\n%s\n' "$shown" "$printed"
  exit 1
fi
