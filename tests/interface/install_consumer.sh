#!/usr/bin/env bash
# Installs the build into a temporary prefix, then builds a small C program
# against it through pkg-config and through find_package(wex), each with the
# shared and with the static libraries, and runs them; then runs each
# installed program (the sixth argument names them).
set -euo pipefail
build=$1 source=$2 cc=$3 cflags=$4 emulator=${5:-} programs=${6:-}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name wex.pc -print -quit)")/..
for file in include/wex-platform/ipcq.h include/wex-platform/bcp.h "${libdir#"$prefix/"}/libwex_platform.a"; do
  [[ -f $prefix/$file ]] || { echo "not installed: $file"; exit 1; }
done
if [[ -n $programs ]]; then
  for file in share/wex/par/exec.par share/wex/par/zone.par share/wex/grammars/zone.tree share/wex/roles.conf \
    share/bash-completion/completions/wex; do
    [[ -f $prefix/$file ]] || { echo "not installed: $file"; exit 1; }
  done
  for page in wex wexctl wexd-sim wexd-sim.conf wex-grammar; do
    MANPATH=$prefix/share/man man -w "$page" >/dev/null || { echo "man $page finds no page"; exit 1; }
  done
fi

export PKG_CONFIG_PATH=$libdir/pkgconfig
# shellcheck disable=SC2086,SC2046
"$cc" $cflags -std=c11 -Wall -Wextra -Werror "$source" -o "$prefix/consumer_pc" \
  $(pkg-config --cflags --libs wex) -Wl,-rpath,"$libdir"
$emulator "$prefix/consumer_pc"
# Static: from a copy of the prefix without the shared libraries, so that the
# link line of --static must bring everything the archives need.
cp -r "$prefix" "$work/static"
static_libdir=$work/static/$(realpath --relative-to="$prefix" "$libdir")
rm "$static_libdir"/libwex*.so*
# shellcheck disable=SC2086,SC2046
PKG_CONFIG_PATH=$static_libdir/pkgconfig "$cc" $cflags -std=c11 -Wall -Wextra -Werror "$source" \
  -o "$prefix/consumer_static" $(PKG_CONFIG_PATH=$static_libdir/pkgconfig pkg-config --cflags --static --libs wex)
$emulator "$prefix/consumer_static"

mkdir -p "$prefix/cmake_consumer"
cat >"$prefix/cmake_consumer/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(consumer C)
find_package(wex REQUIRED)
add_executable(consumer_cmake "$source")
target_link_libraries(consumer_cmake PRIVATE wex::wex wex::wex_platform)
add_executable(consumer_cmake_static "$source")
target_link_libraries(consumer_cmake_static PRIVATE wex::wex_static)
CMAKE
cmake -S "$prefix/cmake_consumer" -B "$prefix/cmake_build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$cflags" -DCMAKE_BUILD_RPATH="$libdir" >/dev/null
cmake --build "$prefix/cmake_build" >/dev/null
$emulator "$prefix/cmake_build/consumer_cmake"
$emulator "$prefix/cmake_build/consumer_cmake_static"
# The programs run from the prefix, finding the platform library there.
for program in $programs; do
  version=$($emulator "$prefix/bin/$program" --version) || true
  [[ $version == "$program "* ]] || { echo "$program does not run installed: '$version'"; exit 1; }
done
echo "consumer built and ran through pkg-config and find_package, shared and static"
