#include "platkit/errno_status.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace platkit {
namespace {

TEST(ErrnoStatus, EachErrnoHasOneStatus) {
  const std::pair<int, HVC_ReturnStatus> statuses[] = {
      {ENOENT, HVC_NOT_FOUND}, {ENOTDIR, HVC_NOT_FOUND},          {ESRCH, HVC_NOT_FOUND},
      {ENODEV, HVC_NOT_FOUND}, {EACCES, HVC_NO_PERMISSION},       {EPERM, HVC_NO_PERMISSION},
      {EROFS, HVC_READ_ONLY},  {ENAMETOOLONG, HVC_NAME_TOO_LONG}, {ENOMEM, HVC_NO_MEMORY},
  };
  for (const auto &[error, status] : statuses) {
    EXPECT_EQ(StatusOfErrno(error), status) << std::strerror(error);
    EXPECT_EQ(StatusOfErrno(error, HVC_WRITE_ERROR), status) << std::strerror(error);
  }
}

TEST(ErrnoStatus, TheCallerChoosesTheStatusOfOtherErrors) {
  for (const int error : {EIO, ENOSPC, EFBIG, EINVAL, 0}) {
    EXPECT_EQ(StatusOfErrno(error), HVC_IO_ERROR) << std::strerror(error);
    EXPECT_EQ(StatusOfErrno(error, HVC_WRITE_ERROR), HVC_WRITE_ERROR) << std::strerror(error);
  }
}

}  // namespace
}  // namespace platkit
