#!/bin/sh
# Runs a test program on its own virtual X server (xvfb-run -a), for the tests that draw
# with OpenGL (Mesa's software rendering under Xvfb). Exits with 77, which ctest reports
# as skipped, when xvfb-run is not installed. Two servers started at the same moment may
# pick the same display number; a run whose server failed to start is tried again.
set -u
if ! command -v xvfb-run >/dev/null 2>&1; then
  echo "xvfb-run is not installed: the OpenGL tests are skipped (scripts/install-deps.sh installs it)" >&2
  exit 77
fi
serverLog=$(mktemp)
trap 'rm -f "$serverLog"' EXIT
attempt=1
while :; do
  : > "$serverLog"
  xvfb-run -a -e "$serverLog" -s "-screen 0 1280x1024x24 -nolisten tcp" "$@"
  status=$?
  if [ "$status" -ne 0 ] && [ "$attempt" -lt 3 ] && grep -q "Fatal server error" "$serverLog"; then
    attempt=$((attempt + 1))
    sleep 1
    continue
  fi
  exit "$status"
done
