#!/usr/bin/env bash
# The minimal C feature of examples/feature, as a feature developer meets
# it: the build installed into a prefix, the example and its unit test built
# against that prefix with CMake and with pkg-config; the unit tests pass
# against the recording wexd, and each build of the feature, run against
# the installed wexd-sim and wex, shows its command in the running
# configuration.
# Arguments: the build folder, the example's folder, the C compiler and its
# flags.
set -euo pipefail
build=$1 example=$2 cc=$3 cflags=$4
work=$(mktemp -d)
pids=()
cleanup() {
  kill "${pids[@]}" 2> /dev/null || true
  wait 2> /dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name wex-feature.pc -print -quit)")/..

cmake -S "$example" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" \
  -DCMAKE_C_FLAGS="$cflags" -DCMAKE_BUILD_RPATH="$libdir" >/dev/null
cmake --build "$work/cmake" >/dev/null
export PKG_CONFIG_PATH=$libdir/pkgconfig
# shellcheck disable=SC2086,SC2046
"$cc" $cflags -std=c11 -Wall -Wextra -Werror "$example/main.c" "$example/motd.c" -o "$work/wex-motd-pc" \
  $(pkg-config --cflags --libs wex-feature) -Wl,-rpath,"$libdir"
# shellcheck disable=SC2086,SC2046
"$cc" $cflags -std=c11 -Wall -Wextra -Werror "$example/motd_test.c" "$example/motd.c" -o "$work/motd_test-pc" \
  $(pkg-config --cflags --libs wex-feature wex-testing) -Wl,-rpath,"$libdir"
# The feature's own unit test, against the recording wexd, each build.
"$work/cmake/motd_test"
"$work/motd_test-pc"

wait_for() { # FILE TEXT: until the file holds the text, 5 s at most
  for _ in $(seq 100); do grep -qF "$2" "$1" 2> /dev/null && return 0; sleep 0.05; done
  echo "no '$2' in $1:"; cat "$1"; exit 1
}
# run_feature PROGRAM: the system with that build of the feature; the
# message set through the shell is in the running configuration.
run_feature() {
  local runtime
  runtime=$(mktemp -d "$work/runtime.XXXXXX")
  export IPCQ_RUNTIME_DIR=$runtime USER=tester
  cp -r "$prefix/share/wex/par" "$runtime/par"
  cp "$work/cmake/motd.par" "$runtime/par/"
  "$prefix/bin/wexd-sim" --par-dir "$runtime/par" > "$runtime/sim.log" 2>&1 &
  pids+=($!)
  wait_for "$runtime/sim.log" "serving"
  "$1" 2> "$runtime/motd.log" &
  pids+=($!)
  wait_for "$runtime/motd.log" "commands in main tree"
  "$prefix/bin/wex" -nRc "conf t ; banner motd Welcome to the lab"
  shown=$("$prefix/bin/wex" -nRc "show running-config")
  [[ $shown == "banner motd Welcome to the lab" ]] || { echo "$1: running configuration '$shown'"; exit 1; }
  kill "${pids[@]}"
  wait 2> /dev/null || true
  pids=()
  grep -qF "motd: stopped" "$runtime/motd.log" || { echo "$1 did not stop cleanly"; exit 1; }
}
run_feature "$work/cmake/wex-motd"
run_feature "$work/wex-motd-pc"
echo "the example feature, built with CMake and with pkg-config, serves its command"
