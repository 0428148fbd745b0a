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

# disks PATTERN: the names of the disks that match.
disks() {
  ls /sys/block | grep -E "$1"
}

until [ "$(disks '^(sd|nvme[0-9]+n)' | wc -l)" = 12 ] && [ -b /dev/sr0 ] && [ -b /dev/vda ]; do
  sleep 1
done
for disk in $(disks sd); do
  echo "$disk $(cat "/sys/block/$disk/device/model")"
done >/results/devices

# A drive aborts all commands but one while S.M.A.R.T. is off.
piix=$(awk '/PIIX/ { print $1 }' /results/devices)
run switch_off sg_raw "/dev/$piix" 85 06 00 00 d9 00 00 00 00 00 4f 00 c2 00 b0 00
run live smartprobe
run record smartprobe-record --no-serials /results/host.plist
run replay smartprobe-replay /results/host.plist

# From now on the disks of scsi_debug count as SCSI disks: they have no ATA Information page.
scsi=$(awk '/scsi_debug/ { print $1 }' /results/devices)
first=$(echo "$scsi" | head -1)
for disk in $scsi; do
  mount --bind /dev/null "/sys/block/$disk/device/vpd_pg89"
done

# look NAME OPTION...: records and shows the drives. The next recording finds their answers.
look() {
  local name=$1
  shift
  run "$name" smartprobe-record "$@" /results/all.plist
  sed -i "s|<key>Identify<|<key>SelfTestLog</key><data>$log</data>&|" /results/all.plist
  run "read_$name" smartprobe-read --json /results/all.plist
}

# set_exception BITS: writes these bits, in octal, to the mode page of exceptions, which all disks
# of scsi_debug share. Bit TEST, 4, makes them report one.
set_exception() {
  printf '\0\0\0\0\034\012%b\006\0\0\0\0\0\0\0\0' "\\0$1" >/tmp/page
  run "set_exception_$1" sg_raw -s 16 -i /tmp/page "/dev/$first" 15 10 00 00 10 00
}

run self_tests smartprobe-selftest --all
# The emulator's ATA disks have a log of self-tests but do not announce it.
ata=$(awk '/PIIX|LONG|QEMU/ { print $1 }' /results/devices)
log=$(sg_raw -b -r 512 "/dev/$piix" 85 08 0e 00 d5 00 01 00 06 00 4f 00 c2 00 b0 00 | base64 -w 0)
set_exception 4
dd if=/dev/zero of=/dev/nvme0n1 bs=1M count=4 conv=fsync # for its counters
look all
for disk in $ata $scsi $(disks '^nvme[0-9]+n'); do
  run "smartctl_$disk" smartctl -j -a "/dev/$disk"
done

# A disk that has stopped is left alone, so its recording does not learn that all is well again.
set_exception 0
run stop sg_raw "/dev/$first" 1b 00 00 00 00 00
look asleep --let-sleep 1

# From now on the disks of scsi_debug answer nothing.
echo 4 >/sys/bus/pseudo/drivers/scsi_debug/opts
echo 1 >/sys/bus/pseudo/drivers/scsi_debug/every_nth
start=$(date +%s)
look hanging
echo $(($(date +%s) - start)) >/results/waited
echo 0 >/sys/bus/pseudo/drivers/scsi_debug/every_nth

touch /results/complete
tar -cf /dev/vda -C /results .
sync
poweroff -f
