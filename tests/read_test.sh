#!/bin/bash
# smartprobe-read as its user and its user's monitoring meet it: streams, statuses,
# files, terminals, and what the real programs of Prometheus make of its output.
# Usage: read_test.sh CACHE PROGRAM EXAMPLES, the folder for those programs, which are
# fetched unless they are installed, and the folder of the reports. Without them that
# part is left out, but with CI=true it fails.
. "$(dirname "$0")/program_test.sh"
cache=$1
program=$2
examples=$3
name=smartprobe-read
report=$examples/server.report
exporter=
clean_up() {
  [ -z "$exporter" ] || kill "$exporter"
}
cd "$work" || exit 1

# shell STATUS STDERR-PATTERN SCRIPT: check for a script, with $0 as the program and $1 as
# a report.
shell() {
  check "$1" "$2" bash -c "$3" "$program" "$report"
}

# printed FIRST-LINE [LINES]: what the last script printed begins so, and is so long.
printed() {
  [ "$(head -1 "$work/out")" = "$1" ] || fail "printed $(head -1 "$work/out") instead of $1"
  [ $# = 1 ] || [ "$(wc -l <"$work/out")" = "$2" ] || fail "$(wc -l <"$work/out") lines after $1"
}

heading='/dev/rdisk0, MAXTOR STM3250820A, revision 3.AAE, 250.06 GB, serial 6RY0W4LH: OK'
critical='smartprobe CRITICAL: failing: /dev/rdisk8, /dev/rdisk9; not read: /dev/rdisk4, /dev/rdisk10, (no path)'
head -21 "$report" >"$work/good"
head -30 "$report" >"$work/cut"

shell 0 '' '"$0" "$1"'
printed "$heading" 115
cp "$work/out" "$work/table"
for form in --table --json --prometheus; do
  shell 1 "$name: cut: line 31: the file ends inside a drive\$" "\"\$0\" $form cut"
  grep -q 6RY0W4LH "$work/out" || fail "$form: what comes before the damage is lost"
  [ $form != --json ] || [ "$(tail -1 "$work/out")" = '],"failed":["/dev/rdisk4"]}' ] ||
    fail "no document: $(tail -1 "$work/out")"
  shell 1 "$name: standard output: No space left" "\"\$0\" $form good >/dev/full"
done
shell 1 "$name: none: No such file or directory\$" '"$0" none'
shell 1 "$name: /: Is a directory\$" '"$0" /'
shell 1 "$name: /dev/zero: line 1: the line is longer than 1 MiB\$" '"$0" /dev/zero'
for form in --table --json; do # these do not wait for the end of an endless report
  shell 1 "$name: standard output: Broken pipe" \
    'yes "$(cat good)" | { "$0" '$form'; echo $? >status; } | true; exit "$(cat status)"'
done
shell 3 "$name: standard output: No space left" '"$0" --check good >/dev/full'

shell 0 '' '"$0" --check - <good'
printed 'smartprobe OK: 1 drive' 22
shell 2 "${critical//[()]/.}\$" '"$0" --check --json "$1"'
printed '{"drives":[' 11
shell 3 '' '"$0" --check cut'
printed 'smartprobe UNKNOWN: not read: /dev/rdisk4; cut: line 31: the file ends inside a drive' 25
shell 3 '' '"$0" --check none'
printed 'smartprobe UNKNOWN: none: No such file or directory' 1
shell 3 '' '"$0" --check </dev/null'
printed 'smartprobe UNKNOWN: no drives' 1
"$program" --json --table 2>"$work/err" >"$work/out" <"$report"
[ $? = 3 ] && [ ! -s "$work/out" ] && grep -q "^Usage: $name" "$work/err" || fail 'two forms at once'

# A file is replaced whole, and not at all when there is nothing to write.
shell 2 '' '"$0" --check --output file "$1"'
printed "$critical" 1
cmp "$work/file" "$work/table" || fail '--output'
shell 1 "$name: none: No such" '"$0" --output file none'
shell 1 "$name: file: File too large" \
  'ulimit -f 1; "$0" --prometheus --output file "$1"'
shell 2 '' '"$0" --check --output none/file "$1"'
printed "$critical; none/file: No such file or directory" 1
cmp "$work/file" "$work/table" || fail 'a failure replaced the file'

# colors ENVIRONMENT REPORT: how many lines have them on a terminal.
colors() {
  (cd "$work" && env -u NO_COLOR timeout 20 script -qec "env $1 $program $2" /dev/null) \
    </dev/null | grep -c $'\e'
}
[ "$(colors NO_COLOR= "$report")" = 15 ] || fail 'not all colors on a terminal'
[ "$(colors NO_COLOR=1 "$report")" = 0 ] || fail 'colors with NO_COLOR'

# What is awkward: a path twice, an identifier twice, an empty path, quotes, no text.
{
  cat "$report"
  printf 'SmartDeviceStart:::/dev/rdisk0:::\\a"b\\n:::c\xff:::r:::c:::\xca s\n'
  printf 'SMARTStatus:::5:::On\xcaThe"\\:::13056:::21:::36:::Pre-Fail:OK\n'
  printf 'SMARTStatus:::5:::again:::0:::22:::0:::Life-Span:OK\n'
  printf 'SmartDeviceEnd:::/dev/rdisk0:::True\n'
} >"$work/odd"

# fetch PACKAGE COMMAND: prints the path of the command, of the host or of the cache.
fetch() {
  command -v "$2" && return 0
  "$(dirname "$0")/fetch_package.sh" "$1" "$cache/$1" >&2 && echo "$cache/$1/usr/bin/$2"
}

# Each series arrives, its labels in the exporter's order.
check_served() {
  mkdir "$work/textfiles" && touch "$work/log"
  "$program" --prometheus --output "$work/textfiles/smartprobe.prom" "$work/odd"
  "$node_exporter" --web.listen-address=127.0.0.1:0 --web.disable-exporter-metrics \
    --collector.disable-defaults --collector.textfile \
    --collector.textfile.directory="$work/textfiles" >"$work/log" 2>&1 &
  exporter=$!
  for _ in {1..100}; do
    address=$(sed -n 's/.*"Listening on" address=//p' "$work/log")
    [ -z "$address" ] || break
    sleep 0.1
  done
  exec 4<>"/dev/tcp/${address%:*}/${address##*:}"
  printf 'GET /metrics HTTP/1.0\r\n\r\n' >&4
  timeout 20 cat <&4 >"$work/served"
  grep -q '^node_textfile_scrape_error 0' "$work/served" || fail "not served: $(cat "$work/log")"
  [ "$(grep -c ^smartprobe_ "$work/served")" = "$(grep -c ^smartprobe_ "$work/textfiles/"*)" ] ||
    fail 'some series are not served'
  grep -qF 'smartprobe_attribute_value{device="/dev/rdisk0",drive="12",id="5",kind="pre-failure",name="On'$'\u00a0''The\"\\"} 21' \
    "$work/served" || fail "served: $(grep 'drive="12"' "$work/served")"
}

if promtool=$(fetch prometheus promtool) &&
  node_exporter=$(fetch prometheus-node-exporter prometheus-node-exporter); then
  for file in "$examples"/*.report "$work/odd" /dev/null; do
    said=$("$program" --prometheus "$file" | "$promtool" check metrics 2>&1) && [ -z "$said" ] ||
      fail "promtool on $file: $said"
  done
  check_served
elif [ "${CI:-}" = true ]; then
  fail 'the programs of Prometheus cannot be had'
else
  echo 'SKIPPED: the programs of Prometheus cannot be had' >&2
fi

[ "$failures" = 0 ]
