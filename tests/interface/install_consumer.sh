#!/usr/bin/env bash
# Installs the build into a temporary prefix, then builds a small C program
# against it twice, through pkg-config and through find_package(wex), and runs
# both; then runs each installed program (the sixth argument names them).
set -euo pipefail
build=$1 source=$2 cc=$3 cflags=$4 emulator=${5:-} programs=${6:-}

prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name wex.pc -print -quit)")/..

export PKG_CONFIG_PATH=$libdir/pkgconfig
# shellcheck disable=SC2086,SC2046
"$cc" $cflags -std=c11 -Wall -Wextra -Werror "$source" -o "$prefix/consumer_pc" \
  $(pkg-config --cflags --libs wex) -Wl,-rpath,"$libdir"
$emulator "$prefix/consumer_pc"

mkdir -p "$prefix/cmake_consumer"
cat >"$prefix/cmake_consumer/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(consumer C)
find_package(wex REQUIRED)
add_executable(consumer_cmake "$source")
target_link_libraries(consumer_cmake PRIVATE wex::wex)
CMAKE
cmake -S "$prefix/cmake_consumer" -B "$prefix/cmake_build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$cflags" -DCMAKE_BUILD_RPATH="$libdir" >/dev/null
cmake --build "$prefix/cmake_build" >/dev/null
$emulator "$prefix/cmake_build/consumer_cmake"
# The programs run from the prefix, finding the platform library there.
for program in $programs; do
  version=$($emulator "$prefix/bin/$program" --version) || true
  [[ $version == "$program "* ]] || { echo "$program does not run installed: '$version'"; exit 1; }
done
echo "consumer built and ran through pkg-config and find_package"
