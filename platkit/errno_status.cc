#include "platkit/errno_status.h"

#include <cerrno>

namespace platkit {

HVC_ReturnStatus StatusOfErrno(int error, HVC_ReturnStatus otherwise) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ESRCH:  // a file of an ended process
    case ENODEV: return HVC_NOT_FOUND;
    case EACCES:
    case EPERM: return HVC_NO_PERMISSION;
    case EROFS: return HVC_READ_ONLY;
    case ENAMETOOLONG: return HVC_NAME_TOO_LONG;
    case ENOMEM: return HVC_NO_MEMORY;
    default: return otherwise;
  }
}

}  // namespace platkit
