#!/bin/bash
# What Prometheus' own promtool makes of the metrics, and what the alert rules say of drives, hosts
# and reports of many fates: alerts/*.yml are promtool's files, whose series smartprobe-read makes.
# One of them is about the dashboard.
# Usage: prometheus_test.sh PROMTOOL PROGRAM, which is smartprobe-read.
. "$(dirname "$0")/program_test.sh"
promtool=$1
program=$2
here=$(realpath "$(dirname "$0")")
examples=$here/../examples

# What is awkward: a path twice, an identifier twice, quotes, no text.
printf '%b\n' 'SmartDeviceStart:::/dev/rdisk0:::\\a"b\\n:::\xff:::r:::c:::\xca s' \
  'SMARTStatus:::5:::"\\:::0:::21:::36:::Pre-Fail:OK' 'SMARTStatus:::5:::n:::0:::2:::0:::Life-Span:OK' \
  SmartDeviceEnd:::/dev/rdisk0:::True | cat "$examples/server.report" - >"$work/odd"
for metrics in "$examples"/*.report "$examples"/*.plist "$work/odd" /dev/null; do
  said=$("$program" --prometheus "$metrics" | "$promtool" check metrics 2>&1) && [ -z "$said" ] ||
    fail "promtool on $metrics: $said"
done

# key NAME VALUE: of a property list.
key() {
  echo "<key>$1</key>$2"
}

# data HEX: these bytes.
data() {
  echo "<data>$(basenc -d --base16 <<<"$1" | base64 -w 0)</data>"
}

# block HEX OFFSET BYTE: the bytes of HEX, zeros, and the byte at that offset, as data.
block() {
  local hex
  printf -v hex "%-$((2 * $2))s" "$1"
  data "${hex// /0}$3"
}

# nvme, scsi: what a drive of this kind answers, by the marks of `drive`.
nvme() {
  local kelvin errors
  kelvin=$(given x 6601 "$(given H 5C01 2D01)")
  errors=$(printf %0308d 0)$(given e 05 00)
  key HealthLog "$(block "$(given ! 08 00)$kelvin$(given % 09 0A)0A$(given w 67 05)$errors" 511 00)"
  key IdentifyController "$(block "$(printf %0532d 0)6101" 511 00)"
}

scsi() {
  key LogPage2F "$(data "2F00000800000304$(given ! 5D10 "$(given ^ 0B01 0000)")0000")"
  key LogPage0D "$(data "0D00000C00000302$(given ^ 00FF "$(given x 0055 001C)")000103020050")"
  key LogPage03 "$(data "0300000500060301$(given e 05 00)")"
  key LogPage11 "$(data "1100000800010304000000$(given w 67 05)")"
}

# drive DRIVE: "A1" is the drive with the serial number A at path 1 in a recording; "_1" has none.
# "?A1" could not be read, "?_1" not even be identified. After it, "!" is one that reports the
# condition; "%" one with a pre-failure attribute at its threshold, "-" with a worn one, "^" with a
# temperature; "p" with 3 sectors pending, "r" with one reallocated, "R" with two; "e" with 5 errors;
# "f" with a failed self-test; "h" at 65 degrees, "H" at 75; "s" without moving parts; "w" with 8 of
# 100 left of its life, by an attribute; "u" with 5% used, by its own count. "n" is an NVMe drive and "c" a SCSI disk, each with a limit of 80 degrees: "!"
# is failing, "%" has too little spare, "w" has used 103% of its life, "x" is at 85 degrees, and "^"
# reports heat without a temperature.
drive() {
  local name=${1#\?} data=0000 thresholds=0000 serial=20 class=IOAHCIBlockStorageDevice names answers
  given() { [[ ${name:2} == *"$1"* ]] && echo "$2" || echo "$3"; } # FLAG HEX OTHERWISE
  attribute() { # ID FLAGS VALUE RAW THRESHOLD
    data+=$1${2}00$3$3${4}000000000000
    thresholds+=$1${5}00000000000000000000
  }
  attribute 05 33 32 "$(given R 02 "$(given r 01 00)")" "$(given % 3C 06)"
  attribute 0C 32 32 00 "$(given - 3C 06)"
  attribute BB 32 32 "$(given e 05 00)" 06
  attribute BE 22 32 "$(given H 4B "$(given h 41 1C)")" "$(given ^ 3C 06)"
  attribute C5 32 32 "$(given p 03 00)" 06
  attribute E9 32 "$(given w 08 32)" 00 06
  [[ $name == _* ]] || printf -v serial %02X "'$name"
  answers=$(key Data "$(block "$data" 363 "$(given f 70 00)")"
    key Thresholds "$(block "$thresholds" 511 00)"
    key Identify "$(block "$(printf %040d20 0)$serial" 434 "$(given s 01 00)")"
    key ThresholdExceeded "$(given ! '<true/>' '<false/>')")
  [[ ${name:2} != *u* ]] ||
    answers+=$(key Statistics "$(block 010007000000000005000000000000C0 511 00)")
  [[ $1 != \?* ]] || answers+=$(key QueryFails '<true/>')
  names=$(key 'Product Name' '<string>DISK</string>')
  if [[ ${name:2} == *[cn]* ]]; then
    class=IOBlockStorageDevice
    names+=$(key 'Serial Number' "<string>${name:0:1}</string>")
    answers=$(if [[ ${name:2} == *n* ]]; then nvme; else scsi; fi)
  fi
  echo '<dict>'
  key IOObjectClass "<string>$class</string>"
  [[ $1 == \?_* ]] || key 'Device Characteristics' "<dict>$names</dict>"
  key IORegistryEntryChildren "<array><dict>$(key 'BSD Name' "<string>sd${name:1:1}</string>")</dict></array>"
  key RecordedDrive "<dict>$answers</dict>"
  echo '</dict>'
}

# segment START KIND: the series that an exporter shows from then on, by kind: "=DRIVES" with
# a report every hour, "~DRIVES" with one that gets old, "x" without a file, "-" of a host
# that is down. "@" before a kind: the exporter is one that gives files without their folders.
segment() {
  local kind=${2#@} folder=/srv/ drive
  [ "$kind" = "$2" ] || folder=
  [ "$kind" != - ] && echo 'up{} 1' || echo 'up{} 0'
  case $kind in
    =*) echo "node_textfile_mtime_seconds{file=\"${folder}smartprobe.prom\"} $1+300" ;;
    ~*) echo "node_textfile_mtime_seconds{file=\"${folder}smartprobe.prom\"} $1+0" ;;
    *) return ;;
  esac
  echo "node_textfile_mtime_seconds{file=\"/srv/other.prom\"} $1+300"
  {
    echo '<plist><array>'
    for drive in ${kind//[=~,]/ }; do drive "$drive"; done
    echo '</array></plist>'
  } | "$program" --prometheus | sed -nE 's/^([a-z_]+)(\{(.*)\})? ([0-9.]+)$/\1{\3} \4/p' ||
    fail "the report $2"
}

# series JOB HOST SEGMENT...: the series of a host in the language of promtool's tests, with a sample
# every 5 minutes. A segment is its hours and a kind.
# shellcheck disable=SC2004 # 12 * 1/4 is 3
series() {
  local job=$1 host=$2 segment hours time=0
  shift 2
  for segment; do
    hours=${segment%%[@=~x-]*}
    echo "@ $((12 * $hours - 1))"
    segment $time "${segment#"$hours"}"
    time=$((time + 3600 * $hours))
  done | awk -v labels="job=\"$job\",instance=\"$host\"," '
    /^@/ { length_of[++segments] = $2; next }
    { value = $NF; sub(/ [^ ]*$/, ""); sub(/\{/, "{" labels); sub(/,\}/, "}")
      values[$0, segments] = value; names[$0] }
    END { for (name in names) {
        printf "      - series: \047%s\047\n        values:", name
        for (i = 1; i <= segments; i++)
          if ((name, i) in values) printf " %sx%d", values[name, i], length_of[i]
          else printf " %s _x%d", (name, i - 1) in values ? "stale" : "_", length_of[i]
        print "" } }'
}

# The dashboard's queries, each after the title of its panel or the name of its variable, if somebody
# has chosen the job "node" and the hosts whose names begin with "h".
jq -r '(.panels[] | [.title, .targets[].expr]),
  (.templating.list[] | select(.type == "query") | [.name, (.query.query |
    sub("^label_values\\((?<metric>.*), (?<label>.*)\\)$"; "count by (\(.label)) (\(.metric))"))]) |
  map(gsub("\\$job"; "node") | gsub("\\$instance"; "h.*")) | @tsv' \
  "$examples/dashboard.json" >"$work/queries"
diff <(cut -f 1 "$work/queries" | sort) <(sed -n 's/.*expr: panel //p' "$here/alerts/dashboard.yml" | sort) ||
  fail 'a query of the dashboard is not tested'

# Of a test the line "input_series: SEGMENT..." stands for the series of a host, and a line
# "other_host: JOB HOST SEGMENT..." below it for those of another. "expr: panel TITLE" stands for the
# query of that panel.
cp "$examples/alerts/smartprobe.rules.yml" "$work"
for file in "$here"/alerts/*.yml; do
  test=$work/$(basename "$file")
  while IFS= read -r line; do
    # shellcheck disable=SC2086 # words
    case $line in
      *input_series:*) printf '    interval: 5m\n    input_series:\n'
        series node h ${line#*input_series:} ;;
      *other_host:*) series ${line#*other_host:} ;;
      *'expr: panel '*) echo "        expr: '$(sed -n "s/^${line#*panel }\t//p" "$work/queries")'" ;;
      *) echo "$line" ;;
    esac
  done <"$file" >"$test"
  "$promtool" test rules "$test" || fail "$file"
done
[ ! -e "$work/failed" ]
