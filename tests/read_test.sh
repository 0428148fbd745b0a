#!/bin/bash
# smartprobe-read as its user and its user's monitoring meet it: streams, statuses, files.
# Usage: read_test.sh PROGRAM EXAMPLES, the folder of the reports.
. "$(dirname "$0")/program_test.sh"
program=$1
name=smartprobe-read
input=$2/server.report
cd "$work" || exit 1

# printed FIRST-LINE [LINES]: what the last script printed begins so, and is so long.
printed() {
  [ "$(head -1 "$work/out")" = "$1" ] || fail "printed $(head -1 "$work/out") instead of $1"
  [ $# = 1 ] || [ "$(wc -l <"$work/out")" = "$2" ] || fail "$(wc -l <"$work/out") lines after $1"
}

heading='/dev/rdisk0: OK'
figures=' | drives=9 failing=2 not_read=3 nothing_known=0 gone=0 caution=0 worn=0 hot=0 no_attributes=2'
critical='CRITICAL: failing: /dev/rdisk8 (the drive.s own self-assessment: failed, Start.*, Reallocated Sector Count is 21, threshold 36: failure predicted, .*), /dev/rdisk9 (.*); not read: /dev/rdisk4, /dev/rdisk10, (no path); attributes not known: /dev/rdisk11, /dev/rdisk12'
head -21 "$input" >"$work/good"
head -30 "$input" >"$work/cut"

shell 0 '' '"$0" "$1"'
printed "$heading" 130
cp "$work/out" "$work/table"
shell 0 '' '"$0" --json "$1"'
# Without what only a recording has, or knows better.
plain() {
  sed -E 's/"(capacity|health)":"[^"]*",//g; s/"reasons":\[[^]]*\],//; s/,"not_read_drives.*(,"version)/\1/
    s/,"(worst|raw|[a-z_]+_(celsius|sectors|bytes|hours|cycles|rate|status))":[0-9]+//g' "$work/out"
}
plain >"$work/json"
# A recording is shown as its report is, with more, and a bad one as what it is.
for script in '"$0" --json "${1%.report}.plist"' '{ echo; cat "${1%.report}.plist"; } | "$0" --json -'; do
  shell 0 '' "$script"
  plain | cmp - "$work/json" || fail "a recording in $script"
done
head -50 "${input%.report}.plist" >"$work/cut.plist"
shell 1 "$name: cut.plist: line 51: the file ends inside <" '"$0" --output file cut.plist'
shell 3 '' '"$0" --check cut.plist'
shell 1 "$name: -: a binary property list" 'printf bplist00 | "$0"'
for form in --table --brief --json --prometheus; do
  shell 1 "$name: cut: line 31: the file ends inside a drive\$" "\"\$0\" $form cut"
  grep -q 6RY0W4LH "$work/out" || fail "$form: what comes before the damage is lost"
  shell 1 "$name: standard output: No space left" "\"\$0\" $form good >/dev/full"
done
shell 1 "$name: -: line 1: not a line of a report\$" 'echo "{}" | "$0" --json'
[ ! -s "$work/out" ] || fail 'a form of what is neither a report nor a recording'
shell 1 "$name: none: No such file or directory\$" '"$0" none'
shell 1 "$name: -: line [0-9]*: the report is larger than 4 MiB\$" 'yes "$(cat good)" | "$0" --brief'
shell 3 "$name: standard output: No space left" '"$0" --check good >/dev/full'

shell 2 "smartprobe ${critical//[()]/.}.*\$" '"$0" --check --json --output - "$1"'
printed '{"drives":[' 11
shell 3 '' '"$0" --check cut'
printed "smartprobe UNKNOWN: not read: /dev/rdisk4; cut: line 31: the file ends inside a drive${figures/9*2 not_read=3*/1 failing=0 not_read=1 nothing_known=0 gone=0 caution=0 worn=0 hot=0 no_attributes=0}" 26
shell 3 '' '"$0" --check none'
printed 'smartprobe UNKNOWN: none: No such file or directory' 1
shell 3 '' '"$0" --check </dev/null'
printed 'smartprobe UNKNOWN: no drives' 2

# Old answers are no news.
then=$(date -u -d '60 hours ago' +%FT%TZ)
sed "s/<key>Data</<key>Date<\\/key><date>$then<\\/date>&/" "${input/server.report/laptop.plist}" >old
shell 3 '' '"$0" --check old'
grep -q '^smartprobe UNKNOWN: the newest answers are 2 days old |' "$work/out" || fail 'old answers'
shell 0 '' '"$0" --check --max-age=3 old'
for days in 0 3651 x; do
  shell 3 '' "\"\$0\" --check --max-age=$days old"
  printed "$name: --max-age needs a number of days from 1 to 3650; see --help" 1
done
shell 3 "$name: --max-age goes with --check; see --help\$" '"$0" --max-age=3 old'
shell 3 "$name: --host reads no FILE; see --help\$" '"$0" --host old'

# A file is replaced whole, and by nothing but the form of a whole report.
shell 2 '' '"$0" --check --output file "$1"'
head -1 "$work/out" | grep -q "^smartprobe $critical$figures$" || fail "the verdict beside a file: $(<"$work/out")"
cmp "$work/file" "$work/table" || fail '--output'
shell 1 "$name: cut: line 31: [^;]*\$" '"$0" --output file cut'
shell 3 '' '"$0" --check --prometheus --output file cut'
shell 1 "$name: file: File too large" \
  'ulimit -f 1; "$0" --prometheus --output file "$1"'
shell 2 '' '"$0" --check --output none/file "$1"'
head -1 "$work/out" | grep -q "(no path); none/file: No such file or directory; attributes not known" || fail "the verdict of a file that cannot be written"
for arguments in '--json --table' '--output= file' '--output "" file' '--output' '--jso2' '-j' '--json=1'; do
  shell 3 "$name: .*; see --help\$" "\"\$0\" $arguments <\"\$1\""
  shell 3 '' "\"\$0\" --chec $arguments <\"\$1\""
  [[ $(<"$work/out") == "$name: "*'; see --help' ]] || fail "monitoring sees nothing of $arguments"
done
cmp "$work/file" "$work/table" || fail 'a failure replaced the file'
shell 1 "$name: --output=: No such file" '"$0" -- --output='

# terminal ENVIRONMENT: what is printed on a terminal of 50 columns, which script(1) gives.
terminal() {
  env -u NO_COLOR TERM=xterm timeout 20 script -qec "stty cols 50; env $1 $program $input" \
    /dev/null </dev/null | tr -d '\r'
}
if script -qec true /dev/null >"$work/out" 2>&1 </dev/null; then
  [ "$(terminal NO_COLOR= | grep -c $'\e')" = 26 ] || fail 'the colors on a terminal'
  for environment in NO_COLOR=1 TERM=dumb; do
    terminal $environment | LC_ALL=C.UTF-8 grep -E $'\e|.{51}' && fail "on a terminal with $environment"
  done
  timeout 20 script -qec "$program" /dev/null </dev/null | grep 'waiting for a report' >/dev/null ||
    fail 'nobody is told that the program waits'
else
  echo "SKIPPED: no terminal: $(head -1 "$work/out")"
fi

[ ! -e "$work/failed" ]
