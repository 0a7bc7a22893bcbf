#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# check_imports.sh NM LIBRARY
#
# Fails when a library imports what would take a lock, make a thread or a process, or read or change
# the environment. pthread_once is allowed: it guards the first creation of the process-wide objects.
set -eu

nm=$1
library=$2

imported=$("$nm" -D --undefined-only --format=posix "$library" | awk '{ sub(/@.*/, "", $1); print $1 }')
forbidden=$(echo "$imported" | grep -E '^(pthread_|sem_|mtx_|cnd_|thrd_|call_once|(secure_)?getenv|setenv|putenv|unsetenv|clearenv|_*environ|v?fork|clone|posix_spawn|exec|system|popen|_ZNSt6thread|_ZNKSt6thread|_ZNSt5mutex|_ZNSt15recursive_mutex|_ZNSt18condition_variable|_ZSt9call_once)' \
  | grep -v -x 'pthread_once' || true)
[ -n "$imported" ] || { echo "no imports found in $library"; exit 1; }

if [ -n "$forbidden" ]; then
  echo "imported, and neither a lock, a thread, a process nor the environment is the library's business:"
  echo "$forbidden"
  exit 1
fi
