#include "platkit/record_layout.h"

#include <gtest/gtest.h>

namespace platkit {
namespace {

TEST(RecordLayout, UnitNamesFollowFigures) {
  EXPECT_EQ(UnitName(FieldUnit::KB), "KB");
  EXPECT_EQ(UnitName(FieldUnit::BYTES), "bytes");
  EXPECT_EQ(UnitName(FieldUnit::PAGES), "4 KB pages");
  EXPECT_EQ(UnitName(FieldUnit::BLOCKS), "2 MB blocks");
  EXPECT_EQ(UnitName(FieldUnit::PERCENT), "%");
  EXPECT_EQ(UnitName(FieldUnit::USEC), "us");
  for (const FieldUnit unit :
       {FieldUnit::NONE, FieldUnit::COUNT, FieldUnit::ID, FieldUnit::FLAGS, FieldUnit::BOOL, FieldUnit::NUMBER})
    EXPECT_EQ(UnitName(unit), "");
}

TEST(RecordLayout, UnitsInWords) {
  EXPECT_EQ(UnitInWords(FieldUnit::KB), "KB");
  EXPECT_EQ(UnitInWords(FieldUnit::PERCENT), "percent");
  EXPECT_EQ(UnitInWords(FieldUnit::USEC), "microseconds");
  EXPECT_EQ(UnitInWords(FieldUnit::COUNT), "count");
  EXPECT_EQ(UnitInWords(FieldUnit::ID), "ID");
  EXPECT_EQ(UnitInWords(FieldUnit::FLAGS), "bit mask");
  EXPECT_EQ(UnitInWords(FieldUnit::BOOL), "boolean");
  EXPECT_EQ(UnitInWords(FieldUnit::NUMBER), "");
  EXPECT_EQ(UnitInWords(FieldUnit::NONE), "");
}

}  // namespace
}  // namespace platkit
