#include "platkit/str.h"

#include <gtest/gtest.h>

namespace {

TEST(Str, CopiesWhatFits) {
  char room[5];
  EXPECT_EQ(Str_Strcpy(room, "four", sizeof room), room);
  EXPECT_STREQ(room, "four");
  EXPECT_STREQ(Str_Strcpy(room, "fifth", sizeof room), "fift");
  EXPECT_STREQ(Str_Strcpy(room, "", sizeof room), "");
  EXPECT_STREQ(Str_Strcpy(room, nullptr, sizeof room), "");
  room[0] = 'x';
  Str_Strcpy(room, "four", 0);
  EXPECT_EQ(room[0], 'x');
}

}  // namespace
