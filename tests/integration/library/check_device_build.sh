#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# check_device_build.sh CMAKE SOURCE_DIR BUILD_DIR [cmake option…]
#
# Builds the project as on a device: the platform comes from pkg-config, from where the desktop's was
# installed out of BUILD_DIR. The result has to export and need what the desktop's build does.
set -eu

cmake=$1
source=$2
build=$3
shift 3

here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/device" >"$work/install.log"

packages=$(dirname "$(find "$work/device" -name rpc-port.pc)")
libraries=$(dirname "$packages")
# What the product is built from must not come along with the platform.
rm "$packages/norix.pc" "$libraries"/libnorix.so*

export PKG_CONFIG_PATH="$packages"
export LD_LIBRARY_PATH="$libraries"
"$cmake" -S "$source" -B "$work/build" -DNORIX_PLATFORM=device -DNORIX_BUILD_TESTS=OFF "$@"
"$cmake" --build "$work/build"

if [ -e "$work/build/platform" ]; then
  echo "a device build builds the desktop platform"
  exit 1
fi
library=$(find "$work/build" -name libnorix.so)
"$here/check_exports.sh" nm "$library" "$here/exported_symbols.txt"
"$here/check_needed.sh" readelf "$library" "$here/needed_libraries.txt"
"$work/build/bin/norix-assistant" --version
