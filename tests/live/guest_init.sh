#!/bin/busybox sh
# shellcheck shell=dash
# The guest's first process: runs the programs on the guest's drives and leaves what they did
# in /results, a tar file on the virtio disk at the end, for live_test.sh to judge on the host.
/bin/busybox --install -s /bin
export PATH=/programs:/bin
mkdir -p /proc /sys /dev /tmp /results
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
for module in /modules/*; do
  case $module in *scsi_debug*) insmod "$module" num_tgts=3 removable=1 ;; *) insmod "$module" ;; esac
done

# run NAME COMMAND...: keeps the command's two streams and its status under that name.
run() {
  local name=$1
  shift
  echo "RUN $name: $*"
  "$@" >"/results/$name.out" 2>"/results/$name.err" </dev/null
  echo $? >"/results/$name.status"
}

until [ "$(ls /sys/block | grep -c sd)" = 7 ] && [ -b /dev/sr0 ] && [ -b /dev/vda ]; do
  sleep 1
done
for disk in $(ls /sys/block | grep sd); do
  echo "$disk $(cat "/sys/block/$disk/device/model")"
done >/results/devices

# A drive aborts all commands but one while S.M.A.R.T. is off.
piix=$(awk '/PIIX/ { print $1 }' /results/devices)
run switch_off sg_raw "/dev/$piix" 85 06 00 00 d9 00 00 00 00 00 4f 00 c2 00 b0 00
run live smartprobe
run record smartprobe-record --no-serials /results/host.plist
run replay smartprobe-replay /results/host.plist

# now: hundredths of a second since the start.
now() {
  cut -d ' ' -f 1 /proc/uptime | tr -d .
}

# From now on each disk of scsi_debug takes its time to be opened: what one does, and what all do.
echo 250 >/sys/bus/pseudo/drivers/scsi_debug/delay
start=$(now)
: <"/dev/$(awk '/scsi_debug/ { print $1; exit }' /results/devices)"
middle=$(now)
run late smartprobe
echo $((middle - start)) $(($(now) - middle)) >/results/times
echo 1 >/sys/bus/pseudo/drivers/scsi_debug/delay

touch /results/complete
tar -cf /dev/vda -C /results .
sync
poweroff -f
