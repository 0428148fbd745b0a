#!/bin/bash
# smartprobe-replay as its user meets it: what goes to which stream, and the status.
# Usage: replay_test.sh PROGRAM EXAMPLES, the folder of machines with their reports.
. "$(dirname "$0")/program_test.sh"
program=$1
examples=$2
name=smartprobe-replay

# refused STDERR-PATTERN ARGUMENT...: the program fails with that line and prints nothing.
refused() {
  check 1 "$name: $1" "$program" "${@:2}"
  [ ! -s "$work/out" ] || fail "${*:2}: printed $(head -1 "$work/out")"
}

# shell STATUS STDERR-PATTERN SCRIPT: the same for a script, with $0 as the program.
shell() {
  check "$1" "${2:+$name: $2}" bash -c "$3" "$program" "$machine"
}

for machine in "$examples"/*.plist; do
  check 0 '' "$program" "$machine"
  cmp "$work/out" "${machine%.plist}.report" || fail "the report of $machine"
done

shell 0 '' '"$0" - <"$1"'
cmp "$work/out" "${machine%.plist}.report" || fail 'the report from standard input'
check 0 '' "$program" --version
grep -Eq "^$name [0-9]+\.[0-9]+\.[0-9]+$" "$work/out" || fail '--version'
check 0 '' "$program" --help
grep -q "^Usage: $name" "$work/out" || fail '--help'

for arguments in '' '--unknown' 'one two'; do
  # shellcheck disable=SC2086
  "$program" $arguments >"$work/out" 2>"$work/err"
  [ $? = 2 ] && [ ! -s "$work/out" ] && grep -q "^Usage: $name" "$work/err" ||
    fail "usage after '$arguments'"
done

cp "$machine" "$work/-dash"
check 0 '' "$program" -- "$work/-dash"
refused "$work: Is a directory" "$work"
refused '.*a.*b: No such file' $'a\n\e[1m\xffb'
printf '<plist>\n<dict>\n' >"$work/truncated"
refused "$work/truncated: line 3: the file ends inside <dict>" "$work/truncated"
refused '/dev/zero: the file is larger than 64 MiB' /dev/zero
shell 1 'standard output: No space left' '"$0" "$1" >/dev/full'
shell 1 'standard output: Bad file descriptor' '"$0" "$1" >&-'
shell 1 'standard output: Broken pipe' \
  '{ sleep 0.2; exec "$0" "$1"; } | true; exit "${PIPESTATUS[0]}"'

[ "$failures" = 0 ]
