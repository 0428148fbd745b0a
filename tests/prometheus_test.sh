#!/bin/bash
# What Prometheus' own programs make of the metrics and of the alert rules.
# Usage: prometheus_test.sh DOWNLOADS PROGRAM, the folder that keeps those programs once
# they are fetched, and smartprobe-read.
. "$(dirname "$0")/program_test.sh"
downloads=$1
program=$2
examples=$(realpath "$(dirname "$0")/../examples")
exporter=
clean_up() {
  [ -z "$exporter" ] || kill "$exporter"
}

# fetch PACKAGE: its files, in a folder of that name.
fetch() {
  local folder=$downloads/$1
  [ ! -e "$folder" ] || return 0
  rm -rf "$folder.new" && mkdir -p "$folder.new"
  (cd "$folder.new" && apt-get download -qq -o APT::Sandbox::User=root "$1" &&
    dpkg-deb -x ./*.deb files) && mv "$folder.new/files" "$folder" && rm -r "$folder.new"
}

# What is awkward: a path twice, an identifier twice, an empty path, quotes, no text.
{
  cat "$examples/server.report"
  printf 'SmartDeviceStart:::/dev/rdisk0:::\\a"b\\n:::c\xff:::r:::c:::\xca s\n'
  printf 'SMARTStatus:::5:::On\xcaThe"\\:::13056:::21:::36:::Pre-Fail:OK\n'
  printf 'SMARTStatus:::5:::again:::0:::22:::0:::Life-Span:OK\n'
  printf 'SmartDeviceEnd:::/dev/rdisk0:::True\n'
} >"$work/odd"

metrics() {
  local file said
  for file in "$examples"/*.report "$work/odd" /dev/null; do
    said=$("$program" --prometheus "$file" | "$promtool" check metrics 2>&1) && [ -z "$said" ] ||
      fail "promtool on $file: $said"
  done
}

# Each series arrives, its labels in the exporter's order.
served() {
  local address
  mkdir "$work/textfiles" && touch "$work/log"
  "$program" --prometheus --output "$work/textfiles/smartprobe.prom" "$work/odd"
  "$downloads/prometheus-node-exporter/usr/bin/prometheus-node-exporter" \
    --web.listen-address=127.0.0.1:0 --web.disable-exporter-metrics \
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
  grep -qF 'smartprobe_attribute_value{device="/dev/rdisk0",drive="1",id="5",kind="pre-failure",name="On'$'\u00a0''The\"\\",product="\\a\"b\\n:::c'$'\ufffd''",serial="'$'\u00a0'' s"} 21' \
    "$work/served" || fail "served: $(grep 'drive="1"' "$work/served")"
}

fetch prometheus && fetch prometheus-node-exporter || exit 1
promtool=$downloads/prometheus/usr/bin/promtool
metrics
"$(dirname "$0")/alert_test.sh" "$promtool" "$program" || fail 'the alert rules'
served
[ "$failures" = 0 ]
