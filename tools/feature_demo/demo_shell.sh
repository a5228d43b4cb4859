#!/bin/sh
# Stands in for the switch's shell in the demo: "show running-config" prints
# the running configuration that the demo keeps in a file.
for arg in "$@"; do
  case "$arg" in
    "show running-config") cat "${WEX_DEMO_RUNNING_CONFIG:?}"; exit 0 ;;
  esac
done
echo "demo shell: only 'show running-config' is known here" >&2
exit 1
