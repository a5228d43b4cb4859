#!/usr/bin/env bash
# Runs the demo on an existing build and checks that it walked every step,
# that wexd-sim saw the conversation and stopped, and that nothing is left
# running.
set -uo pipefail
root=$1
build=$2
output=$(WEX_DEMO_BUILD_DIR="$build" "$root/scripts/demo" 2>&1)
status=$?
output_name="the demo's output"
# shellcheck source=tests/tools/expect_lines.sh
. "$root/tests/tools/expect_lines.sh"
expect "== Step 1: register the parse tree, the interface type and subtype bounds =="
expect "== Step 2: store and reload the parse-tree image, keep it in a tree table =="
expect "== Step 3: a user types \"zone name Z1 vsan 10 member interface fc1/1-4\": the pinfo =="
expect "== Step 4: the feature reads its arguments and dumps the record =="
expect "== Step 5: announce the configuration change =="
expect "== Step 6: running-configuration snapshots around the change, and their difference =="
expect "    +zone name Z1 vsan 10"
expect "intf-register            mask 0x2 name fc"
expect "cfg-change-notify"
expect "    4.     deny      exec                   *"
expect "wexd-sim: stopped"
# The demo's own simulator, told apart from those of tests running beside it
# by its runtime directory.
runtime=$(sed -n 's/^== Starting wexd-sim (runtime directory \(.*\)) ==$/\1/p' <<< "$output")
# A process that still has the demo's runtime directory in its environment.
still_running() {
  local environment
  for environment in /proc/[0-9]*/environ; do
    tr '\0' '\n' 2> /dev/null < "$environment" | grep -qxF "IPCQ_RUNTIME_DIR=$runtime" && return 0
  done
  return 1
}
if [[ -z "$runtime" ]] || still_running; then
  echo "wexd-sim is still running after the demo"
  failed=1
fi
if ((status != 0 || failed)); then
  echo "demo exit status $status; its output:"
  echo "$output"
  exit 1
fi
echo "demo walked all six steps"
