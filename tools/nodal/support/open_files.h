// The limit on open files.
#ifndef NODAL_SUPPORT_OPEN_FILES_H
#define NODAL_SUPPORT_OPEN_FILES_H

#include <cstddef>

namespace nodal {

// Raises the process's soft limit on open files as far as needed and allowed. Returns the number of files that may stay
// open between samples of a host.
size_t OpenFilesToKeep();

}  // namespace nodal

#endif  // NODAL_SUPPORT_OPEN_FILES_H
