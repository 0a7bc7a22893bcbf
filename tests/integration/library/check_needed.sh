#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# check_needed.sh READELF LIBRARY LIST
#
# Fails when a library needs another one that the list does not name. What a sanitizer adds to an
# instrumented build is no dependency of the library.
set -eu

readelf=$1
library=$2
list=$3

needed=$("$readelf" -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -Ev '^lib(asan|ubsan)\.so')
[ -n "$needed" ]

if extra=$(echo "$needed" | grep -Fxv -f "$list"); then
  echo "$library also needs, beyond $list:"
  echo "$extra"
  exit 1
fi
