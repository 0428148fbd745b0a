#!/bin/bash
# smartprobe-replay as its user meets it: what goes to which stream, and the status.
# Usage: replay_test.sh PROGRAM EXAMPLES, the folder of machines with their reports.
. "$(dirname "$0")/program_test.sh"
program=$1
examples=$2
name=smartprobe-replay

for input in "$examples"/*.plist; do
  for script in '"$0" "$1"' '"$0" - <"$1"'; do
    shell 0 '' "$script"
    cmp "$work/out" "${input%.plist}.report" || fail "the report of $input"
  done
done
check 0 '' "$program" --version
grep -Eq "^$name [0-9]+\.[0-9]+\.[0-9]+$" "$work/out" || fail '--version'
check 0 '' "$program" -h
grep -q "^Usage: $name" "$work/out" || fail '--help'

for arguments in '' '--unknown' 'one two'; do
  # shellcheck disable=SC2086
  "$program" $arguments >"$work/out" 2>"$work/err"
  [ $? = 2 ] && [ ! -s "$work/out" ] && [[ $(<"$work/err") == "$name: "*'; see --help' ]] ||
    fail "usage after '$arguments'"
done

check 1 "$name: $work: Is a directory" "$program" "$work"
check 1 "$name: .*a.*b: No such file" "$program" $'a\n\e[1m\xffb'
check 1 "$name: /dev/zero: the file is larger than 64 MiB" "$program" /dev/zero
[ ! -s "$work/out" ] || fail "printed $(head -1 "$work/out") of a file that was refused"
shell 1 "$name: standard output: No space left" '"$0" "$1" >/dev/full'
shell 1 "$name: standard output: Bad file descriptor" '"$0" "$1" >&-'
piped='{ sleep 0.2; exec env --$signal-signal=PIPE "$0" "$1"; } | true; exit "${PIPESTATUS[0]}"'
shell 141 '' "signal=default; $piped"
shell 1 "$name: standard output: Broken pipe" "signal=ignore; $piped"

[ ! -e "$work/failed" ]
