#!/bin/bash
# When there is a mail of the drives, and what it says, with a sendmail that keeps its input.
# Usage: mail_test.sh SCRIPT PROGRAM EXAMPLES, smartprobe-mail, smartprobe-read and their folder.
. "$(dirname "$0")/program_test.sh"
script=$1
examples=$3
PATH=$(dirname "$2"):$PATH
export SENDMAIL=$work/sendmail SMARTPROBE_MAIL_TO=admin@example.org
folder=$work/folder
mkdir "$folder"

# is WHAT RECORDING SENDMAIL SUBJECT [DAYS [MAILED]]: with that recording, which is DAYS old, the
# last mail MAILED days, and a sendmail that is "works", "fails" or "missing", there is a mail with
# that subject, or none, and the script fails where the mail does.
is() {
  local got
  rm -f "$work/mail" "$SENDMAIL" "$folder/host.plist"
  [ "$2" = none ] || { cp "$work/$2.plist" "$folder/host.plist" && touch -d "${5:-0} days ago" "$_"; }
  [ -z "${6-}" ] || touch -d "$6 days ago" "$folder"/mailed.plist "$folder"/stale*
  case $3 in
    works) printf '#!/bin/sh\n[ "$*" = "-oi -t" ] && exec cat >%s' "$work/mail" >"$SENDMAIL" ;;
    fails) printf '#!/bin/sh\ncat >/dev/null; exit 1' >"$SENDMAIL" ;;
  esac
  [ ! -e "$SENDMAIL" ] || chmod +x "$SENDMAIL"
  "$script" "$folder" 2>"$work/err"
  [ $? = $([ "$3" = works ]; echo $?) ] || fail "$1: a wrong status: $(<"$work/err")"
  got=$(sed -n "s/^Subject: smartprobe \([A-Z]*\) on $(uname -n): /\1: /p" "$work/mail" 2>/dev/null)
  [ "$got" = "$4" ] || fail "$1: \"$got\" instead of \"$4\""
}

# text LINE...: the last mail has each of these lines.
text() {
  for line in "$@"; do grep -qxF -- "$line" "$work/mail" || fail "no line \"$line\": $(<"$work/mail")"; done
}

# laptop ERRORS: the laptop with an NVMe drive that has met so many errors (an octal digit).
laptop() {
  local log
  log=$({ printf '\0\x34\1\x64\12'; head -c 155 /dev/zero; printf "\\$1"; head -c 351 /dev/zero; } | base64 -w 0)
  sed "0,/<array>/ s|<array>|&<dict><key>IOObjectClass</key><string>IOBlockStorageDevice</string>\
    <key>Device Characteristics</key><dict><key>Product Name</key><string>FAST</string>\
    <key>Serial Number</key><string>N1</string></dict>\
    <key>RecordedDrive</key><dict><key>HealthLog</key><data>$log</data></dict></dict>|" "$examples/laptop.plist"
}
laptop 0 >"$work/laptop.plist"
laptop 1 >"$work/errors1.plist"
laptop 7 >"$work/errors7.plist"
echo '<plist><dict></dict></plist>' >"$work/empty.plist"
echo '<plist>' >"$work/broken.plist"
laptop='Hitachi HTS543232L9A300 090812FB2D41LLKR7XPT'
fails='/ThresholdExceeded/ { n; s/false/true/ }'
goes='s/IOAHCIBlockStorageDevice/IOBlockStorageDevice/
  /<key>ThresholdExceeded/ s/^/<key>Gone<\/key><true\/><key>GoneSince<\/key><date>2026-11-24T00:00:00Z<\/date>/'
sed "$fails" "$work/laptop.plist" >"$work/failing.plist"
sed "$goes" "$work/laptop.plist" >"$work/gone.plist"
sed "$goes" "$work/failing.plist" >"$work/failed.plist"
# Its name holds the words of a good verdict.
sed 's/Hitachi HTS543232L9A300/USB OK: DISK/; /ThresholdExceeded/ { s//QueryFails/; n; s/false/true/ }' \
  "$work/laptop.plist" >"$work/unread.plist"
sed 's/disk0/disk7/; s/disk1/disk0/; s/disk7/disk1/' "$work/laptop.plist" >"$work/places.plist"
self="the drive's own self-assessment: failed"
failing="CRITICAL: worse: $laptop: failing: $self (before: OK)"
stale='UNKNOWN: there is no recording of the last day'

is 'no drive' empty works 'UNKNOWN: no drives'
is 'still no drive' empty works ''
rm "$folder/mailed.plist"
is 'the first time, and all is well' laptop works ''
is 'well for weeks' laptop works '' 0 30
is 'the first failure' failing works "$failing"
text 'To: admin@example.org' "${failing#*: }" \
  'Save the data of a drive that is failing, and replace it.'
grep -q '^/dev/rdisk0 .*failing$' "$work/mail" || fail 'no table in the mail'
is 'the same again' failing works '' 0 6
is 'the same a week later' failing works "CRITICAL: $laptop: failing: $self" 0 7
is 'it vanishes' failed works "CRITICAL: gone since 2026-11-24: $laptop (failing: $self)"
grep -qxF "gone since 2026-11-24: $laptop (failing:" "$work/mail" || fail "no drive that is gone: $(<"$work/mail")"
is 'it is still gone' failed works ''
is 'it is still gone a week later' failed works "CRITICAL: gone since 2026-11-24: $laptop (failing: $self)" 0 7
"$script" --forget "$folder"
is 'it is forgotten' failed works '' 0 8
is 'it comes back' laptop works "OK: back: $laptop: OK"
is 'it is in another place' places works ''
is 'it vanishes, but the mail fails' gone fails ''
is 'there is no sendmail' gone missing ''
is 'it works again' gone works "WARNING: gone since 2026-11-24: $laptop"
is 'it comes back again' laptop works "OK: back: $laptop: OK"
is 'a count grows' errors1 works 'WARNING: worse: FAST N1: caution: 1 media error (before: OK)'
text 'grew: FAST N1: 1 media error, before 0'
is 'it grows more' errors7 works 'WARNING: grew: FAST N1: 7 media errors, before 1'
is 'another drive is in its place' laptop works 'OK: better: FAST N1: OK (before: caution)'
is 'no recording for a day' laptop works "$stale" 2
is 'the same again' none works ''
is 'the same a week later' none works "$stale" 0 7
is 'recorded again' laptop works 'OK: recorded again'
is 'what is no recording' broken works "$stale"
is 'the same again' broken works ''
is 'a drive fails meanwhile' failing works "$failing"
text 'recorded again'
is 'it is well again' laptop works "OK: better: $laptop: OK (before: failing)"
is 'a drive cannot be read' unread works "UNKNOWN: new, and not readable: USB OK: DISK 090812FB2D41LLKR7XPT: it was not opened when recorded"
[ ! -e "$work/failed" ]
