#include "src/table/report_row.h"

#include <gtest/gtest.h>

#include "platkit/records.h"
#include "tests/src/table/printed.h"

namespace kestrel {
namespace {

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

#pragma pack(push, 1)
struct Row {
  char name[4];
  uint8_t byte;
  uint64_t kb;
  uint16_t tag;
  uint32_t count;
  int32_t kb32;
  uint64_t mean;
};
#pragma pack(pop)

auto Columns() {
  return ColumnsOf<Row>({
      {"name", "", 1, kS, [](auto &row) { return Text(row.name); }, kInTotal},
      {"c", "", 1, kC, kYesNo, [](auto &row) { return row.byte; }},
      {"s", "", 1, kS, kYesNo, [](auto &row) { return row.byte; }},
      {"kb", "", 1, kLu, kKB, [](auto &row) { return row.kb; }, kAdd},
      {"twice", "", 1, kU, [](auto &row) { return row.count; }, kAddTwice},
      {"last", "", 1, kU, [](auto &row) { return row.count; }, kLast},
      {"ones", "", 1, kLd, kKB, [](auto &row) { return row.kb; }, kAllOnes},
      {"mean", "", 1, kLu, [](auto &row) { return row.mean; }, kMean},
      {"tag", "", 1, kU, [](auto &row) { return row.tag; }, kInTotal},
  });
}

Row Sample(uint64_t kb, uint32_t count) {
  Row row = {};
  row.kb = kb;
  row.count = count;
  row.mean = kb;
  row.tag = 9;
  return row;
}

// The sums of `rows` as the total row of a table in CSV.
std::string Total(ColumnTable table, const std::vector<Row> &rows, ReportUnit unit = ReportUnit::kKB) {
  const Row label = {.name = "All", .byte = 1, .kb = 7, .tag = 8, .count = 7, .kb32 = 7, .mean = 7};
  ColumnSums sums;
  for (const Row &row : rows)
    sums.Add(table, &row);
  return Printed([&] { sums.Print(table, true, true, &label, unit); });
}

TEST(ReportRow, PrintsTheFiguresOfARow) {
  auto columns = Columns();
  Row row = Sample(1025, 7);
  std::memcpy(row.name, "abcd", 4);
  EXPECT_EQ(Printed([&] { PrintFigures(columns, true, false, &row, ReportUnit::kMB); }), "abcd,n,n,2,7,7,2,1025,9\n");
  row.byte = 128;
  EXPECT_EQ(Printed([&] { PrintFigures(columns, true, true, &row, ReportUnit::kKB); }),
            "abcd,,,1025,7,7,1025,1025,9\n");
  EXPECT_EQ(Printed([&] { PrintFigures(columns, true, false, &row, ReportUnit::kKB); }),
            "abcd,y,y,1025,7,7,1025,1025,9\n");
}

TEST(ReportRow, SumsAsEachColumnSays) {
  auto columns = Columns();
  EXPECT_EQ(Total(columns, {Sample(1000, 3), Sample(49, 4), Sample(12, 5)}), "All,,,1061,24,5,-1,353,8\n");
  EXPECT_EQ(Total(columns, {}), "All,,,0,0,0,0,0,8\n");
}

TEST(ReportRow, RoundsASumOnce) {
  auto columns = Columns();
  EXPECT_EQ(Total(columns, {Sample(1, 0), Sample(1, 0)}, ReportUnit::kMB), "All,,,1,0,0,-1,1,8\n");
}

TEST(ReportRow, ARowOfSumsMayHaveAllColumns) {
  auto columns = Columns();
  const Row label = Sample(0, 0);
  ColumnSums sums;
  EXPECT_EQ(Printed([&] { sums.Print(columns, true, false, &label, ReportUnit::kKB); }), ",n,n,0,0,0,0,0,9\n");
}

TEST(ReportRow, SumsWrapInTheWidthOfTheirFigures) {
  auto columns = ColumnsOf<Row>({{"byte", "", 1, kLu, [](auto &row) { return row.byte; }, kAdd},
                                 {"tag", "", 1, kLu, [](auto &row) { return row.tag; }, kAdd},
                                 {"count", "", 1, kLu, [](auto &row) { return row.count; }, kAdd},
                                 {"kb32", "", 1, kLd, [](auto &row) { return row.kb32; }, kAdd},
                                 {"kb", "", 1, kLu, [](auto &row) { return row.kb; }, kAdd}});
  Row row = {};
  row.byte = 255;
  row.tag = 32769;
  row.count = 0x80000001u;
  row.kb32 = INT32_MAX;
  row.kb = UINT64_MAX;
  EXPECT_EQ(Total(columns, {row, row}), "254,2,2,-2,18446744073709551614\n");
}

TEST(ReportRow, ASumMayLeaveOutWhatIsNotAvailable) {
  auto columns = ColumnsOf<Row>({{"kb", "", 1, kLu, [](auto &row) { return row.kb; }, kAddAvailable},
                                 {"count", "", 1, kLu, [](auto &row) { return row.count; }, kAddAvailable},
                                 {"kb32", "", 1, kLd, [](auto &row) { return row.kb32; }, kAddAvailable}});
  Row row = Sample(UINT64_MAX, UINT32_MAX);
  row.kb32 = -1;
  EXPECT_EQ(Total(columns, {row, row}), "0,0,0\n");
  const Row narrow = Sample(UINT32_MAX, 1);  // in a narrower figure, all bits set is an amount
  EXPECT_EQ(Total(columns, {row, narrow}), "4294967295,1,0\n");
}

TEST(ReportRow, AColumnWithoutAFigureIsZeroOrEmpty) {
  std::vector<ColumnDesc> columns = {{"number", "", 1, kLu, kInTotal}, {"text", "", 1, kS, kInTotal}};
  const Row row = Sample(1, 2);
  EXPECT_EQ(Printed([&] { PrintFigures(columns, true, false, &row, ReportUnit::kKB); }), "0,\n");
  EXPECT_EQ(Total(columns, {row}), "0,\n");
}

}  // namespace
}  // namespace kestrel
