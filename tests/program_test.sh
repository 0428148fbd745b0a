# shellcheck shell=bash
# What the tests of programs share; they read it in. It makes the folder $work and
# removes it at the end.
set -uo pipefail
work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT # debootstrap mounts, and may be interrupted

fail() {
  echo "FAILED: $*" >&2
  touch "$work/failed" # a subshell counts too
}

# check STATUS STDERR-PATTERN COMMAND...: the command ends with that status and prints
# one line that matches the pattern on standard error, or nothing for the pattern ''.
# What it printed is left in $work/out and $work/err.
check() {
  local status=$1 pattern=$2 got
  shift 2
  timeout 20 "$@" >"$work/out" 2>"$work/err"
  got=$?
  [ "$got" = "$status" ] || fail "$*: status $got instead of $status"
  [ "$(grep -c '' "$work/err")" = $((${#pattern} > 0)) ] &&
    grep -Eq -- "^$pattern" <<<"$(<"$work/err")" || fail "$*: $(<"$work/err")"
}

# shell STATUS STDERR-PATTERN SCRIPT: the same for a script, with $0 as the program and $1 as
# its $input.
shell() {
  check "$1" "$2" bash -c "$3" "$program" "$input"
}
