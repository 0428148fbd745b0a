#!/bin/bash
# The colors of smartprobe-read on a terminal, which script(1) gives it. Skipped where
# there is none to be had.
# Usage: color_test.sh PROGRAM EXAMPLES, the folder of the reports.
. "$(dirname "$0")/program_test.sh"
script -qec true /dev/null >"$work/out" 2>&1 </dev/null || {
  echo "SKIPPED: no terminal: $(head -1 "$work/out")"
  exit 77
}

# colors ENVIRONMENT: how many lines have them.
colors() {
  env -u NO_COLOR timeout 20 script -qec "env $1 $program $report" /dev/null </dev/null |
    grep -c $'\e'
}

program=$1
report=$2/server.report
[ "$(colors NO_COLOR=)" = 17 ] || fail 'not all colors on a terminal'
[ "$(colors NO_COLOR=1)" = 0 ] || fail 'colors with NO_COLOR'
[ "$failures" = 0 ]
