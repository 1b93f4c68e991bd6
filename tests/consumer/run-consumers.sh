#!/usr/bin/env bash
# Installs the build tree into a temporary prefix, then builds the consumer there twice,
# with find_package(docmgr) and with pkg-config, and runs both on a new sync root.
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$source" -B "$work/with-cmake" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/with-cmake" >/dev/null
"$work/with-cmake/consumer" "$work/root-cmake"

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name docmgr.pc)")
module=$(pkg-config --variable=module docmgr)
# shellcheck disable=SC2046
c++ -std=c++17 -DDOCMGR_MODULE_FILE="\"$module\"" "$source/Consumer.cpp" -o "$work/with-pkg-config" \
  $(pkg-config --cflags --libs docmgr)
"$work/with-pkg-config" "$work/root-pkg-config"
