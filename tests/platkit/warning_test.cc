#include "platkit/warning.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(WarningChannel, FlushesStandardOutputFirst) {
  testing::internal::CaptureStderr();
  errno = ENOSPC;
  Warning("%s:%u failure: %s\n", "name", 7u, "text");
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "name:7 failure: text\n");
}

}  // namespace
