#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# What others do with an installation, case by case: check.sh CASE [argument …]. The cases are the
# functions below.
set -euo pipefail

project=$(dirname "$0")/project
work=$(mktemp -d)
app_pid=
stop_app() {
  if [ -n "$app_pid" ]; then
    kill "$app_pid"
    wait "$app_pid" || true
    app_pid=
  fi
}
trap 'stop_app 2>/dev/null || true; rm -rf "$work"' EXIT

# Nothing but the installation itself says where its parts are.
unset LD_LIBRARY_PATH PKG_CONFIG_PATH NORIX_DESKTOP_APPS AUL_APPID
export XDG_RUNTIME_DIR=$work/run
mkdir -m 700 "$XDG_RUNTIME_DIR"

fail() {
  echo "$*" >&2
  exit 1
}

# expect TEXT COMMAND …: the command succeeds, and prints that.
expect() {
  local expected=$1 printed
  shift
  printed=$("$@") || fail "failed: $*"
  [ "$printed" = "$expected" ] || fail "$* printed '$printed' instead of '$expected'"
}

# answers TEXT APPLICATION ASK …: the application, once it listens, answers that command with the text.
answers() {
  local expected=$1 application=$2
  shift 2
  "$application" &
  app_pid=$!
  until "$@" org.example.lamp >/dev/null 2>"$work/error"; do
    kill -0 "$app_pid" || fail "$application ended: $(cat "$work/error")"
    sleep 0.1
  done
  expect "$expected" "$@" org.example.lamp
  stop_app
}

# Installs into one folder and moves everything to another.
install() { # CMAKE BUILD FOLDER
  rm -rf "$3"
  "$1" --install "$2" --prefix "$work/first"
  mv "$work/first" "$3"
}

# The programs and libraries find each other wherever they are.
run() { # INSTALLATION
  local lost
  lost=$(find "$1" -type f \( -name '*.so*' -o -path '*/bin/*' \) -exec ldd {} + | grep 'not found') || true
  [ -z "$lost" ] || fail "not found: $lost"
  "$1/bin/norix-assistant" --version
  [ -f "$1/share/doc/norix/LICENSE" ] || fail "the licence is not installed"
}

find_package() { # CMAKE INSTALLATION [cmake option …]
  local cmake=$1 installation=$2
  shift 2
  "$cmake" -S "$project" -B "$work/build" -DNORIX_FROM=package -DCMAKE_PREFIX_PATH="$installation" "$@"
  "$cmake" --build "$work/build"
  answers "lit, in C" "$work/build/lamp" "$work/build/ask"
  answers "lit, in C++" "$work/build/lamp-cpp" "$installation/bin/norix-assistant" state

  # Its scenarios are tests: one that passes, and one that must not.
  (cd "$work/build" && ctest -R '^lamp\.lamp$' --no-tests=error --output-on-failure)
  if (cd "$work/build" && ctest -R '^lamp\.dark$' --no-tests=error --output-on-failure) >"$work/log" 2>&1; then
    fail "a scenario that expects something else passes"
  fi
  grep -q '1 of 1 scenarios failed' "$work/log" || fail "it does not fail as it should: $(cat "$work/log")"
}

pkg_config() { # INSTALLATION CC CXX [compiler option …]
  local installation=$1 cc=$2 cxx=$3 flags
  shift 3
  PKG_CONFIG_PATH=$(dirname "$(find "$installation" -name norix.pc)")
  export PKG_CONFIG_PATH
  cp "$project/tizen-manifest.xml" "$work"
  read -ra flags <<<"$(pkg-config --cflags --libs norix capi-appfw-service-application)"
  "$cc" "$@" "$project/lamp.c" -o "$work/lamp" "${flags[@]}" -Wl,-rpath,"${PKG_CONFIG_PATH%/*}"
  answers "lit, in C" "$work/lamp" "$installation/bin/norix-assistant" state

  read -ra flags <<<"$(pkg-config --cflags --libs norix-cpp capi-appfw-service-application)"
  "$cxx" -std=c++17 "$@" "$project/lamp.cpp" -o "$work/lamp" "${flags[@]}" \
    -Wl,-rpath,"${PKG_CONFIG_PATH%/*}"
  answers "lit, in C++" "$work/lamp" "$installation/bin/norix-assistant" state
}

# Each example where it was copied to; one of them is built and asked.
examples() { # CMAKE INSTALLATION SOURCE [cmake option …]
  local cmake=$1 installation=$2 source=$3 example
  shift 3
  for example in "$source"/examples/*/; do
    example=$(basename "$example")
    cp -r "$source/examples/$example" "$work"
    "$cmake" -S "$work/$example" -B "$work/$example/build" -DCMAKE_PREFIX_PATH="$installation" "$@" \
      || fail "examples/$example does not configure where it was copied to"
  done
  "$cmake" --build "$work/light/build"
  "$installation/bin/norix-assistant" doctor "$work/light/build"
}

# The guide's way to have a program's declarations written, with the example that it is about.
guide() { # CMAKE INSTALLATION SOURCE [cmake option …]
  local cmake=$1 installation=$2 source=$3
  shift 3
  cp -r "$source/examples/music" "$work"
  {
    printf 'cmake_minimum_required(VERSION 3.16)\nproject(music LANGUAGES CXX)\n'
    awk '/^```$/ { inside = 0 } inside; /^```cmake$/ { inside = 1 }' "$source/docs/writing-callbacks.md"
  } >"$work/music/CMakeLists.txt"
  "$cmake" -S "$work/music" -B "$work/build" -DCMAKE_PREFIX_PATH="$installation" "$@"
  "$cmake" --build "$work/build"
  grep -q musicVolume "$work/build/shared/res/norix-actions.json"
}

# Part of another project's build, which installs none of it.
subproject() { # CMAKE SOURCE [cmake option …]
  local cmake=$1 source=$2
  shift 2
  "$cmake" -S "$project" -B "$work/folder" -DNORIX_FROM=folder -DNORIX_SOURCE="$source" "$@"

  "$cmake" -S "$project" -B "$work/build" -DNORIX_FROM=fetch -DNORIX_SOURCE="$source" "$@"
  "$cmake" --build "$work/build"
  answers "lit, in C" "$work/build/lamp" "$work/build/ask"
  answers "lit, in C++" "$work/build/lamp-cpp" "$work/build/ask"
  "$cmake" --install "$work/build" --prefix "$work/installed"
  [ ! -e "$work/installed" ] || fail "the other project installs: $(find "$work/installed" -type f)"
}

# Whoever installed the desktop platform has no device.
auto() { # CMAKE INSTALLATION SOURCE [cmake option …]
  local cmake=$1 installation=$2 source=$3
  shift 3
  PKG_CONFIG_PATH=$(dirname "$(find "$installation" -name norix.pc)") \
    "$cmake" -S "$source" -B "$work/build" -DNORIX_BUILD_TOOLS=OFF -DNORIX_BUILD_EXAMPLES=OFF \
    -DNORIX_BUILD_TESTS=OFF "$@" | tee "$work/log"
  grep -q "interfaces come from: desktop" "$work/log"
}

# Installs once more, elsewhere, beside files of others.
uninstall() { # CMAKE BUILD
  export DESTDIR=$work/root
  mkdir -p "$DESTDIR/opt/include"
  touch "$DESTDIR/opt/include/theirs.h"
  "$1" --install "$2" --prefix /opt >/dev/null
  [ -f "$DESTDIR/opt/include/norix.h" ] || fail "nothing was installed"
  "$1" --build "$2" --target uninstall
  expect "$DESTDIR/opt/include/theirs.h" find "$DESTDIR" -not -type d
  expect "" find "$DESTDIR" -name 'norix*'
}

"$@"
