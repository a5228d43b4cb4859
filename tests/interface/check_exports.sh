#!/usr/bin/env bash
# Compares the dynamic symbols that a shared library defines with a list of
# public names: any name missing or extra fails.
set -euo pipefail
library=$1
names=$2

expected=$(grep -E '^[A-Za-z_]' "$names" | sort -u)
# Version nodes show as absolute symbols; they are not names of the library.
actual=$(nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort -u)

if ! diff <(echo "$expected") <(echo "$actual") >/tmp/exports.$$; then
  echo "exported symbols differ from $names (< missing, > extra):"
  cat /tmp/exports.$$
  rm -f /tmp/exports.$$
  exit 1
fi
rm -f /tmp/exports.$$
echo "$(echo "$expected" | wc -l) public names exported, nothing else"
