// Maps errno to a status, in the same way throughout the library.
#ifndef PLATKIT_ERRNO_STATUS_H
#define PLATKIT_ERRNO_STATUS_H

#include "platkit/status.h"

namespace platkit {

// `otherwise` is the status for errors without a status of their own: HVC_IO_ERROR after a read, HVC_WRITE_ERROR after
// a write.
HVC_ReturnStatus StatusOfErrno(int error, HVC_ReturnStatus otherwise = HVC_IO_ERROR);

}  // namespace platkit

#endif  // PLATKIT_ERRNO_STATUS_H
