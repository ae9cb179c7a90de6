#!/bin/sh
# The first program of the second host. It sets up the host, runs every report, and writes the results and the host's
# files to the disk as an archive. These are the folders of the archive:
#
#   files    The files of /proc, /sys and the control groups with which the reports are compared, at their own paths.
#
#   live     The output, the messages (.err) and the exit status (.status) of each report. Files whose figures change
#            are saved right before (.before) and after (.after) the report. Each of their lines follows its path.
#
#   user     The output, messages and exit status of each report for an ordinary user.
#
#   replay   The output, messages and exit status of each report from a capture of the host, host.nodal.
#
#   huge     Reports on two stopped QEMU machines with memory in huge pages of the pools. The folder also has the files
#            of the machines, of the group of one of them, of the pools and of /proc right before (.before) and after
#            (.after) each report, and the answers of the monitors (.monitor).
#
#   pressed  Reports on a machine that wants more memory than its limit, which is two groups above it. The folder also
#            has the files of its group and of /proc right before and after each report.
#
#   zipped   The same as "pressed" for a machine beyond its limit, with zswap. The folder "zswap-off" has the same after
#            zswap is off, and "unzipped" after the swap space is off, when all memory of the machine is resident.
#
#   shortage The report comp-stats while the host is idle (idle), after it has read a disk that is larger than its
#            memory (read), and after programs have asked for more memory than the host has (filled). "pressure" is the
#            memory pressure at the time of "read". With generations of pages, "read-generations" repeats "read".
#
# With "hierarchy=v1" on the kernel's command line, the memory controller is on version 1 of control groups, and the
# archive has only the folder "pressed".
export PATH=/bin LD_LIBRARY_PATH=/lib
/bin/busybox --install -s /bin
out=/tmp/out

set_up_devices() {
  mount -t proc proc /proc
  mount -t sysfs sysfs /sys
  mount -t devtmpfs devtmpfs /dev
  mount -t debugfs debugfs /sys/kernel/debug
  mount -t tmpfs tmpfs /tmp
  while read -r module; do insmod "$module"; done </lib/modules/in-order

  echo 6 >/sys/devices/system/node/node0/hugepages/hugepages-2048kB/nr_hugepages
  echo 10 >/sys/devices/system/node/node1/hugepages/hugepages-2048kB/nr_hugepages
  echo madvise >/sys/kernel/mm/transparent_hugepage/enabled
  mkdir /dev/hugepages
  mount -t hugetlbfs hugetlbfs /dev/hugepages
  echo 48M >/sys/block/zram0/disksize
  mkswap /dev/zram0
  swapon /dev/zram0
  for setting in pages_to_scan=20000 sleep_millisecs=10 run=1; do
    echo "${setting#*=}" >/sys/kernel/mm/ksm/"${setting%=*}"
  done
}

# Creates two namespaces of persistent memory in one region. Each namespace is a disk. The second
# one is formatted as swap space.
set_up_pmem() {
  nd=/sys/bus/nd/devices
  add_namespace 00000000-0000-4000-8000-000000000001 $((32 << 20))
  add_namespace 00000000-0000-4000-8000-000000000002 $((16 << 20))
  spare=/dev/$(ls "$nd/$namespace/block")
  mkswap "$spare"
}

add_namespace() {
  namespace=$(cat $nd/region0/namespace_seed)
  echo "$1" >"$nd/$namespace/uuid"
  echo "$2" >"$nd/$namespace/size"
  echo "$namespace" >/sys/bus/nd/drivers/nd_pmem/bind
}

# group PATH FILE=VALUE...: creates a control group and writes its memory.FILE files.
group() {
  mkdir -p "/sys/fs/cgroup/$1"
  group=$1
  shift
  for limit; do echo "${limit#*=}" >"/sys/fs/cgroup/$group/memory.${limit%=*}"; done
}

# Machines run in groups as libvirt arranges them. The limits are on the scopes.
slice=/sys/fs/cgroup/machine.slice
helped='machine-qemu\x2d1\x2dhelped.scope'
pressed='machine-qemu\x2d2\x2dpressed.scope'
huge='machine-qemu\x2d3\x2dhuge.scope'
zipped='machine-qemu\x2d4\x2dzipped.scope'

set_up_groups() {
  mount -t cgroup2 cgroup2 /sys/fs/cgroup
  echo '+memory +hugetlb' >/sys/fs/cgroup/cgroup.subtree_control
  group outer max=$((160 << 20)) min=$((48 << 20)) low=$((64 << 20))
  echo '+memory' >/sys/fs/cgroup/outer/cgroup.subtree_control
  group outer/inner max=$((96 << 20)) high=$((80 << 20)) min=$((16 << 20)) swap.max=$((32 << 20))
  group outer/machine.scope max=$((80 << 20)) min=$((24 << 20))
  mkdir $slice
  echo '+memory +hugetlb' >$slice/cgroup.subtree_control
  group "machine.slice/$helped" max=$((64 << 20))
  group "machine.slice/$pressed" max=$((24 << 20))
  group "machine.slice/$zipped" max=$((24 << 20)) swap.max=$((12 << 20)) zswap.max=$((2 << 20))
  for name in "$helped" "$pressed" "$huge" "$zipped"; do mkdir -p "$slice/$name/libvirt/emulator"; done
  mkdir "$slice/$helped/libvirt/swtpm"
}

# start GROUP PROGRAM ARGUMENT...: starts a program in a control group.
start() {
  group=$1
  shift
  start_in "/sys/fs/cgroup/$group" "$@"
}

start_in() {
  (
    sh -c 'echo $PPID' >"$1/cgroup.procs"
    shift
    cd /tmp && exec "$@"
  ) &
}

# wait_for WHAT COMMAND...: waits until the command succeeds, but no longer than 30 seconds.
wait_for() {
  what=$1
  shift
  waited=0
  until "$@"; do
    [ "$waited" -lt 300 ] || { echo "$what not ready."; break; }
    waited=$((waited + 1))
    usleep 100000
  done
}

start_loads() {
  start outer/inner memory_load
  start outer/machine.scope qemu-system-x86_64 -name guest=second-guest,debug-threads=on -m 20M
  start "machine.slice/$helped/libvirt/emulator" env LOAD=fill:16 qemu-system-x86_64 -name guest=helped -m 16M
  start "machine.slice/$helped/libvirt/swtpm" env LOAD=fill:12 swtpm
  wait_for 'The loads are' loads_are_ready
  echo 0 >/sys/kernel/mm/ksm/run
}

loads_are_ready() { [ -e /tmp/ready.$! ] && [ "$(ls /tmp/ready.* | wc -l)" -eq 4 ] && merging_is_done; }

# Each of the two loads without LOAD has 2048 pages that contain all ones or all twos. Merging keeps a few copies.
merging_is_done() { [ "$(cat /sys/kernel/mm/ksm/pages_sharing)" -gt 4000 ]; }

save_files() {
  for file in /proc/vmstat /proc/zoneinfo /proc/slabinfo /proc/iomem \
    $(ls /tmp/ready.* | sed 's,/tmp/ready.\(.*\),/proc/\1/status /proc/\1/cmdline /proc/\1/ksm_merging_pages,') \
    /sys/kernel/mm/ksm/*pages* \
    /sys/fs/cgroup/outer/memory.* /sys/fs/cgroup/outer/*/memory.* $slice/*/memory.* /proc/swaps \
    /sys/kernel/mm/transparent_hugepage/khugepaged/max_ptes_swap /sys/devices/system/node/node*/hugepages/*/*; do
    [ -d "$out/files${file%/*}" ] || mkdir -p "$out/files${file%/*}"
    cat "$file" >"$out/files$file" 2>/dev/null
  done
}

# run_reports FOLDER [COMMAND...]: runs each report, through COMMAND if it is given.
run_reports() {
  folder=$out/$1
  shift
  mkdir "$folder"
  for report in $(cat /etc/reports); do
    "$@" kestrel $kestrel_options -r "$report" -q >"$folder/$report" 2>"$folder/$report.err" </dev/null
    echo $? >"$folder/$report.status"
  done
}

watched() {
  read_what_moves before
  "$@"
  status=$?
  read_what_moves after
  return $status
}

# Saves the files whose figures change. Starts only one program, because this is slow on the second host.
read_what_moves() {
  grep '' /proc/meminfo /proc/buddyinfo /proc/vmstat /sys/fs/cgroup/outer/memory*.current \
    /sys/fs/cgroup/outer/*/memory*.current $slice/*/memory*.current /sys/block/zram0/mm_stat >"$folder/$report.$1"
}

# report_on FOLDER REPORT...: runs the reports. Saves the files of the processes $machines and of the group $scope before
# and after each of them.
report_on() {
  folder=$out/$1
  shift
  [ -d "$folder" ] || mkdir "$folder"
  for report; do
    read_machines before
    kestrel -r "$report" -q >"$folder/$report" 2>"$folder/$report.err"
    read_machines after
  done
}

read_machines() {
  {
    for pid in $machines; do grep '' "/proc/$pid/status" "/proc/$pid/smaps"; done
    grep '' /proc/meminfo /proc/vmstat /proc/pressure/memory /proc/swaps /sys/block/zram0/mm_stat \
      /sys/kernel/debug/zswap/* \
      /sys/kernel/mm/hugepages/hugepages-2048kB/* /sys/devices/system/node/node*/hugepages/hugepages-2048kB/* \
      "$scope"/memory.* "$scope"/hugetlb.2MB.*
  } >"$folder/$report.$1" 2>/dev/null
}

# Starts QEMU machines with 10 MB of data in huge pages: one in a group of its own, with a memory file that is filled on
# use, and one with a file that is filled at the start.
start_huge_machines() {
  scope=$slice/$huge
  mkdir $out/huge
  dd if=/dev/zero of=/tmp/data bs=1M count=10 2>/dev/null
  start_stopped "$scope/libvirt/emulator" huge -m 16M -device loader,file=data,addr=0x200000,force-raw=on \
    -object memory-backend-memfd,id=ram,size=16M,hugetlb=on,hugetlbsize=2M
  machines=$!
  start_stopped /sys/fs/cgroup huge-file -m 8M \
    -object memory-backend-file,id=ram,size=8M,mem-path=/dev/hugepages,prealloc=on
  machines="$machines $!"
  for name in huge huge-file; do wait_for 'The monitors are' grep -q 'base memory' "$out/huge/$name.monitor"; done
}

# start_stopped FOLDER NAME OPTION...: starts a QEMU machine in a control group, stopped before its first instruction.
start_stopped() {
  folder=$1
  name=$2
  shift 2
  mkfifo "/tmp/$name.ask"
  # The shell takes away the standard input of a background job.
  start_in "$folder" sh -c 'exec "$@" <>"$0"' "$name.ask" \
    env QEMU_MODULE_DIR=/qemu /qemu/qemu-system-x86_64 -nodefaults -display none -S -accel tcg \
    -machine none,memory-backend=ram -name "guest=$name" -monitor stdio "$@" >"$out/huge/$name.monitor" 2>&1
  echo 'info memory_size_summary' >"/tmp/$name.ask"
}

# Frees the memory that the programs of QEMU take on this host without disks.
stop_huge_machines() {
  kill -KILL $machines
  wait $machines 2>/dev/null
  rm -r /qemu /tmp/data
}

# press_machine FOLDER PRESSURE REPORT...: starts a machine in a folder of control groups, and lets it write memory.
# Once the file PRESSURE shows that it waited for memory in 20% of the last ten seconds, stops it and runs the reports.
press_machine() {
  scope=$1/$pressed
  pressure=$2
  shift 2
  start_in "$scope/libvirt/emulator" env LOAD=press:40 qemu-system-x86_64 -name guest=pressed -m 40M
  machine=$!
  wait_for 'The pressed machine is' is_pressed
  kill -STOP "$machine"
  machines=$machine
  report_on pressed "$@"
}

stop_machine() {
  kill -KILL "$machine"
  wait "$machine" 2>/dev/null
}

is_pressed() { [ -e "/tmp/ready.$machine" ] && grep -Eq '^some avg10=([2-9][0-9]|100)\.' "$pressure"; }

# Starts a machine with 32 MB of data, which may have 24 MB of memory. Of the pages that do not fit,
# zswap keeps up to 2 MB in compressed form; the rest goes to the disk.
zip_machine() {
  scope=$slice/$zipped
  zswap=/sys/module/zswap/parameters
  stop_machine
  swapoff /dev/zram0
  swapon "$spare"
  for setting in compressor=lzo-rle zpool=zsmalloc max_pool_percent=5 enabled=Y; do
    [ ! -e "$zswap/${setting%=*}" ] || echo "${setting#*=}" >"$zswap/${setting%=*}"
  done
  start_in "$scope/libvirt/emulator" env LOAD=mix:32 qemu-system-x86_64 -name guest=zipped -m 32M
  machines=$!
  wait_for 'The compressed machine is' [ -e "/tmp/ready.$machines" ]
  report_on zipped zip-stats vm-stats swap-stats group-stats uw-stats
  echo N >$zswap/enabled
  report_on zswap-off zip-stats vm-stats
  echo max >"$scope/memory.max"
  swapoff "$spare"
  report_on unzipped zip-stats vm-stats swap-stats
}

# Leaves zram as the only swap space, and empties it after the shortage.
empty_swap() {
  swapoff "$spare"
  swapoff /dev/zram0
  swapon /dev/zram0
}

# Reading a disk fills the memory with pages that can be dropped at once, so no process waits for memory.
run_out_of_memory() {
  mkdir $out/shortage
  kestrel -r comp-stats -q >$out/shortage/idle
  dd if=/dev/vdb of=/dev/null bs=1M 2>/dev/null
  kestrel -r comp-stats -q >$out/shortage/read
  cat /proc/pressure/memory >$out/shortage/pressure
  if [ -e /sys/kernel/mm/lru_gen/enabled ]; then
    echo y >/sys/kernel/mm/lru_gen/enabled
    dd if=/dev/vdb of=/dev/null bs=1M 2>/dev/null
    kestrel -r comp-stats -q >$out/shortage/read-generations
    cat /proc/pressure/memory >>$out/shortage/pressure
  fi
  # Two programs share the amount, because the kernel would refuse this much memory to one program.
  fillers=
  for _ in 1 2; do
    dd if=/dev/zero of=/dev/null bs=300M count=4 2>/dev/null &
    fillers="$fillers $!"
  done
  wait $fillers
  kestrel -r comp-stats -q >$out/shortage/filled
}

as_nobody() { su -s /bin/sh nobody -c 'cd /tmp && exec "$0" "$@"' -- "$@"; }

finish() {
  tar cf /dev/vda -C $out .
  sync
  poweroff -f
}

# Runs the same machine below a limit of version 1 of control groups. The swap space is zram.
run_on_version_1() {
  mount -t tmpfs tmpfs /sys/fs/cgroup
  mkdir -p /sys/fs/cgroup/memory
  mount -t cgroup -o memory cgroup /sys/fs/cgroup/memory
  slice=/sys/fs/cgroup/memory/machine.slice
  mkdir -p "$slice/$pressed/libvirt/emulator"
  echo $((24 << 20)) >"$slice/$pressed/memory.limit_in_bytes"
  press_machine $slice /proc/pressure/memory group-stats vm-stats swap-stats uw-stats
}

set_up_devices
if grep -qw hierarchy=v1 /proc/cmdline; then
  mkdir $out
  cd /tmp || exit
  run_on_version_1
  finish
fi
set_up_pmem
set_up_groups
start_loads
swapon "$spare"  # after the loads have swapped to zram
mkdir $out
cd /tmp || exit
save_files
run_reports live watched
run_reports user as_nobody
if nodal --help | grep -qw capture; then
  nodal capture -o $out/host.nodal >$out/capture 2>$out/capture.err
  echo $? >$out/capture.status
  kestrel_options="-c $out/host.nodal" run_reports replay
fi
start_huge_machines
report_on huge vm-stats group-stats uw-stats lpage-stats lpool-stats
stop_huge_machines
run_out_of_memory
empty_swap
press_machine $slice "$slice/$pressed/memory.pressure" group-stats vm-stats swap-stats uw-stats
zip_machine
finish
