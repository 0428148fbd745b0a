#!/bin/bash
# smartprobe-replay as its user meets it: what goes to which stream, and the status.
# Usage: replay_test.sh PROGRAM EXAMPLES, the folder of machines with their reports.
set -u
program=$1
examples=$2
name=smartprobe-replay
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
  echo "FAILED: $*" >&2
  failures=$((failures + 1))
}

# check STATUS STDERR-PATTERN COMMAND...: the command ends with that status and prints
# one line that matches the pattern on standard error, or nothing for the pattern ''.
# With a status other than 0 it prints nothing on standard output.
check() {
  local status=$1 pattern=$2 got
  shift 2
  timeout 20 "$@" >"$work/out" 2>"$work/err"
  got=$?
  [ "$got" = "$status" ] || fail "$*: status $got instead of $status"
  [ "$status" = 0 ] || [ ! -s "$work/out" ] || fail "$*: printed $(head -1 "$work/out")"
  if [ -z "$pattern" ]; then
    [ ! -s "$work/err" ] || fail "$*: $(head -1 "$work/err")"
  else
    [ "$(wc -l <"$work/err")" = 1 ] || fail "$*: $(wc -l <"$work/err") lines of error"
    grep -q -- "^$name: $pattern" "$work/err" || fail "$*: $(head -1 "$work/err")"
  fi
}

# shell STATUS STDERR-PATTERN SCRIPT: the same for a script, with $0 as the program.
shell() {
  check "$1" "$2" bash -c "$3" "$program" "$machine"
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
check 1 "$work/none: No such file" "$program" "$work/none"
check 1 "$work: Is a directory" "$program" "$work"
check 1 ': No such file' "$program" ''
check 1 '.*a.*b: No such file' "$program" $'a\n\e[1m\xffb'
printf '<plist>\n<dict>\n' >"$work/truncated"
check 1 "$work/truncated: line 3: the file ends inside <dict>" "$program" "$work/truncated"
check 1 '/dev/null: the file is empty' "$program" /dev/null
check 1 '/dev/zero: the file is larger than 64 MiB' "$program" /dev/zero
shell 1 '-: the file is larger than 64 MiB' 'yes "<!-- -->" | "$0" -'
shell 1 '-: Bad file descriptor' '"$0" - <&-'
shell 1 'standard output: No space left' '"$0" "$1" >/dev/full'
shell 1 'standard output: No space left' '"$0" --help >/dev/full'
shell 1 'standard output: Bad file descriptor' '"$0" "$1" >&-'
shell 1 'standard output: Broken pipe' \
  '{ sleep 0.2; exec "$0" "$1"; } | true; exit "${PIPESTATUS[0]}"'

[ "$failures" = 0 ]
