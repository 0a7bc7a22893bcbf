#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# check_version.sh SOURCE VERSION
#
# CMakeLists.txt says which version this is. Files that have to repeat it say the same.
set -euo pipefail

source=$1 version=$2
failed=0

# says FILE PATTERN: the first line that matches names the version.
says() {
  local line
  line=$(grep -m 1 -E "$2" "$source/$1") || line="nothing"
  if ! grep -qE "(^|[^0-9.])${version//./\\.}([^0-9.]|$)" <<<"$line"; then
    echo "$1 says '$line', CMakeLists.txt $version"
    failed=1
  fi
}

says packaging/libnorix.spec '^Version:'
says packaging/libnorix.spec '^\* '
says CHANGELOG.md '^## [0-9]'
exit "$failed"
