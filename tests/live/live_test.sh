#!/bin/bash
# The programs on real kernel drivers: boots Debian's kernel in an emulator with drives of known
# making, lets guest_init.sh run the programs there, and compares what they did with that.
# Usage: live_test.sh KERNEL PROGRAM..., the folder that scripts/fetch has made for it, and the
# programs of this build that guest_init.sh runs.
set -euo pipefail
kernel=$1
shift
here=$(dirname "$0")
. "$here/../program_test.sh"
PATH=$PATH:/usr/sbin:/sbin
results=$work/results
long_model=LONG-6789-123456789-123456789-123456789-
long_serial=01234567890123456789

make_initramfs() {
  local root=$work/root program
  mkdir -p "$root/bin" "$root/programs"
  cp "$here/guest_init.sh" "$root/init"
  cp /bin/busybox "$root/bin/"
  cp -r "$kernel/modules" "$root/"
  for program in "$@" "$(command -v sg_raw)" "$(command -v smartctl)"; do
    cp -L "$program" "$root/programs/"
    ldd "$program" | grep -o '/[^ ]*' | xargs cp -L --parents -t "$root"
  done
  (cd "$root" && find . | cpio --quiet -o -H newc -R 0:0) >"$work/initramfs"
}

# Of the drives only the virtio disk keeps anything: the results. GOOD is an NVMe drive with two
# namespaces, PATHS one with two controllers, which are two paths to its namespace.
boot() {
  truncate -s 16M "$work/results.tar"
  local blank=driver=null-co,read-zeroes=on
  timeout --foreground 300 qemu-system-x86_64 \
    -machine pc -accel tcg -m 512 -nodefaults -no-user-config -display none -no-reboot \
    -kernel "$kernel/vmlinuz" -initrd "$work/initramfs" -append 'console=ttyS0 panic=-1' \
    -serial "file:$work/console" \
    -blockdev "$blank,node-name=piix,size=160041885696" \
    -blockdev "$blank,node-name=long,size=3000592982016" \
    -blockdev "$blank,node-name=plain,size=500107862016" \
    -blockdev "$blank,node-name=scsi,size=1048576" \
    -blockdev "$blank,node-name=cd,size=1048576,read-only=on" \
    -blockdev "$blank,node-name=good1,size=1000204886016" \
    -blockdev "$blank,node-name=good2,size=1048576" \
    -blockdev "$blank,node-name=weak,size=1048576" \
    -blockdev "$blank,node-name=warm,size=1048576" \
    -blockdev "$blank,node-name=paths,size=1048576" \
    -blockdev "driver=file,node-name=results,filename=$work/results.tar" \
    -device "ide-hd,bus=ide.0,drive=piix,model=PIIX DISK,serial=  WD-1,ver=1.0" \
    -device ide-cd,bus=ide.1,drive=cd \
    -device ich9-ahci,id=ahci \
    -device "ide-hd,bus=ahci.0,drive=long,model=$long_model,serial=$long_serial,ver=12345678" \
    -device ide-hd,bus=ahci.1,drive=plain,serial=S,ver=2 \
    -device virtio-blk-pci,drive=results \
    -device virtio-scsi-pci -device 'scsi-hd,drive=scsi,product=SCSI DISK' \
    -device nvme,id=good,serial=GOOD -device nvme-ns,bus=good,drive=good1,nsid=1 \
    -device nvme-ns,bus=good,drive=good2,nsid=2 \
    -device nvme,serial=WEAK,drive=weak,smart_critical_warning=4 \
    -device nvme,serial=WARM,drive=warm,smart_critical_warning=2 \
    -device nvme-subsys,id=both \
    -device nvme,serial=PATHS,subsys=both,id=path1 -device nvme,serial=PATHS,subsys=both \
    -device nvme-ns,bus=path1,drive=paths,shared=on \
    </dev/null >"$work/emulator" 2>&1 || echo "the emulator ended with status $?" >>"$work/emulator"
  mkdir "$results"
  if ! tar -xf "$work/results.tar" -C "$results" || [ ! -e "$results/complete" ]; then
    cat "$work/console" "$work/emulator"
    echo 'FAILED: the guest did not come to its end' >&2
    exit 1
  fi
}

# expect NAME [ERROR]: that run printed what standard input says, on standard error that line
# or nothing, and ended with status 0.
expect() {
  diff -u --label "expected of $1" --label "printed by $1" - "$results/$1.out" >&2 ||
    fail "the output of $1"
  [ "$(cat "$results/$1.status")" = 0 ] || fail "$1: status $(cat "$results/$1.status")"
  [ "$(cat "$results/$1.err")" = "${2-}" ] || fail "$1: $(cat "$results/$1.err")"
}

# drive DISK MODEL: the lines of that drive. The disks of the kernel's scsi_debug have an ATA
# Information page but take no commands.
drive() {
  case $2 in
    PIIX*) set -- "$1" 'PIIX DISK' 1.0 '160.04 GB' '  WD-1' ;;
    LONG*) set -- "$1" "$long_model" 12345678 '3.00 TB' "$long_serial" ;;
    QEMU*) set -- "$1" 'QEMU HARDDISK' 2 '500.11 GB' S ;;
    *) echo "GetSMARTFailed:/dev/r$1:0" && return ;;
  esac
  printf 'SmartDeviceStart:::/dev/r%s:::%s:::%-8s:::%s:::%-20s\n' "$@"
  # What the emulator gives every disk.
  cat <<END
SMARTStatus:::1:::Raw Read Error Rate:::768:::No Data:::6:::Pre-Fail:OK
SMARTStatus:::3:::Spin-up Time:::768:::No Data:::Always Passing:::Pre-Fail:OK
SMARTStatus:::4:::Start/Stop Count:::512:::No Data:::20:::Life-Span:OK
SMARTStatus:::5:::Reallocated Sector Count:::768:::No Data:::36:::Pre-Fail:OK
SMARTStatus:::9:::Power On Hours Count:::768:::No Data:::Always Passing:::Pre-Fail:OK
SMARTStatus:::12:::Power Cycle Count:::768:::No Data:::Always Passing:::Pre-Fail:OK
SMARTStatus:::190:::Airflow Temperature:::768:::69:::50:::Pre-Fail:OK
SmartDeviceEnd:::/dev/r$1:::False
END
}

# The lines of all drives in the report's order, the AHCI ones last.
# The kernel looks at ports side by side, so that any disk may have got the first name.
drives() {
  local kind disk model
  for kind in 'PIIX|scsi_debug' 'LONG|QEMU'; do
    grep -E "$kind" "$results/devices" | while read -r disk model; do drive "$disk" "$model"; done
  done
}

# expect_grades NAME LINE...: the recording of that name grades the NVMe drives as they were made,
# and the SCSI disks as these lines say.
expect_grades() {
  local name=$1
  shift
  jq -r '.drives[] | select(.protocol != "ATA") |
    [if .protocol == "SCSI" then .disk else .serial end, .health, .reasons[]] | join(": ")' \
    "$results/read_$name.out" | sort >"$work/grades"
  printf '%s\n' "$@" 'WEAK: failing: the reliability is degraded' 'GOOD: OK' 'GOOD: OK' \
    'WARM: hot: a temperature is above or below its threshold' 'PATHS: OK' | sort |
    diff -u --label "expected of $name" --label "shown of $name" - "$work/grades" >&2 ||
    fail "the grades of $name"
}

# smartctl and the recording agree. smartctl shows no temperature limit of NVMe drives.
compare_facts() {
  jq -S -s '[.[] | {disk: .device.name[5:], protocol: .device.protocol,
    model: (.model_name // .scsi_model_name), revision: (.firmware_version // .scsi_revision),
    serial: .serial_number, capacity: .user_capacity.bytes, passed: .smart_status.passed,
    temperature: .temperature.current, limit: .temperature.drive_trip,
    hours: .power_on_time.hours, cycles: .power_cycle_count,
    log: .nvme_smart_health_information_log,
    test: (.ata_smart_self_test_log.standard.table[0] |
      "\(.type.string): \(.status.string), \(.status.passed), \(.lifetime_hours)" |
      sub(" offline"; "") | ascii_downcase)}]' "$results"/smartctl_*.out >"$work/smartctl"
  jq -S '[.drives[] | {disk, protocol, model: .product, revision: (.revision | sub(" *$"; "")),
    serial: (.serial | sub("^ *"; "") | sub(" *$"; "")), capacity: .capacity_bytes,
    passed: (.health == "OK"), temperature: .temperature_celsius,
    limit: (if .protocol == "SCSI" then .temperature_limit_celsius else null end),
    hours: .power_on_hours, cycles: .power_cycles, log: .nvme_smart_health_information_log,
    test: (.last_self_test | "\(.type): \(.status), \(.passed), \(.power_on_hours)")}] |
    sort_by(.disk)' "$results/read_all.out" |
    diff -u --label smartctl --label smartprobe-read "$work/smartctl" - >&2 ||
    fail 'smartctl shows other facts'
}

# Those that have self-tests take them one after the other.
self_tests() {
  local started='short self-test started; the drive expects it to take 2 minutes'
  sed -E "s/ (SCSI|scsi).*/: it has no self-tests/; t
    s/^(\w+) .*/\1: $started\n\1: short self-test: completed without error/" "$results/devices"
  ls "$results" | sed -n 's/^smartctl_\(nvme.*n1\)\.out$/\1: it has no self-tests/p'
}

judge_others() {
  local scsi predicted='failing: the disk reports: Failure prediction threshold exceeded (false)'
  mapfile -t scsi < <(awk '/scsi_debug/ { print $1 }' "$results/devices")
  expect_grades all "${scsi[@]/%/: $predicted}"
  expect_grades asleep "${scsi[0]}: $predicted" "${scsi[1]}: OK" "${scsi[2]}: OK"
  expect_grades hanging
  expect all "$1" </dev/null
  expect asleep "$1" </dev/null
  expect hanging "$(printf 'smartprobe-record: %s: no answer within 60 seconds\n' "${scsi[@]}")
$1" </dev/null
  [ "$(cat "$results/waited")" -lt 90 ] || fail "waited $(cat "$results/waited") s for silent disks"
  compare_facts
  self_tests | expect self_tests
}

judge() {
  local not_asked
  [ "$(cat "$results/switch_off.status")" = 0 ] || fail 'S.M.A.R.T. cannot be switched off'
  drives | expect live
  not_asked="smartprobe-record: not asked: $(awk '/SCSI DISK/ { print $1 }' "$results/devices"), vda"
  expect record "$(awk '/scsi_debug/ { print "smartprobe-record: " $1 ": IDENTIFY DEVICE failed" }' \
    "$results/devices")
$not_asked" </dev/null
  drives | sed "/^SmartDeviceStart/ { s/$long_serial/XXXXXXXXXXXXXXXXXXXX/; s/WD-1/XXXX/; s/:S /:X / }" |
    expect replay
  judge_others "$not_asked"
}

make_initramfs "$@"
boot
judge
[ ! -e "$work/failed" ]
