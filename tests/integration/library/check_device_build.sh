#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# check_device_build.sh CMAKE SOURCE_DIR BUILD_DIR [cmake option…]
#
# Builds the library as for a device: the platform comes from pkg-config, from where the desktop's was
# installed out of BUILD_DIR. The result has to export and need what the desktop's build does, and the
# build to ask for nothing that only the tools and the desktop need.
set -eu

cmake=$1
source=$2
build=$3
shift 3

here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for component in desktop desktop-dev; do
  "$cmake" --install "$build" --prefix "$work/device" --component "$component" >>"$work/install.log"
done
packages=$(dirname "$(find "$work/device" -name rpc-port.pc)")

PKG_CONFIG_PATH="$packages" "$cmake" -S "$source" -B "$work/build" -DNORIX_PLATFORM=device \
  -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON \
  -DCMAKE_DISABLE_FIND_PACKAGE_pugixml=ON -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON "$@"
"$cmake" --build "$work/build"

built=$(find "$work/build" -type f -name '*.so*' -o -type f -perm -u+x -path '*/bin/*')
case $built in
  */lib/libnorix.so.*) ;;
  *)
    echo "a device build makes more than the library, or not even that: $built"
    exit 1
    ;;
esac
"$here/check_exports.sh" nm "$built" "$here/exported_symbols.txt"
"$here/check_needed.sh" readelf "$built" "$here/needed_libraries.txt"
