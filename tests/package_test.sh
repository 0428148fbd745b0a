#!/bin/bash
# The Debian package and what comes with it: manual pages, systemd units, and its life in
# a fresh minimal system, which takes root's rights.
# Usage: package_test.sh PACKAGE ROOT, the file and the system that scripts/fetch has made.
set -euo pipefail
. "$(dirname "$0")/program_test.sh"
package=$(realpath "$1")
saved_root=$(realpath "$2")
source=$(realpath "$(dirname "$0")/..")
PATH=$PATH:/usr/sbin:/sbin
tree=$work/tree # what the package installs
enabled='smartprobe.timer smartprobe-mail.service smartprobe-metrics.service'
services='smartprobe.service smartprobe-metrics.service' # in the order of a run
units="$services smartprobe-mail.service smartprobe.timer"

# silent COMMAND...: its status is 0, and it has nothing to say.
silent() {
  "$@" >"$work/said" 2>&1 && [ ! -s "$work/said" ] && return
  cat "$work/said" >&2
  fail "$*"
}

# From the folder of the pages, where mandoc looks for those that they refer to.
manual_pages() {
  cd "$source/doc"
  silent mandoc -T lint ./*.[158]
  mandoc -T ascii smartprobe-machine.5 | col -b | sed -n '/<plist/,/<\/plist>/p' >"$work/machine"
  cmp - <("$tree/usr/bin/smartprobe-replay" "$work/machine") <<<'SmartDeviceStart:::/dev/rdisk0::::::::::::
SmartDeviceEnd:::/dev/rdisk0:::True' || fail 'the example of smartprobe-machine(5)'
}

package_and_units() {
  local folder=$tree/usr/lib/systemd/system
  [ "$(dpkg-parsechangelog -l "$source/doc/changelog" -S Version)" = \
    "$(dpkg-deb -f "$package" Version)" ] || fail 'the changelog begins with another version'
  # Informations tell of programs that are not hardened.
  lintian --allow-root --display-info --fail-on error,warning,info \
    --suppress-tags binary-has-unneeded-section "$package" || fail lintian
  for service in $services; do
    systemd-analyze security --offline=true --threshold=20 "$folder/$service" >"$work/security" ||
      fail "$(tail -1 "$work/security")"
  done
}

in_root() {
  chroot "$root" env DEBIAN_FRONTEND=noninteractive "$@"
}

apt_in_root() {
  in_root apt-get -qq -y -o Dpkg::Use-Pty=0 --no-install-recommends "$@" >"$work/apt" 2>&1 && return
  cat "$work/apt" >&2
  return 1
}

# All that is there but what apt and dpkg write down for themselves.
list_root() {
  (cd "$root" && find . -path ./var/lib/dpkg -prune -o -path ./var/lib/apt -prune -o \
    -path ./var/cache -prune -o -path ./run/systemd -prune -o -path ./var/log -prune -o -name smartprobe.deb -o \
    -path ./etc/ld.so.cache -o -print | sort)
}

# With the timer enabled, metrics written by the service's own steps, and an upgrade.
minimal_system() {
  local folder=/var/lib/prometheus/node-exporter doc=/usr/share/doc/smartprobe steps
  root=$work/root
  mkdir "$root"
  tar -C "$root" -xf "$saved_root"
  cp -L /etc/resolv.conf "$root/etc/"
  apt_in_root update
  mkdir -p "$root$folder" "$root/sys/block" # a host without disks
  cp "$package" "$root/smartprobe.deb"
  list_root >"$work/before"
  apt_in_root install ./smartprobe.deb || fail 'the installation'
  in_root smartprobe-replay $doc/examples/server.plist | cmp - "$source/examples/server.report" ||
    fail 'the report of an installed example'
  silent in_root systemd-analyze verify --man=no $units
  in_root systemctl --quiet enable $enabled || fail 'the units cannot be enabled'
  steps=$(cd "$tree/usr/lib/systemd/system" && sed -n 's/^ExecStart=//p' $services)
  in_root sh -ec "mkdir /var/lib/smartprobe; $steps" 2>"$work/said" || fail "the service's steps"
  apt_in_root install --reinstall ./smartprobe.deb || fail 'the upgrade'
  [ -s "$root$folder/smartprobe.prom" ] && [ -s "$root/var/lib/smartprobe/index.html" ] || fail 'after an upgrade'
  in_root systemctl --quiet is-enabled $enabled || fail 'an upgrade disables the units'
  apt_in_root purge --auto-remove smartprobe || fail 'the removal'
  list_root | diff "$work/before" - || fail 'the package leaves something behind'
}

dpkg-deb -x "$package" "$tree"
manual_pages
package_and_units
minimal_system
[ ! -e "$work/failed" ]
