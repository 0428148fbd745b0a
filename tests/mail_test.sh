#!/bin/bash
# When root gets a mail of the drives, and what it says, with a sendmail that keeps its input.
# Usage: mail_test.sh SCRIPT PROGRAM EXAMPLES, smartprobe-mail, smartprobe-read and their folder.
. "$(dirname "$0")/program_test.sh"
script=$1
examples=$3
PATH=$(dirname "$2"):$PATH
export SENDMAIL=$work/sendmail
folder=$work/folder
mkdir "$folder"

# is WHAT RECORDING SENDMAIL SUBJECT [DAYS [SAID]]: with that recording, which is DAYS old, the last
# mail SAID days, and a sendmail that is "works", "fails" or "missing", there is a mail with that
# subject, or none, and the script fails where the mail does.
is() {
  local got
  rm -f "$work/mail" "$SENDMAIL" "$folder/host.plist"
  [ "$2" = none ] || { cp "$work/$2.plist" "$folder/host.plist" && touch -d "${5:-0} days ago" "$_"; }
  [ -z "${6-}" ] || touch -d "$6 days ago" "$folder/said"
  case $3 in
    works) printf '#!/bin/sh\n[ "$*" = "-oi -t" ] && exec cat >%s' "$work/mail" >"$SENDMAIL" ;;
    fails) printf '#!/bin/sh\ncat >/dev/null; exit 1' >"$SENDMAIL" ;;
  esac
  [ ! -e "$SENDMAIL" ] || chmod +x "$SENDMAIL"
  "$script" "$folder" 2>"$work/err"
  [ $? = $([ "$3" = works ]; echo $?) ] || fail "$1: a wrong status: $(<"$work/err")"
  got=$(sed -n "s/^Subject: $(uname -n): smartprobe //p" "$work/mail" 2>/dev/null)
  [ "$got" = "$4" ] || fail "$1: \"$got\" instead of \"$4\""
}

sed '/ThresholdExceeded/ { n; s/false/true/ }' "$examples/laptop.plist" >"$work/failing.plist"
sed 's/Maxtor 6L200P0/OTHER/' "$examples/desktop.plist" >"$work/replaced.plist"
# Its name holds the words of a good verdict.
sed 's/Hitachi HTS543232L9A300/USB OK: DISK/; /ThresholdExceeded/ { s//QueryFails/; n; s/false/true/ }' \
  "$examples/laptop.plist" >"$work/unread.plist"
cp "$examples/laptop.plist" "$examples/desktop.plist" "$work"
critical="CRITICAL: failing: /dev/rdisk0 (the drive's own self-assessment: failed)"
others="CRITICAL: failing: /dev/rdisk1 (the drive's own self-assessment: failed, Reallocated Sector Count is 7, threshold 36: failure predicted, 3841 sectors reallocated, 184 pending, 184 uncorrectable); a drive is no longer read"
unread='UNKNOWN: not read: /dev/rdisk0 (USB OK: DISK, serial 090812FB2D41LLKR7XPT: it was not opened when recorded); a drive is no longer read'
well='OK: 1 drive, no threshold reached, no lost sector counted'
stale='UNKNOWN: there is no recording of the last day'
is 'the first time, and all is well' laptop works ''
is 'the first failure' failing works "$critical"
grep -q 'Save the data of a drive' "$work/mail" && grep -q '^/dev/rdisk0 .*failing$' "$work/mail" ||
  fail "the text: $(<"$work/mail")"
is 'the same again' failing works '' 0 6
is 'the same a week later' failing works "$critical" 0 7
is 'the same again after that' failing works ''
is 'no recording for a day' failing works "$stale" 2
is 'the same again' none works ''
is 'as before, but no sendmail' failing missing ''
is 'it fails too' failing fails ''
is 'it works again' failing works "$critical"
is 'well again, but it fails' laptop fails ''
is 'well again' laptop works "$well"
is 'well a week later' laptop works '' 0 8
is 'a drive cannot be read' unread works "$unread"
is 'well again after that' laptop works "$well"
is 'other drives' desktop works "$others"
is 'a drive is replaced while another is failing' replaced works "$others"
[ ! -e "$work/failed" ]
