// /proc/PID/exe: the program of a process.
#ifndef PLATKIT_LINUX_KERNEL_PROCESS_EXE_H
#define PLATKIT_LINUX_KERNEL_PROCESS_EXE_H

#include <cstdint>
#include <string>

#include "platkit/linux/files/host_files.h"

namespace platkit {

// The name of the file that the process executes, without its folder. A process cannot choose it, unlike its name and
// its command line. Empty if the process does not exist, or if this user may not read the link.
std::string ReadProgramName(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_PROCESS_EXE_H
