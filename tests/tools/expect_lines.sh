# Sourced by the checks that run a script and look for lines in what it
# printed: expect TEXT says so when TEXT is not in $output (whose name is
# $output_name) and sets failed=1.
failed=0
expect() {
  if ! grep -qF -- "$1" <<< "$output"; then
    echo "missing from $output_name: $1"
    failed=1
  fi
}
