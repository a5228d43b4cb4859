#!/usr/bin/env bash
# Each manual page renders without a warning from the formatter.
set -uo pipefail
failed=0
for page in "$@"; do
  warnings=$(MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
  if [[ -n $warnings ]]; then
    printf '%s:\n%s\n' "$page" "$warnings"
    failed=1
  fi
done
exit $failed
