// System calls that several readers of files share.
#ifndef PLATKIT_LINUX_FILES_SYSTEM_CALLS_H
#define PLATKIT_LINUX_FILES_SYSTEM_CALLS_H

#include <sys/types.h>

#include <cstdint>
#include <span>

#include "platkit/linux/files/file_descriptor.h"

namespace platkit {

// Calls read(2), and repeats the call if a signal interrupts it. Returns -1 with errno set on failure.
ssize_t ReadOnce(const FileDescriptor &file, std::span<char> buffer);

// The inode number of an open file; 0 if none is open.
uint64_t InodeOf(const FileDescriptor &file);

}  // namespace platkit

#endif  // PLATKIT_LINUX_FILES_SYSTEM_CALLS_H
