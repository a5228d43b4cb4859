#!/usr/bin/env bash
# The shell as its users meet it: wexd-sim, the zone and interface features
# and wex, started from a build; each run's output, errors and exit status.
set -uo pipefail
build=$1
runtime=$(mktemp -d)
export IPCQ_RUNTIME_DIR=$runtime USER=tester
cp -r "$build/par" "$runtime/par"
pids=()
cleanup() {
  kill "${pids[@]}" 2> /dev/null
  wait 2> /dev/null
  rm -rf "$runtime"
}
trap cleanup EXIT
wait_for() { # FILE TEXT: until the file holds the text, 5 s at most
  for _ in $(seq 100); do grep -qF "$2" "$1" 2> /dev/null && return 0; sleep 0.05; done
  echo "no '$2' in $1"; cat "$1"; exit 1
}
"$build/tools/wexd-sim" --par-dir "$runtime/par" --log-level events > "$runtime/sim.log" 2>&1 &
pids+=($!)
wait_for "$runtime/sim.log" "serving queues"
for feature in zone interface; do
  "$build/features/wex-$feature" 2> "$runtime/$feature.log" &
  pids+=($!)
  wait_for "$runtime/$feature.log" "commands in main tree"
done

failures=0
# run_check PROGRAM NAME STATUS EXPECTED [arguments...]: standard output and
# error together, standard input from the caller.
run_check() {
  local program=$1 name=$2 status=$3 expected=$4 output actual
  shift 4
  output=$("$program" "$@" 2>&1)
  actual=$?
  if [[ $actual != "$status" || $output != "$expected" ]]; then
    printf '%s: status %s (expected %s)\n--- got\n%s\n--- expected\n%s\n' "$name" "$actual" "$status" \
      "$output" "$expected"
    failures=$((failures + 1))
  fi
}
check() { run_check "$build/shell/wex/wex" "$@"; }
check_wexctl() { run_check "$build/tools/wexctl" "$@"; }

check "a zone, abbreviated" 0 "" -nRc \
  "conf t ; zone name Z1 vsan 10 ; member wwn 10:00:00:00:C9:12:34:56 ; member fcid 0x10203" < /dev/null
check "a configuration with a bad line" 1 \
'line 5: zone name Z2 vsan 5000
zone name Z2 vsan 5000
                  ^
% Bad value "5000" for <VSAN>: a VSAN id from 1 to 4094
line 6: member fcid 0x1
% skipped: it belongs to the failed command above' <<'CFG'
vsan 20 name Prod
interface fc1/1-2
  vsan 20
  speed 8000
zone name Z2 vsan 5000
  member fcid 0x1
CFG
running='vsan 20 name Prod
interface fc1/1
  speed 8000
  vsan 20
interface fc1/2
  speed 8000
  vsan 20
zone name Z1 vsan 10
  member wwn 10:00:00:00:c9:12:34:56
  member fcid 0x010203'
check "the running configuration" 0 "$running" -nRc "show running-config" < /dev/null
check "without a feature" 0 "${running#*  vsan 20$'\n'*  vsan 20$'\n'}" -c "show running-config exclude interface" \
  < /dev/null
check "filters in a chain" 0 '2' -nRc "show running-config | include ^interface | count" < /dev/null
check "from a line on, less a word" 0 'zone name Z1 vsan 10
  member wwn 10:00:00:00:c9:12:34:56' -nRc "show running-config | begin zone | exclude fcid" < /dev/null
check "the last lines, to a file" 0 "" -nRc "show running-config | last 2 > $runtime/last.cfg" < /dev/null
[[ $(cat "$runtime/last.cfg") == "${running##*vsan 10$'\n'}" ]] || { echo "last.cfg differs"; failures=$((failures + 1)); }
check "an unknown filter" 1 '% Unknown filter "grep": expected include, exclude, begin, count or last' \
  -nRc "show running-config | grep x" < /dev/null
check "to a file" 0 "" -nRc "show running-config > $runtime/saved.cfg " < /dev/null
[[ $(cat "$runtime/saved.cfg") == "$running" ]] || { echo "saved.cfg differs"; failures=$((failures + 1)); }
check "a misspelt word" 1 'shw run
^
% Unknown word "shw": expected configure, exit, show, copy, terminal, checkpoint, ping, ssh' -nRc "shw run" < /dev/null
check "a usage error" 2 "$("$build/shell/wex/wex" --help | sed '1s/^/wex: -e takes 0 or 1\n/')" -e 7 -c "show version"
check "control bytes, never echoed" 1 'line 1: show ?[31mred
% Control byte 0x1b at column 6: not part of any command
line 2: zone?x
% Control byte 0x00 at column 5: not part of any command' < <(printf 'show \033[31mred\nzone\000x\n')
check "a line of 100,000 bytes" 1 '% Line of 100000 bytes: a command holds at most 527' \
  -nRc "show zone $(printf '%099990d' 0)" < /dev/null

# Checkpoints: saved, compared as the commands that would restore them,
# restored, and a restore that fails put back as it was.
check "a checkpoint" 0 "" -nRc "checkpoint save before" < /dev/null
check "the same name again" 1 "% Checkpoint before exists: delete it first" -nRc "checkpoint save before" < /dev/null
check "a name that is no file's" 1 \
  "% A checkpoint's name is 1 to 31 letters, digits, '.', '_' or '-', not beginning with '.'" \
  -nRc "checkpoint save ../up" < /dev/null
check "a change" 0 "" -nRc "conf t ; no zone name Z1 vsan 10 ; interface fc1/1 ; speed 16000" < /dev/null
check "what would restore it" 0 'interface fc1/1
  speed 8000
  exit
zone name Z1 vsan 10
  member wwn 10:00:00:00:c9:12:34:56
  member fcid 0x010203
  exit' -nRc "checkpoint diff before" < /dev/null
check "restored" 0 "$running" -nRc "checkpoint restore before ; show running-config" < /dev/null
printf '%s\nvsan 30 name Lab\nzone-set name S vsan 10\n  member NoSuchZone\n' "$running" \
  > "$runtime/par/checkpoints/bad"
failed_member='line 4: member NoSuchZone
% zone NoSuchZone in VSAN 10 does not exist'
check "a restore that fails, put back" 1 "$failed_member
% Checkpoint bad is not restored: a command failed, and the running configuration is back as it was
$running" -nRc "checkpoint restore bad ; show running-config" < /dev/null
check "a restore that stops at its failure" 1 "$failed_member
% Checkpoint bad is restored in part: a command failed
zone-set name S vsan 10
  member NoSuchZone
  exit" -nRc "checkpoint restore bad stop-on-error ; checkpoint diff bad" < /dev/null
listed=$("$build/shell/wex/wex" -nRc "checkpoint list" | cut -c1-42)
[[ $listed == "NAME                              LINES  S"$'\n'"bad                                  13  2"$'\n'"before                               10  2" ]] ||
  { printf 'checkpoint list:\n%s\n' "$listed"; failures=$((failures + 1)); }
check "a deleted checkpoint" 1 "% No checkpoint bad" -nRc "checkpoint delete bad ; checkpoint show bad" < /dev/null

# The same commands offline, from two files and the main tree.
current=$(find "$runtime/par" -name 'main_tree*.par' | sort -V | tail -1)
configs=$(dirname "$0")/../../examples/configs
check_wexctl "remediate" 0 'no zone name backup vsan 20
vsan 30 name lab
interface fc1/1-4
  speed 32000
  exit
zone name hosts vsan 10
  member wwn 21:00:00:24:ff:4c:a2:11
  exit' config remediate "$configs/old.cfg" "$configs/new.cfg" --tree "$current"
printf 'vsan 10 name a\nbogus\n' > "$runtime/bogus.cfg"
: > "$runtime/empty.cfg"
check_wexctl "remediate a line no command takes" 1 "wexctl: $runtime/bogus.cfg:2: \"bogus\": no command matches it: \
Unknown word \"bogus\"
wexctl: no commands: 1 line(s) cannot be turned into commands" \
  config remediate "$configs/old.cfg" "$runtime/bogus.cfg" --tree "$current"
json='[{"mark":"-","first":1,"second":0,"text":"vsan 10 name a","children":[]},'
json+='{"mark":"-","first":2,"second":0,"text":"bogus","children":[]}]'
check_wexctl "the difference as JSON" 1 "$json" config diff "$runtime/bogus.cfg" "$runtime/empty.cfg" --json

# Completion: the shell's own words for a command line, through the bash
# completion that asks for them, and the other programs' completions.
check "the words that may end a line" 0 "member" --complete "conf t ; zone name Z vsan 1 ; mem" < /dev/null
completed() { # SCRIPT FUNCTION WORDS...: what the function offers for the last word
  bash -c 'source "$1"; COMP_WORDS=("${@:3}"); COMP_CWORD=$(($# - 3)); "$2"; printf "%s\n" "${COMPREPLY[@]}"' _ "$@"
}
completions=$(dirname "$0")/../../shell/completion
for case in "wex|_wex|$build/shell/wex/wex|-nRc|\"show ru|show running-config" \
  "wexctl|_wexctl|wexctl|config|re|remediate" "wexctl|_wexctl|wexctl|config|diff|a|b|--j|--json" \
  "wexd-sim|_wexd_sim|wexd-sim|--log-level|m|messages"; do
  IFS='|' read -r -a fields <<< "$case"
  got=$(completed "$completions/${fields[0]}" "${fields[@]:1:${#fields[@]}-2}")
  [[ $got == "${fields[-1]}" ]] || { printf 'completion %s: got %q\n' "$case" "$got"; failures=$((failures + 1)); }
done

kill -KILL "${pids[1]}" # the zone feature dies: it stays registered
wait "${pids[1]}" 2> /dev/null
check "a feature that is gone" 1 'Communication could not be established with the process
% zone did not take the command' -nRc "show zone" < /dev/null
check "its part of the configuration" 1 'Communication could not be established with the process
% zone did not give its running configuration' -nRc "show running-config" < /dev/null

# The current main tree is the highest; once corrupt, the shell walks none.
head -c 1500 /dev/zero > "$current"
check "a corrupt main tree" 2 "wex: main tree $current: 1500 bytes is not an image of whole 1000-byte nodes" \
  -nRc "show version" < /dev/null
exit $((failures > 0))
