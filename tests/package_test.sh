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
root=$work/root
metrics=/var/lib/prometheus/node-exporter
enabled=$(echo smartprobe{,-selftest-short,-selftest-extended}.timer smartprobe-{mail,metrics}.service)
services='smartprobe.service smartprobe-metrics.service' # in the order of a run
tests='smartprobe-selftest@short.service smartprobe-selftest@extended.service'

# silent COMMAND...: its status is 0, and it has nothing to say.
silent() {
  "$@" >"$work/said" 2>&1 && [ ! -s "$work/said" ] && return
  cat "$work/said" >&2
  fail "$*"
}

# From the folder of the pages, where mandoc looks for those that they refer to.
manual_pages() {
  cd "$source/doc"
  silent mandoc -T lint ./*.[1578]
  mandoc -T ascii smartprobe-machine.5 | col -b | sed -n '/<plist/,/<\/plist>/p' >"$work/machine"
  cmp - <(in_root smartprobe-replay - <"$work/machine") <<<'SmartDeviceStart:::/dev/rdisk0::::::::::::
SmartDeviceEnd:::/dev/rdisk0:::True' || fail 'the example of smartprobe-machine(5)'
}

package_and_units() {
  [[ "smartprobe-read $(dpkg-deb -f "$package" Version)" = \
    "$(in_root smartprobe-read --version)"-* ]] || fail 'the programs have another version'
  # Only Debian 12 asks for init scripts. Debian 13 refuses a tag that it does not know.
  tag=$(lintian-explain-tags --list-tags | grep package-supports-alternative-init || true)
  # Informations tell of programs that are not hardened.
  silent lintian --allow-root --display-info --suppress-tags "$tag" "$package"
  in_root systemd-analyze security --offline=true --threshold=20 $services $tests >"$work/security" ||
    fail "$(grep Overall "$work/security")"
  silent in_root systemd-analyze verify --man=no $services $tests $enabled
}

in_root() {
  chroot "$root" env DEBIAN_FRONTEND=noninteractive "$@"
}

apt_in_root() {
  in_root apt-get -qq -y -o Dpkg::Use-Pty=0 --no-install-recommends "$@" >"$work/apt" 2>&1 ||
    { cat "$work/apt" >&2; fail "apt-get $*"; }
}

# All that is there but what apt and dpkg write down for themselves.
list_root() {
  (cd "$root" && find . -regextype egrep -regex '\./(var/(lib/(apt|dpkg)|cache|log)|run/systemd)' \
    -prune -o ! -name smartprobe.deb ! -name ld.so.cache -print | sort)
}

install_package() {
  mkdir -p "$root$metrics" "$root/sys/block" # a host without disks
  tar -C "$root" -xf "$saved_root"
  cp -L /etc/resolv.conf "$root/etc/"
  apt_in_root update
  cp "$package" "$root/smartprobe.deb"
  list_root >"$work/before"
  apt_in_root install ./smartprobe.deb
  in_root smartprobe-replay /usr/share/doc/smartprobe/examples/server.plist |
    cmp - "$source/examples/server.report" || fail 'the report of an installed example'
}

# With all units enabled, and what the service's own steps write.
upgrade_and_removal() {
  in_root systemctl --quiet is-enabled $enabled && fail 'the installation enables units'
  in_root systemctl --quiet enable $enabled || fail 'the units cannot be enabled'
  cd "$root/usr/lib/systemd/system"
  steps=$(sed -nE 's/^(Environment|ExecStart)=//p' $services)
  for each in $(sed -n 's/^#SMART/SMART/p' "$root/etc/default/smartprobe"); do
    grep -qE "${each/=/(=|:-)}(}|$)" smartprobe.service "$root/usr/sbin/smartprobe-mail" ||
      fail "$each in /etc/default/smartprobe is not what holds without it"
  done
  in_root sh -ec "mkdir /var/lib/smartprobe; $steps; touch $metrics/smartprobe.prom.killed \
    /var/lib/smartprobe/said" \
    2>"$work/said" || fail "the service's steps"
  apt_in_root install --reinstall ./smartprobe.deb
  [ "$(in_root systemctl is-enabled $enabled | uniq)" = enabled ] || fail 'an upgrade disables units'
  [ ! -e "$root/var/lib/smartprobe/said" ] || fail 'an upgrade keeps the state of an older version'
  apt_in_root remove smartprobe
  [ ! -e "$root$metrics/smartprobe.prom" ] && [ -s "$root/var/lib/smartprobe/index.html" ] ||
    fail 'the removal keeps the metrics, or drops what was recorded'
  apt_in_root purge --auto-remove smartprobe
  list_root | diff "$work/before" - || fail 'the package leaves something behind'
}

install_package
manual_pages
package_and_units
upgrade_and_removal
[ ! -e "$work/failed" ]
