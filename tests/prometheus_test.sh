#!/bin/bash
# What Prometheus' own promtool makes of the metrics, and what the alert rules say of drives,
# hosts and reports of many fates, from the metrics that smartprobe-read makes of such reports.
# Usage: prometheus_test.sh PROMTOOL PROGRAM, which is smartprobe-read.
. "$(dirname "$0")/program_test.sh"
promtool=$1
program=$2
examples=$(dirname "$0")/../examples
file=/srv/smartprobe.prom

# What is awkward: a path twice, an identifier twice, quotes, no text.
printf '%b\n' 'SmartDeviceStart:::/dev/rdisk0:::\\a"b\\n:::\xff:::r:::c:::\xca s' \
  'SMARTStatus:::5:::"\\:::0:::21:::36:::Pre-Fail:OK' 'SMARTStatus:::5:::n:::0:::2:::0:::Life-Span:OK' \
  SmartDeviceEnd:::/dev/rdisk0:::True | cat "$examples/server.report" - >"$work/odd"
for metrics in "$examples"/*.report "$work/odd" /dev/null; do
  said=$("$program" --prometheus "$metrics" | "$promtool" check metrics 2>&1) && [ -z "$said" ] ||
    fail "promtool on $metrics: $said"
done

# report DRIVE,...: each is "A1", the drive with the serial number A at path 1; "_1", without a
# serial number; "?1", that cannot be read. A1! reports the condition, A1% predicts a failure
# and A1- is worn.
report() {
  sed -E '/^$/d; s|^\?(.)|GetSMARTFailed:/dev/rsd\1:0|
    s|^(.)(.)(.?)$|SmartDeviceStart:::/dev/rsd\2:::DISK :::1:::1 TB:::     \1\
SMARTStatus:::5:::R:::13056:::7:::6:::Pre-Fail:OK\3\
SmartDeviceEnd:::/dev/rsd\2:::False\3|
    s/ _\n/  \n/; s/False!/True/; s/False.$/False/; s/OK!/OK/
    s/OK%/Pre-Failure Warning: Imminent loss of data predicted/
    s/Pre-Fail:OK-/Life-Span:Advisory Condition: Attribute has exeeded intended life expectancy/
  ' <<<"${1//,/$'\n'}"
}

# segment START KIND: the series that an exporter shows from then on, by kind: "=DRIVES" with
# a report every hour, "~DRIVES" with one that gets old, "x" without a file, "-" of a host
# that is down.
segment() {
  [ "$2" != - ] && echo 'up{} 1' || echo 'up{} 0'
  case $2 in
    =*) echo "node_textfile_mtime_seconds{file=\"$file\"} $1+300" ;;
    ~*) echo "node_textfile_mtime_seconds{file=\"$file\"} $1+0" ;;
    *) return ;;
  esac
  echo "node_textfile_mtime_seconds{file=\"/srv/other.prom\"} $1+300"
  report "${2:1}" | "$program" --prometheus |
    sed -nE 's/^([a-z_]+)(\{(.*)\})? ([0-9]+)$/\1{\3} \4/p' || fail "the report $2"
}

# series SEGMENT...: the series of a host in the language of promtool's tests, a sample every
# 5 minutes. A segment is its hours and a kind.
# shellcheck disable=SC2004 # 12 * 1/4 is 3
series() {
  local segment hours time=0
  for segment; do
    hours=${segment%%[=~x-]*}
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

# labels NAME:DRIVE: the labels of that alert; of DriveNotRead and DriveReportStale no drive.
labels() {
  local labels="alertname=\"${1%:*}\",job=\"node\",instance=\"h\"" severity=warning
  case $1 in DriveFailing* | *PreFailure*) severity=critical ;; esac
  case $1 in *Attribute*) labels+=',id="5",name="R"' ;; esac
  case $1 in
    *:_?) labels+=",product=\"DISK\",device=\"/dev/rsd${1: -1}\"" ;;
    *:?) labels+=",product=\"DISK\",serial=\"${1: -1}\"" ;;
  esac
  echo "{$labels,severity=\"$severity\"}"
}

# fate WHAT 'SEGMENT...' 'TIMES ALERT...'...: all alerts that fire at each of these times, as
# NAME:DRIVE; at "<TIME" all that have fired at any time before.
fate() {
  local times time alert range alerts
  # shellcheck disable=SC2086 # words
  printf '  - interval: 5m\n    input_series:\n%s\n    promql_expr_test:\n' "$(series $2)"
  for alerts in "${@:3}"; do
    read -r times alerts <<<"$alerts"
    for time in ${times//,/ }; do
      [ "${time#<}" = "$time" ] && range=5m || range=1000h
      printf '      - eval_time: %s\n        expr: count without (alertstate) (last_over_time(ALERTS{alertstate="firing"}[%s])) # %s\n        exp_samples:\n' \
        "${time#<}" $range "$1"
      for alert in $alerts; do
        printf "          - {value: 1, labels: '%s'}\n" "$(labels "$alert")"
      done
    done
  done
}

fates() {
  fate 'a drive is added, paths change, one report misses a drive' \
    '24=A1,B2 24=A1,B2,C3 24=A2,B1,C3 1=A2,C3 24=A2,B1,C3 1=A2,?1,C3 200=A2,B1,C3' '<298h'
  fate 'a host that was down, and whose next report misses a drive' \
    '24=A1,B2 565/12- 1/4x 1=A1 24=A1,B2' '<96h'
  fate 'a failing drive cannot be read' '24=A1,B2 4=A1!,B2 200=?1,?1,B2' 23h45m \
    '24h,29h DriveFailing:A' '30h,52h DriveFailing:A DriveGone:A DriveNotRead' \
    '54h DriveGone:A DriveNotRead' '200h DriveNotRead'
  fate 'a failing drive changes its path and is gone' '24=A1,B2 2=A1%,B2 2=A2%,B1 200=B1' 23h45m \
    '24h,26h,28h DriveAttributePreFailure:A' '30h,52h DriveAttributePreFailure:A DriveGone:A' \
    '54h DriveGone:A' 200h
  fate 'a failing drive is replaced' '24=A1!,B2 200=C1,B2' '48h DriveFailing:A DriveGone:A' 193h
  fate 'all drives are gone' '24=A1,B2,_3 200=' 25h \
    '26h,191h45m DriveGone:A DriveGone:B DriveGone:_3' 193h
  fate 'a drive cannot be read in every other report, and gets a new path each time' \
    "24=A1,B2 $(printf '1=?%s,B2 1=A%s,B2 ' {3,4,5,6,7,8}{,}) 24=A8,B2" 25h \
    '28h,30h,31h,32h,33h,36h DriveNotRead' 54h
  fate 'drives that share a serial number, or have none' \
    '24=A1,A2,_3!,_4%,_5- 24=A1,A2!,_3!,_4 24=A1,A2!' \
    '23h DriveFailing:_3 DriveAttributePreFailure:_4 DriveAttributeWorn:_5' \
    '60h DriveFailing:A DriveFailing:_3 DriveGone:_3 DriveGone:_4 DriveGone:_5'
  fate 'the file is gone' '24=A1 760x' 47h '49h45m,743h DriveReportStale' 746h
  fate 'the file was there for a short time' '13/12x 1/2=A1 100x' 20h '27h,90h DriveReportStale'
  file=smartprobe.prom # of exporters before 1.3
  fate 'the file gets old' '24=A1 100~A1 24=A1' 47h '50h,123h DriveReportStale' 125h
}

{
  printf 'rule_files: [%s]\nevaluation_interval: 15m\ntests:\n' \
    "$(realpath "$examples/alerts/smartprobe.rules.yml")"
  fates
} >"$work/test.yml"
"$promtool" test rules "$work/test.yml" || fail 'the alerts'
[ ! -e "$work/failed" ]
