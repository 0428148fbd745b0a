#!/bin/bash
# What Prometheus' own promtool makes of the metrics, and what the alert rules say of drives, hosts
# and reports of many fates: alerts/*.yml are promtool's files, whose series smartprobe-read makes.
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

# block FORMAT: the bytes of that format, for printf, as data.
block() {
  # shellcheck disable=SC2059
  echo "<data>$(printf "$1" | base64 -w 0)</data>"
}

# drive DRIVE: "A1" is the drive with the serial number A at path 1 in a recording; "_1" has none.
# "?A1" could not be read, "?_1" not even be identified. After it, "!" is one that reports the
# condition; "%" one with a pre-failure attribute at its threshold, "-" with a worn one, "^" with a
# temperature; "p" with 3 sectors pending, "r" with one reallocated, "R" with two.
drive() {
  local name=${1#\?} flags pending=0 reallocated=0 data thresholds answers
  flags=${name:2}
  # The threshold of an attribute whose value is 50.
  threshold() { [[ $flags == *"$1"* ]] && echo '\x3C\0\0\0\0\0\0\0\0\0\0' || echo '\x06\0\0\0\0\0\0\0\0\0\0'; }
  [[ $flags == *p* ]] && pending=3
  [[ $flags == *r* ]] && reallocated=1
  [[ $flags == *R* ]] && reallocated=2
  data="\0\0\x05\x33\0\x32\x32\x0$reallocated\0\0\0\0\0\0\x0C\x32\0\x32\x32\0\0\0\0\0\0\0"
  data+="\xBE\x22\0\x32\x32\0\0\0\0\0\0\0\xC5\x32\0\x32\x32\x0$pending"
  thresholds="\0\0\x05$(threshold %)\x0C$(threshold -)\xBE$(threshold ^)\xC5$(threshold none)"
  answers=$(key Data "$(block "$data")" && key Thresholds "$(block "$thresholds")")
  answers+=$([[ $flags == *!* ]] && key ThresholdExceeded '<true/>' || key ThresholdExceeded '<false/>')
  [[ $name == _* ]] ||
    answers+=$(key Identify "$(block "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0 ${name::1}")")
  [[ $1 != \?* ]] || answers+=$(key QueryFails '<true/>')
  echo '<dict>'
  key IOObjectClass '<string>IOAHCIBlockStorageDevice</string>'
  [[ $1 == \?_* ]] ||
    key 'Device Characteristics' "<dict>$(key 'Product Name' '<string>DISK</string>')</dict>"
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
  } | "$program" --prometheus | sed -nE 's/^([a-z_]+)(\{(.*)\})? ([0-9]+)$/\1{\3} \4/p' ||
    fail "the report $2"
}

# series SEGMENT...: the series of a host in the language of promtool's tests, a sample every
# 5 minutes. A segment is its hours and a kind.
# shellcheck disable=SC2004 # 12 * 1/4 is 3
series() {
  local segment hours time=0
  for segment; do
    hours=${segment%%[@=~x-]*}
    echo "@ $((12 * $hours - 1))"
    segment $time "${segment#"$hours"}"
    time=$((time + 3600 * $hours))
  done | awk '
    /^@/ { length_of[++segments] = $2; next }
    { value = $NF; sub(/ [^ ]*$/, ""); sub(/\{/, "{job=\"node\",instance=\"h\","); sub(/,\}/, "}")
      values[$0, segments] = value; names[$0] }
    END { for (name in names) {
        printf "      - series: \047%s\047\n        values:", name
        for (i = 1; i <= segments; i++)
          if ((name, i) in values) printf " %sx%d", values[name, i], length_of[i]
          else printf " %s _x%d", (name, i - 1) in values ? "stale" : "_", length_of[i]
        print "" } }'
}

# Of a test the line "input_series: SEGMENT..." stands for the series of a host.
cp "$examples/alerts/smartprobe.rules.yml" "$work"
for file in "$here"/alerts/*.yml; do
  test=$work/$(basename "$file")
  while IFS= read -r line; do
    echo "${line/input_series: */input_series:}"
    # shellcheck disable=SC2086 # words
    [[ $line != *input_series:\ * ]] || series ${line#*input_series: }
  done <"$file" >"$test"
  "$promtool" test rules "$test" || fail "$file"
done
[ ! -e "$work/failed" ]
