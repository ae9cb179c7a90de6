// /proc/PID/cmdline of QEMU: the options that describe the guest.
#ifndef PLATKIT_LINUX_KERNEL_QEMU_CMDLINE_H
#define PLATKIT_LINUX_KERNEL_QEMU_CMDLINE_H

#include <cstdint>
#include <string>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Whether a program, given with or without its folder, is QEMU: qemu-system-..., qemu-kvm or kvm.
bool IsQemuProgram(std::string_view program);

// If an option occurs twice, its last value counts.
struct QemuOptions {
  bool isQemu = false;  // see IsQemuProgram
  std::string name;     // -name NAME or -name guest=NAME; empty: none
  Figure memory;        // -m SIZE or -m size=SIZE, in KB; absent: none
  Figure maxMemory;     // -m ...,maxmem=SIZE, in KB; absent: none
  Figure hasBalloon;    // 1 if a -device is a balloon, else 0; absent: unknown
};

// `commandLine` holds arguments, each ended by a NUL.
QemuOptions ParseQemuCommandLine(std::string_view commandLine);

// An unreadable command line has no options. At most 32 KB are read.
QemuOptions ReadQemuCommandLine(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_QEMU_CMDLINE_H
