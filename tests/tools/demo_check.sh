#!/usr/bin/env bash
# Runs the demo on an existing build and checks that the shell and the
# features walked the road, that every process stopped, and that nothing is
# left running.
set -uo pipefail
root=$1
build=$2
output=$(WEX_DEMO_BUILD_DIR="$build" "$root/scripts/demo" 2>&1 < /dev/null) # no terminal: the scripted walk
status=$?
output_name="the demo's output"
# shellcheck source=tests/tools/expect_lines.sh
. "$root/tests/tools/expect_lines.sh"
expect "zone: commands in main tree 4"
expect "interface: commands in main tree 5"
expect "fc1/2              10  down   8000   auto  "
expect "% Permission denied: no role of this user permits exec commands of feature exec"
expect "   wex_generate_running_cfg_rollback(before.cfg) -> 0"
expect "   wex_system(\"show zone vsan 10\") -> 0"
expect "    +zone name Z1 vsan 10"
expect "    +  member wwn 10:00:00:00:c9:12:34:56"
expect "   wex_is_diff_same(before, after) -> 0"
expect "    4.     deny      exec                   *"
expect "zone: stopped"
expect "interface: stopped"
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
  echo "a process of the demo is still running after it"
  failed=1
fi
if ((status != 0 || failed)); then
  echo "demo exit status $status; its output:"
  echo "$output"
  exit 1
fi
echo "demo walked the road"
