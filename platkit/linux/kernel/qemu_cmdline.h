// /proc/PID/cmdline of QEMU: the options that describe the guest.
#ifndef PLATKIT_LINUX_KERNEL_QEMU_CMDLINE_H
#define PLATKIT_LINUX_KERNEL_QEMU_CMDLINE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Whether a program, given with or without its folder, is QEMU: qemu-system-..., qemu-kvm or kvm.
bool IsQemuProgram(std::string_view program);

// A file that contains memory of the guest.
struct GuestFile {
  std::string path;  // the file, or its folder
  bool isShared;     // mapped shared: the guest's writes go to the file
};

// If an option occurs more than once, its last value counts. The sizes of memory devices are added up. Amounts are in
// KB.
struct QemuOptions {
  bool isQemu = false;  // see IsQemuProgram
  std::string name;     // -name NAME or -name guest=NAME; empty: none

  // The size of the guest's memory at its start, which is the sum of
  // - -m SIZE or -m size=SIZE, else the size of the machine's memory backend,
  // - for each pc-dimm, the size of its backend,
  // - for each virtio-mem, its requested-size.
  // Absent if the command line does not give the first of these. Persistent memory (nvdimm, virtio-pmem) is not
  // counted.
  Figure memory;
  Figure defaultMemory;          // QEMU's default, plus memory devices; absent if the command line gives a size
  Figure maxMemory;              // -m ...,maxmem=SIZE; absent: none
  bool mapsOtherMemory = false;  // a device other than pc-dimm maps memory, so mappings do not show the guest's size

  // Where the guest's memory is. Without private memory, shared memory and files, all of it is huge pages of a pool
  // (memory-backend-memfd with hugetlb=on).
  bool hasPrivateMemory = true;
  bool hasSharedMemory = false;  // memory-backend-memfd, -shm, or -ram with share=on
  std::vector<GuestFile> files;  // memory-backend-file; -mem-path
  bool isPopulated = false;      // the monitor, not the guest, makes the memory resident: prealloc=on, mem-lock=on,
                                 // -incoming, devices that the guest drives itself (vfio)

  // 1 if a -device is of this kind, else 0; absent: unknown.
  Figure hasBalloon;
  Figure hasPersistentMemory;  // nvdimm or virtio-pmem
};

// `commandLine` contains the arguments, each terminated by a NUL.
QemuOptions ParseQemuCommandLine(std::string_view commandLine);

// An unreadable command line has no options. At most 32 KB are read.
QemuOptions ReadQemuCommandLine(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_QEMU_CMDLINE_H
