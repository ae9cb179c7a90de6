#include "src/table/unit.h"

#include <gtest/gtest.h>

namespace kestrel {
namespace {

TEST(Unit, Parse) {
  ReportUnit unit{};
  EXPECT_EQ(UnitParse(nullptr, false, unit), HVC_OK);
  EXPECT_EQ(unit, ReportUnit::kKB);
  EXPECT_EQ(UnitParse("MB", false, unit), HVC_OK);
  EXPECT_EQ(unit, ReportUnit::kMB);
  EXPECT_EQ(UnitParse("kB", false, unit), HVC_OK);
  EXPECT_EQ(unit, ReportUnit::kKB);
  EXPECT_EQ(UnitParse("pg", false, unit), HVC_OK);
  EXPECT_EQ(unit, ReportUnit::kPage);
  EXPECT_EQ(UnitParse("B", true, unit), HVC_OK);
  EXPECT_EQ(unit, ReportUnit::kBytes);
}

TEST(Unit, InvalidLeavesTheUnitAlone) {
  ReportUnit unit = ReportUnit::kPage;
  testing::internal::CaptureStderr();
  EXPECT_EQ(UnitParse("b", false, unit), HVC_BAD_PARAM);
  EXPECT_EQ(UnitParse("gb", true, unit), HVC_BAD_PARAM);
  EXPECT_EQ(UnitParse("", false, unit), HVC_BAD_PARAM);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Invalid unit specified. Choose from {mb, kb, pg}\n"
            "Invalid unit specified. Choose from {mb, kb, pg, b}\n"
            "Invalid unit specified. Choose from {mb, kb, pg}\n");
  EXPECT_EQ(unit, ReportUnit::kPage);
}

TEST(Unit, Names) {
  EXPECT_STREQ(UnitName(ReportUnit::kKB), "KB");
  EXPECT_STREQ(UnitName(ReportUnit::kMB), "MB");
  EXPECT_STREQ(UnitName(ReportUnit::kPage), "Page (4K)");
  EXPECT_STREQ(UnitName(ReportUnit::kBytes), "Bytes");
  EXPECT_STREQ(UnitName(static_cast<ReportUnit>(2)), "Unknown");
}

TEST(Unit, AmountsRoundUp) {
  const struct {
    uint64_t kb, mb, pages;
  } amounts[] = {{0, 0, 0}, {1, 1, 1}, {4, 1, 1}, {5, 1, 2}, {1024, 1, 256}, {1025, 2, 257}};
  for (const auto &[kb, mb, pages] : amounts) {
    EXPECT_EQ(OptionalKBToUnit(kb, ReportUnit::kKB), kb);
    EXPECT_EQ(OptionalKBToUnit(kb, ReportUnit::kMB), mb) << kb;
    EXPECT_EQ(OptionalKBToUnit(kb, ReportUnit::kPage), pages) << kb;
    EXPECT_EQ(OptionalKBToUnit(kb, ReportUnit::kBytes), kb * 1024);
  }
  EXPECT_EQ(OptionalKBToUnit(1, static_cast<ReportUnit>(0)), 0u);
}

TEST(Unit, AllOnesIsNotAvailable) {
  for (const ReportUnit unit : {ReportUnit::kMB, ReportUnit::kKB, ReportUnit::kPage, ReportUnit::kBytes}) {
    EXPECT_EQ(OptionalKBToUnit(UINT64_MAX, unit), UINT64_MAX);
  }
  // UINT64_MAX - 1 is an amount, which wraps when it is rounded up.
  EXPECT_EQ(OptionalKBToUnit(UINT64_MAX - 1, ReportUnit::kMB), 0u);
  EXPECT_EQ(OptionalKBToUnit(UINT64_MAX - 1, ReportUnit::kPage), 0u);
}

TEST(Unit, PagesHaveNoMark) {
  EXPECT_EQ(PagesToUnit(256, ReportUnit::kMB), 1u);
  EXPECT_EQ(PagesToUnit(257, ReportUnit::kMB), 2u);
  EXPECT_EQ(PagesToUnit(3, ReportUnit::kPage), 3u);
  EXPECT_EQ(PagesToUnit(3, ReportUnit::kKB), 12u);
  EXPECT_EQ(PagesToUnit(UINT64_MAX, ReportUnit::kKB), UINT64_MAX - 3);
  EXPECT_EQ(PagesToUnit(UINT64_MAX, ReportUnit::kPage), UINT64_MAX >> 2);
}

}  // namespace
}  // namespace kestrel
