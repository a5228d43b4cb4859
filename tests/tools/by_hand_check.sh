#!/usr/bin/env bash
# Runs the README's "by hand" block exactly as written, from a folder where
# examples/ and build/demo/ are the project's and the build's, and checks
# what each step printed. The third argument is the C flags a program built
# against this build needs (its sanitizers), given to the block as CFLAGS.
set -uo pipefail
root=$1
build=$2
export CFLAGS=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/build"
ln -s "$root/examples" "$work/examples"
ln -s "$build" "$work/build/demo"
block=$(sed -n '/^## wexd-sim, the shell and wexctl by hand/,/^## /p' "$root/README.md" | sed -n '/^```sh$/,/^```$/p' | sed '1d;$d')
output=$(cd "$work" && bash -c "$block" 2>&1)
output_name="the block's output"
# shellcheck source=tests/tools/expect_lines.sh
. "$root/tests/tools/expect_lines.sh"
expect "zone name Z1 vsan 10"
expect "  member wwn 10:00:00:00:c9:12:34:56"
expect "Displaying Interface Table"
expect "port-channel"
expect "zone-admin"
expect "nodes, valid from node 0"
expect "NodeName:configure"
expect "    +  speed 32000"
expect "    -zone name backup vsan 20"
expect "no zone name backup vsan 20"
expect "  member wwn 21:00:00:24:ff:4c:a2:11"
expect "one                                   2  2"
expect "banner motd Welcome to the lab"
if grep -qE "^(wexctl|wex): |^% " <<< "$output"; then
  echo "a command failed:"
  grep -E "^(wexctl|wex): |^% " <<< "$output"
  failed=1
fi
[ $failed = 0 ] || printf '%s\n' "$output"
exit $failed
