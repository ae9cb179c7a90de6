// The limit of open files.
#ifndef NODAL_SUPPORT_OPEN_FILES_H
#define NODAL_SUPPORT_OPEN_FILES_H

#include <cstddef>

namespace nodal {

// The number of files that may stay open between samples of a host. Raises the limit of the process as far as it may.
size_t OpenFilesToKeep();

}  // namespace nodal

#endif  // NODAL_SUPPORT_OPEN_FILES_H
