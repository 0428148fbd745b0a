#!/bin/busybox sh
# shellcheck shell=dash
# The guest's first process: runs the programs on the guest's drives and leaves what
# they did in /results, which ends as a tar file on the virtio disk. It judges nothing;
# live_test.sh does, on the host.
/bin/busybox --install -s /bin
export PATH=/programs:/bin
mkdir -p /proc /sys /dev /tmp /results
chmod 1777 /tmp
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
mount -t tracefs tracefs /sys/kernel/tracing
for module in /modules/*; do insmod "$module"; done

disks() {
  (cd /sys/block && ls -d sd*) 2>/dev/null
}

# run NAME COMMAND...: keeps the command's two streams and its status under that name.
run() {
  local name=$1
  shift
  echo "RUN $name: $*"
  "$@" >"/results/$name.out" 2>"/results/$name.err" </dev/null
  echo $? >"/results/$name.status"
}

# traced NAME COMMAND...: as run, and keeps the commands that drives got meanwhile.
traced() {
  local events=/sys/kernel/tracing/events/libata/ata_qc_issue/enable
  echo >/sys/kernel/tracing/trace
  echo 1 >$events
  run "$@"
  echo 0 >$events
  cp /sys/kernel/tracing/trace "/results/$1.trace"
}

# The drive aborts the command while S.M.A.R.T. is off.
smart_read() {
  sg_raw -r 512 -o /dev/null "/dev/$piix" 85 08 0e 00 d0 00 01 00 00 00 4f 00 c2 00 b0 00
}

until [ "$(disks | wc -l)" = 5 ] && [ -b /dev/sr0 ] && [ -b /dev/vda ]; do
  sleep 1
done
for disk in $(disks); do
  chown 0:6 "/dev/$disk"
  chmod 660 "/dev/$disk"
  port=$(readlink -f "/sys/block/$disk" | grep -o '/ata[0-9]*/' | tr -d a-z/)
  echo "$disk ${port:--} $(cat "/sys/block/$disk/device/model")"
done >/results/devices
piix=$(awk '/PIIX/ { print $1 }' /results/devices)

run switch_off sg_raw "/dev/$piix" 85 06 00 00 d9 00 00 00 00 00 4f 00 c2 00 b0 00
run read_before smart_read
traced live smartprobe
run read_after smart_read
# Busybox has a setpriv too, which its shell prefers but which knows no users.
traced member /programs/setpriv --reuid 1000 --regid 1000 --groups 6 smartprobe

run record smartprobe-record --no-serials /results/host.plist
run replay smartprobe-replay /results/host.plist

touch /results/complete
tar -cf /dev/vda -C /results .
sync
poweroff -f
